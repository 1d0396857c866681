#include "certificate/sign.hpp"

#include <cctype>
#include <cerrno>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

namespace tw {
namespace {

constexpr int serial_line_max = 30;
constexpr int days_back = 1;  // nodes whose clocks are behind accept a new certificate at once
constexpr int days_valid = 3650;
constexpr long version_3 = 2;

bool only_blanks(const char *chars) noexcept { return chars[std::strspn(chars, " \t\n\v\f\r")] == '\0'; }

// The whole line must be one hexadecimal number of at most 64 bits, with white space around it.
bool parse_serial(const char *line, uint64_t &serial) noexcept {
  const char *digits = line + std::strspn(line, " \t\n\v\f\r");
  if (!std::isxdigit(static_cast<unsigned char>(*digits))) return false;  // a sign would be taken otherwise
  char *end = nullptr;
  errno = 0;
  serial = std::strtoull(digits, &end, 16);
  return errno == 0 && only_blanks(end);
}

bool copy_extensions(X509_REQ *request, X509 *certificate) noexcept {
  const extensions_ptr list(X509_REQ_get_extensions(request));
  for (int i = 0; i < sk_X509_EXTENSION_num(list.get()); ++i) {
    if (!X509_add_ext(certificate, sk_X509_EXTENSION_value(list.get(), i), -1)) return false;
  }
  return true;
}

// An unsigned serial number stays what it is. Above the largest signed 64-bit number a signed setter would
// make it negative, which no certificate's serial may be, and the number in the store would no longer be the
// one in the certificate.
bool fill(X509 *certificate, uint64_t serial, X509 *ca, X509_REQ *request, EVP_PKEY *key) noexcept {
  time_t now = std::time(nullptr);
  return X509_set_version(certificate, version_3) &&
         ASN1_INTEGER_set_uint64(X509_get_serialNumber(certificate), serial) &&
         X509_time_adj_ex(X509_getm_notBefore(certificate), -days_back, 0, &now) &&
         X509_time_adj_ex(X509_getm_notAfter(certificate), days_valid, 0, &now) &&
         X509_set_issuer_name(certificate, X509_get_subject_name(ca)) &&
         X509_set_subject_name(certificate, X509_REQ_get_subject_name(request)) &&
         X509_set_pubkey(certificate, key) && copy_extensions(request, certificate);
}

}  // namespace

bool sign_csr(BIO *request_pem, const authority &ca, BIO *certificate_pem) noexcept {
  const request_ptr request(PEM_read_bio_X509_REQ(request_pem, nullptr, no_password, nullptr));
  const pkey_ptr ca_key(PEM_read_bio_PrivateKey(ca.key.get(), nullptr, no_password, nullptr));
  const x509_ptr ca_certificate(PEM_read_bio_X509(ca.certificate.get(), nullptr, no_password, nullptr));
  if (!request || !ca_key || !ca_certificate) {
    CERTIFICATE_LOG(LOG_ERR, "Failed to read BIOs for signing input (%p, %p, %p): %s",
                    static_cast<void *>(request.get()), static_cast<void *>(ca_key.get()),
                    static_cast<void *>(ca_certificate.get()), openssl_error().text());
    return false;
  }
  const pkey_ptr key(X509_REQ_get_pubkey(request.get()));
  if (!key) {
    CERTIFICATE_LOG(LOG_ERR, "Could not get public key from CSR: %s", openssl_error().text());
    return false;
  }

  char line[serial_line_max + 1] = {};
  const int length = BIO_gets(ca.serial.get(), line, sizeof line);
  if (length <= 0 || length > serial_line_max) {
    CERTIFICATE_LOG(LOG_ERR, "Failed to read CA serial from BIO: %s",
                    length > serial_line_max ? "serial line too long" : openssl_error().text());
    return false;
  }
  uint64_t serial = 0;
  if (!parse_serial(line, serial)) {
    CERTIFICATE_LOG(LOG_ERR, "Failed to parse CA serial '%s'", line);
    return false;
  }

  const x509_ptr certificate(X509_new());
  if (!certificate || !fill(certificate.get(), serial, ca_certificate.get(), request.get(), key.get())) {
    CERTIFICATE_LOG(LOG_ERR, "Failed to build new X509 cert from CSR: %s", openssl_error().text());
    return false;
  }
  if (X509_sign(certificate.get(), ca_key.get(), EVP_sha256()) <= 0) {
    CERTIFICATE_LOG(LOG_ERR, "Failed to sign new X509 cert from CSR: %s", openssl_error().text());
    return false;
  }
  if (!PEM_write_bio_X509(certificate_pem, certificate.get())) {
    CERTIFICATE_LOG(LOG_ERR, "Failed to write new X509 cert to BIO: %s", openssl_error().text());
    return false;
  }

  // Written behind what follows the line that was used, if anything does: the buffer is a queue of serials.
  char next[20];
  const int next_length = std::snprintf(next, sizeof next, "%" PRIX64 "\n", serial + 1);
  if (BIO_write(ca.serial.get(), next, next_length) < next_length) {
    CERTIFICATE_LOG(LOG_ERR, "Failed to write new CA serial to BIO: %s", openssl_error().text());
    return false;
  }
  return true;
}

}  // namespace tw
