#include "allocation/ready_key.hpp"

#include <dlfcn.h>
#include <openssl/evp.h>
#include <openssl/rsa.h>
#include <openssl/x509.h>

#include <utility>

#include "allocation/failing_allocator.hpp"

namespace {

RSA *ready_key = nullptr;

template <class Function>
Function *openssl(const char *name) {
  return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

// OpenSSL 3.0 frees a part of what is to be signed, which is not its own, when memory runs out within the
// signing: signing is one allocation here, and fails as a whole.
template <class Signed>
int sign(const char *name, Signed *what, EVP_PKEY *key, const EVP_MD *digest) {
  const allocation::Granted granted;
  return granted ? openssl<int(Signed *, EVP_PKEY *, const EVP_MD *)>(name)(what, key, digest) : 0;
}

}  // namespace

// These stand in front of OpenSSL's own, for the program and its libraries.
#pragma GCC visibility push(default)
extern "C" {
int EVP_PKEY_generate(EVP_PKEY_CTX *context, EVP_PKEY **key) {
  // The libraries bring a container; the tests' own keys are others.
  if (ready_key && *key && EVP_PKEY_CTX_is_a(context, "RSA")) return EVP_PKEY_set1_RSA(*key, ready_key);
  return openssl<int(EVP_PKEY_CTX *, EVP_PKEY **)>("EVP_PKEY_generate")(context, key);
}
int X509_REQ_sign(X509_REQ *request, EVP_PKEY *key, const EVP_MD *digest) {
  return sign("X509_REQ_sign", request, key, digest);
}
int X509_sign(X509 *certificate, EVP_PKEY *key, const EVP_MD *digest) {
  return sign("X509_sign", certificate, key, digest);
}
}
#pragma GCC visibility pop

namespace allocation {

ReadyKey::ReadyKey() {
  EVP_PKEY *key = EVP_RSA_gen(2048);
  ready_key = EVP_PKEY_get1_RSA(key);
  EVP_PKEY_free(key);
}
ReadyKey::~ReadyKey() { RSA_free(std::exchange(ready_key, nullptr)); }

}  // namespace allocation
