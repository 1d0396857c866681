// Generating the certificate request, for the key that the record has or for a new one.
#include <openssl/rsa.h>
#include <twconfig/message.h>

#include <algorithm>
#include <utility>

#include "https/csr.hpp"
#include "https/https.hpp"
#include "record/request.hpp"

namespace {

// OpenSSL generates no smaller keys, and would be busy for many minutes with larger ones.
constexpr int32_t smallest_key = 512;
constexpr int32_t largest_key = 8192;

// Bytes of a PEM text, its NUL included: what the programs that read these texts have room for.
constexpr size_t text_size = 16384;

int bad_key(const cfg_csr &csr) noexcept {
  cfg_message_add_bad_key(csr.cfg);
  return 0;
}

int failed(const cfg_csr &csr) noexcept {
  cfg_message_add_csr_generate_failed(csr.cfg);
  return 0;
}

// A key that OpenSSL would not verify with is none: signing with a modulus of any size takes any time.
tw::pkey_ptr supplied_key(const char *pem) noexcept {
  tw::pkey_ptr key = tw::read_key(pem);
  if (key && EVP_PKEY_get_bits(key.get()) > OPENSSL_RSA_MAX_MODULUS_BITS) return nullptr;
  return key;
}

tw::pkey_ptr new_key(int32_t bits) noexcept {
  if (bits < smallest_key || bits > largest_key) return nullptr;
  tw::pkey_ptr key(EVP_PKEY_new());
  if (key && !tw::generate_rsa_key(key.get(), bits)) return nullptr;
  return key;
}

// The order is the one that authorities have always been sent. A text that is missing fails.
bool add_subject(X509_REQ *request, const cfg_csr &csr) noexcept {
  const tw::subject_entry entries[] = {{"C", csr.country.c_str()},      {"emailAddress", csr.email.c_str()},
                                       {"CN", csr.common_name.c_str()}, {"O", csr.organization.c_str()},
                                       {"OU", csr.org_unit.c_str()},    {"ST", csr.state.c_str()},
                                       {"L", csr.locality.c_str()}};
  return tw::add_subject(request, entries);
}

bool add_challenge_password(X509_REQ *request, const char *password) noexcept {
  if (!password) return true;
  const auto *bytes = reinterpret_cast<const unsigned char *>(password);
  return X509_REQ_add1_attr_by_NID(request, NID_pkcs9_challengePassword, MBSTRING_ASC, bytes, -1) == 1;
}

// SHA-1 by default, unlike the certificates for nodes: there are authorities that take nothing newer. The
// build chooses (TW_CSR_DIGEST). No digest of that name, or one that OpenSSL is not let use, signs nothing.
bool sign(X509_REQ *request, EVP_PKEY *key) noexcept {
  const EVP_MD *digest = EVP_get_digestbyname(TW_CSR_DIGEST);
  return digest && X509_REQ_sign(request, key, digest) > 0;
}

// Gives a field of the record the text that was written to a buffer.
bool keep(cfg_csr &csr, tw::secret cfg_csr::*field, BIO *buffer) noexcept {
  char *chars = nullptr;
  const long length = BIO_get_mem_data(buffer, &chars);
  tw::secret fresh;
  return length > 0 && fresh.assign(chars, std::min(static_cast<size_t>(length), text_size - 1)) &&
         tw::replace_text(csr, field, std::move(fresh));
}

bool keep_request(cfg_csr &csr, const X509_REQ *request) noexcept {
  const tw::bio_ptr buffer = tw::new_buffer();
  return buffer && PEM_write_bio_X509_REQ(buffer.get(), request) && keep(csr, &cfg_csr::csr, buffer.get());
}

bool keep_key(cfg_csr &csr, const EVP_PKEY *key) noexcept {
  const tw::bio_ptr buffer = tw::new_buffer();
  return buffer && PEM_write_bio_PrivateKey(buffer.get(), key, nullptr, nullptr, 0, nullptr, nullptr) &&
         keep(csr, &cfg_csr::private_key, buffer.get());
}

}  // namespace

int cfg_csr_generate(cfg_csr *csr) noexcept {
  if (!csr) return 0;
  const tw::clean_error_queue at_exit;
  const bool supplied = static_cast<bool>(csr->private_key);
  const tw::pkey_ptr key = supplied ? supplied_key(csr->private_key.c_str()) : new_key(csr->key_length);
  if (!key) return supplied ? bad_key(*csr) : failed(*csr);

  const tw::request_ptr request(X509_REQ_new());
  if (!request) return failed(*csr);
  if (!X509_REQ_set_pubkey(request.get(), key.get())) return bad_key(*csr);
  if (!add_subject(request.get(), *csr) || !tw::add_extensions(request.get()) ||
      !add_challenge_password(request.get(), csr->challenge_password.c_str()) ||
      !sign(request.get(), key.get()) || !keep_request(*csr, request.get()))
    return failed(*csr);
  // From here on the record has the new request, whatever becomes of the key.
  if (!supplied && !keep_key(*csr, key.get())) return failed(*csr);
  return 1;
}
