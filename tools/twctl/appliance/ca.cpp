#include "appliance/ca.hpp"

#include <fmt/format.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/x509v3.h>

#include <ctime>
#include <memory>

#include "cli/failure.hpp"
#include "cli/records.hpp"

namespace twctl {

namespace {

constexpr int key_bits = 3072;
constexpr long valid_days = 20 * 365 + 5;  // five leap days in twenty years

using bio = std::unique_ptr<BIO, releaser<BIO_free_all>>;
using private_key = std::unique_ptr<EVP_PKEY, releaser<EVP_PKEY_free>>;
using x509 = std::unique_ptr<X509, releaser<X509_free>>;
using x509_extension = std::unique_ptr<X509_EXTENSION, releaser<X509_EXTENSION_free>>;
using big_number = std::unique_ptr<BIGNUM, releaser<BN_free>>;

[[noreturn]] void give_up(const char *what) {
  char reason[256] = "";
  ERR_error_string_n(ERR_get_error(), reason, sizeof reason);
  throw failure(exit_code::failure, what, reason);
}

/// The bytes that were written into a memory BIO.
std::string_view content_of(BIO *memory) {
  char *data = nullptr;
  long length = BIO_get_mem_data(memory, &data);
  return {data, length > 0 ? static_cast<size_t>(length) : 0};
}

void add_extension(X509 *certificate, int kind, const char *value) {
  X509V3_CTX context;
  X509V3_set_ctx(&context, certificate, certificate, nullptr, nullptr, 0);
  x509_extension extension(X509V3_EXT_conf_nid(nullptr, &context, kind, value));
  if (!extension || X509_add_ext(certificate, extension.get(), -1) != 1)
    give_up("cannot build the authority's certificate");
}

x509 self_signed(EVP_PKEY *key, const std::string &common_name) {
  x509 certificate(X509_new());
  if (!certificate) give_up("cannot build the authority's certificate");
  unsigned char serial[16];
  if (RAND_bytes(serial, sizeof serial) != 1) give_up("no random numbers are available");
  serial[0] &= 0x7f;  // serial numbers are positive
  big_number number(BN_bin2bn(serial, sizeof serial, nullptr));
  X509_NAME *subject = X509_get_subject_name(certificate.get());
  bool built = number && BN_to_ASN1_INTEGER(number.get(), X509_get_serialNumber(certificate.get())) &&
               X509_set_version(certificate.get(), 2) == 1 &&  // X.509 version 3
               X509_time_adj_ex(X509_getm_notBefore(certificate.get()), -1, 0, nullptr) &&
               X509_time_adj_ex(X509_getm_notAfter(certificate.get()), valid_days, 0, nullptr) &&
               X509_NAME_add_entry_by_NID(subject, NID_commonName, MBSTRING_UTF8,
                                          reinterpret_cast<const unsigned char *>(common_name.data()),
                                          static_cast<int>(common_name.size()), -1, 0) == 1 &&
               X509_set_issuer_name(certificate.get(), subject) == 1 &&
               X509_set_pubkey(certificate.get(), key) == 1;
  if (!built) give_up("cannot build the authority's certificate");
  add_extension(certificate.get(), NID_basic_constraints, "critical,CA:TRUE");
  add_extension(certificate.get(), NID_key_usage, "critical,keyCertSign,cRLSign");
  add_extension(certificate.get(), NID_subject_key_identifier, "hash");
  if (X509_sign(certificate.get(), key, EVP_sha256()) == 0)
    give_up("cannot sign the authority's certificate");
  return certificate;
}

int64_t seconds_of(const ASN1_TIME *time) {
  tm parts{};
  if (ASN1_TIME_to_tm(time, &parts) != 1) give_up("the certificate holds a time that cannot be read");
  return timegm(&parts);
}

x509 parse_certificate(const char *pem) {
  bio text(BIO_new_mem_buf(pem ? pem : "", -1));
  return x509(text ? PEM_read_bio_X509(text.get(), nullptr, nullptr, nullptr) : nullptr);
}

/// A key with a pass phrase is none: nobody would be there to type it when the key is needed.
private_key parse_key(const char *pem) {
  bio text(BIO_new_mem_buf(pem, -1));
  auto no_phrase = [](char *, int, int, void *) { return -1; };
  return private_key(text ? PEM_read_bio_PrivateKey(text.get(), nullptr, no_phrase, nullptr) : nullptr);
}

std::string name_of(const X509_NAME *name) {
  bio text(BIO_new(BIO_s_mem()));
  // Escapes control characters, keeps UTF-8, and writes "CN = x, O = y".
  unsigned long form = XN_FLAG_ONELINE & ~static_cast<unsigned long>(ASN1_STRFLGS_ESC_MSB);
  if (!text || X509_NAME_print_ex(text.get(), name, 0, form) < 0)
    give_up("the certificate's name cannot be read");
  return std::string(content_of(text.get()));
}

}  // namespace

authority make_authority(const std::string &common_name) {
  private_key key(EVP_RSA_gen(key_bits));
  if (!key) give_up("cannot make the authority's key");
  x509 certificate = self_signed(key.get(), common_name);
  // The key's text lives in OpenSSL's secure-by-cleansing buffer and in a secret, nowhere else.
  bio key_text(BIO_new(BIO_s_secmem()));
  bio certificate_text(BIO_new(BIO_s_mem()));
  if (!key_text ||
      PEM_write_bio_PrivateKey(key_text.get(), key.get(), nullptr, nullptr, 0, nullptr, nullptr) != 1 ||
      !certificate_text || PEM_write_bio_X509(certificate_text.get(), certificate.get()) != 1)
    give_up("cannot write the authority's key and certificate");
  return {std::string(content_of(certificate_text.get())), secret(content_of(key_text.get()))};
}

certificate_facts read_certificate(const char *pem) {
  x509 certificate = parse_certificate(pem);
  if (!certificate) give_up("the stored certificate cannot be read");
  certificate_facts facts{};
  facts.subject = name_of(X509_get_subject_name(certificate.get()));
  facts.issuer = name_of(X509_get_issuer_name(certificate.get()));
  facts.not_before = seconds_of(X509_get0_notBefore(certificate.get()));
  facts.not_after = seconds_of(X509_get0_notAfter(certificate.get()));
  big_number serial(ASN1_INTEGER_to_BN(X509_get0_serialNumber(certificate.get()), nullptr));
  std::unique_ptr<char, void (*)(char *)> digits(serial ? BN_bn2hex(serial.get()) : nullptr,
                                                 [](char *heap) { OPENSSL_free(heap); });
  unsigned char digest[EVP_MAX_MD_SIZE];
  unsigned length = 0;
  if (!digits || X509_digest(certificate.get(), EVP_sha256(), digest, &length) != 1)
    give_up("the stored certificate cannot be read");
  facts.serial = digits.get();
  for (unsigned i = 0; i < length; i++) facts.fingerprint += fmt::format("{}{:02X}", i ? ":" : "", digest[i]);
  return facts;
}

void require_pair(const char *certificate, const char *key) {
  x509 read = parse_certificate(certificate);
  if (!read) throw failure(exit_code::invalid_input, "the certificate cannot be read", "it is no PEM text");
  private_key of = parse_key(key);
  if (!of)
    throw failure(exit_code::invalid_input, "the private key cannot be read",
                  "it is no PEM text, or needs a pass phrase");
  if (X509_check_private_key(read.get(), of.get()) != 1)
    throw failure(exit_code::invalid_input, "certificate and private key do not belong together");
}

}  // namespace twctl
