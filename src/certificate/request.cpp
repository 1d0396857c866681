#include "certificate/request.hpp"

namespace tw {
namespace {

constexpr int key_bits = 2048;

// Deliberately 2 and not 0: the nodes' own tools were made against requests that say so.
constexpr long request_version = 2;

struct name_entry {
  const char *type;
  const char *value;
};
constexpr name_entry fixed_subject[] = {
    {"C", "AU"}, {"ST", "Eastermere"}, {"L", "Bellrig"}, {"O", "Tarnwell"}, {"OU", "FernhollowClientNodes"}};

bool add_entry(X509_NAME *name, const name_entry &entry) noexcept {
  const auto *value = reinterpret_cast<const unsigned char *>(entry.value);
  return X509_NAME_add_entry_by_txt(name, entry.type, MBSTRING_ASC, value, -1, -1, 0) == 1;
}

// Tries every entry. OpenSSL itself refuses a common name of more than 64 characters.
bool set_subject(X509_REQ *request, const char *common_name) noexcept {
  X509_NAME *name = X509_REQ_get_subject_name(request);
  bool good = name != nullptr;
  for (const name_entry &entry : fixed_subject) good &= add_entry(name, entry);
  return add_entry(name, {"CN", common_name}) && good;
}

bool push_extension(STACK_OF(X509_EXTENSION) * list, int nid, const char *value) noexcept {
  X509_EXTENSION *extension = X509V3_EXT_conf_nid(nullptr, nullptr, nid, value);
  if (extension && sk_X509_EXTENSION_push(list, extension) > 0) return true;
  X509_EXTENSION_free(extension);
  return false;
}

bool set_extensions(X509_REQ *request) noexcept {
  const extensions_ptr list(sk_X509_EXTENSION_new_null());
  return list && push_extension(list.get(), NID_key_usage, "critical,digitalSignature,keyEncipherment") &&
         push_extension(list.get(), NID_netscape_cert_type, "client,email") &&
         X509_REQ_add_extensions(request, list.get()) == 1;
}

}  // namespace

bool build_pkey(BIO *key_pem) noexcept {
  pkey_ptr key(EVP_PKEY_new());
  if (!key) {
    CERTIFICATE_LOG(LOG_ERR, "Could not create new OpenSSL PKEY: %s", openssl_error().text());
    return false;
  }
  // The public exponent is OpenSSL's own choice, 65537. The key is generated in its container, so there is no
  // step of its own that puts it there and could fail.
  const pkey_ctx_ptr generator(EVP_PKEY_CTX_new_from_name(nullptr, "RSA", nullptr));
  EVP_PKEY *generated = key.get();
  if (!generator || EVP_PKEY_keygen_init(generator.get()) <= 0 ||
      EVP_PKEY_CTX_set_rsa_keygen_bits(generator.get(), key_bits) <= 0 ||
      EVP_PKEY_generate(generator.get(), &generated) <= 0) {
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
  if (!set_extensions(request.get())) {
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
