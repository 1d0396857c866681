// A certificate authority of the test's own, and OpenSSL's objects and program to judge what it issued.
#ifndef TW_TESTS_RECORDS_AUTHORITY_HPP
#define TW_TESTS_RECORDS_AUTHORITY_HPP

#include <openssl/evp.h>
#include <openssl/x509.h>

#include <memory>
#include <string>
#include <vector>

namespace records {

struct free_pkey {
  void operator()(EVP_PKEY *key) const { EVP_PKEY_free(key); }
};
struct free_x509 {
  void operator()(X509 *certificate) const { X509_free(certificate); }
};
using key_object = std::unique_ptr<EVP_PKEY, free_pkey>;
using certificate_object = std::unique_ptr<X509, free_x509>;

/** A self-signed authority as PEM texts. */
struct authority {
  std::string key;
  std::string certificate;
};
/** An authority with a 2048-bit RSA key, made once per process. */
const authority &rsa_authority();
/** One with a P-256 key. */
const authority &elliptic_authority();

key_object key_from(const std::string &pem);
certificate_object certificate_from(const std::string &pem);
/** The key as PEM, encrypted with a pass phrase. */
std::string encrypted(const std::string &key_pem);

/** A number in upper-case hexadecimal digits. */
std::string hexadecimal(const ASN1_INTEGER *number);

/** What the openssl program printed on both outputs, and its exit status behind "exit ". */
std::string run_openssl(const std::vector<std::string> &arguments);

}  // namespace records

#endif
