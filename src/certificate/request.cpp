#include "certificate/request.hpp"

#include "record/request.hpp"

namespace tw {
namespace {

constexpr int key_bits = 2048;

// Deliberately 2 and not 0: the nodes' own tools were made against requests that say so.
constexpr long request_version = 2;

bool set_subject(X509_REQ *request, const char *common_name) noexcept {
  const subject_entry entries[] = {{"C", "AU"},
                                   {"ST", "Eastermere"},
                                   {"L", "Bellrig"},
                                   {"O", "Tarnwell"},
                                   {"OU", "FernhollowClientNodes"},
                                   {"CN", common_name}};
  return add_subject(request, entries);
}

}  // namespace

bool build_pkey(BIO *key_pem) noexcept {
  const pkey_ptr key(EVP_PKEY_new());
  if (!key) {
    CERTIFICATE_LOG(LOG_ERR, "Could not create new OpenSSL PKEY: %s", openssl_error().text());
    return false;
  }
  if (!generate_rsa_key(key.get(), key_bits)) {
    CERTIFICATE_LOG(LOG_ERR, "Could not create new RSA key: %s", openssl_error().text());
    return false;
  }
  if (!PEM_write_bio_PrivateKey(key_pem, key.get(), nullptr, nullptr, 0, nullptr, nullptr)) {
    CERTIFICATE_LOG(LOG_ERR, "Error while writing new key to bio: %s", openssl_error().text());
    return false;
  }
  return true;
}

bio_ptr build_csr(BIO *key_pem, const char *common_name) noexcept {
  if (!common_name) return nullptr;
  const request_ptr request(X509_REQ_new());
  if (!request) {
    CERTIFICATE_LOG(LOG_ERR, "Could not create new OpenSSL X509 request: %s", openssl_error().text());
    return nullptr;
  }
  const pkey_ptr key(PEM_read_bio_PrivateKey(key_pem, nullptr, nullptr, nullptr));
  if (!key) {
    CERTIFICATE_LOG(LOG_ERR, "Could not retrieve PKEY from BIO: %s", openssl_error().text());
    return nullptr;
  }
  if (!X509_REQ_set_pubkey(request.get(), key.get())) {
    CERTIFICATE_LOG(LOG_ERR, "Failed to set X509 request key: %s", openssl_error().text());
    return nullptr;
  }
  if (!X509_REQ_set_version(request.get(), request_version)) {
    CERTIFICATE_LOG(LOG_ERR, "Failed to set X509 request version: %s", openssl_error().text());
    return nullptr;
  }
  if (!set_subject(request.get(), common_name)) {
    CERTIFICATE_LOG(LOG_ERR, "Failed to build X509 subject name: %s", openssl_error().text());
    return nullptr;
  }
  if (!add_extensions(request.get())) {
    CERTIFICATE_LOG(LOG_ERR, "Failed to build X509 extensions: %s", openssl_error().text());
    return nullptr;
  }
  if (X509_REQ_sign(request.get(), key.get(), EVP_sha256()) <= 0) {
    CERTIFICATE_LOG(LOG_ERR, "Failed to sign new X509 request: %s", openssl_error().text());
    return nullptr;
  }
  bio_ptr pem = new_buffer();
  if (!pem) {
    CERTIFICATE_LOG(LOG_ERR, "Failed to allocate new X509 request BIO: %s", openssl_error().text());
    return nullptr;
  }
  if (!PEM_write_bio_X509_REQ(pem.get(), request.get())) {
    CERTIFICATE_LOG(LOG_ERR, "Failed to write new X509 request to BIO: %s", openssl_error().text());
    return nullptr;
  }
  ERR_clear_error();
  return pem;
}

}  // namespace tw
