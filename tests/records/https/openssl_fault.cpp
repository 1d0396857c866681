#include "openssl_fault.hpp"

#include <dlfcn.h>
#include <openssl/pem.h>
#include <openssl/x509.h>

namespace records {
namespace {

std::string_view failing;

// What the function answers: 0 when it is to fail, and what OpenSSL's own does otherwise.
template <class Function, class... Arguments>
int answer(Function *, const char *name, Arguments... arguments) {
  if (failing == name) return 0;
  return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name))(arguments...);
}

}  // namespace

OpensslFault::OpensslFault(std::string_view function) { failing = function; }
OpensslFault::~OpensslFault() { failing = {}; }

}  // namespace records

// These stand in front of OpenSSL's own, for the program and its libraries.
#define SEEN __attribute__((visibility("default")))
extern "C" {
SEEN int X509_REQ_set_pubkey(X509_REQ *request, EVP_PKEY *key) {
  return records::answer(X509_REQ_set_pubkey, "X509_REQ_set_pubkey", request, key);
}
SEEN int PEM_write_bio_PrivateKey(BIO *out, const EVP_PKEY *key, const EVP_CIPHER *cipher,
                                  const unsigned char *pass, int length, pem_password_cb *ask,
                                  void *context) {
  return records::answer(PEM_write_bio_PrivateKey, "PEM_write_bio_PrivateKey", out, key, cipher, pass, length,
                         ask, context);
}
}
