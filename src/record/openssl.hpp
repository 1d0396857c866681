// Owners of OpenSSL objects, and what every use of OpenSSL here keeps to.
#ifndef TW_RECORD_OPENSSL_HPP
#define TW_RECORD_OPENSSL_HPP

#include <openssl/bio.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509.h>
#include <openssl/x509v3.h>

#include <memory>

namespace tw {

template <auto Free>
struct freed_by {
  template <class Object>
  void operator()(Object *object) const noexcept {
    Free(object);
  }
};
inline void free_extensions(STACK_OF(X509_EXTENSION) * list) noexcept {
  sk_X509_EXTENSION_pop_free(list, X509_EXTENSION_free);
}

using bio_ptr = std::unique_ptr<BIO, freed_by<BIO_free>>;
using pkey_ptr = std::unique_ptr<EVP_PKEY, freed_by<EVP_PKEY_free>>;
using pkey_ctx_ptr = std::unique_ptr<EVP_PKEY_CTX, freed_by<EVP_PKEY_CTX_free>>;
using request_ptr = std::unique_ptr<X509_REQ, freed_by<X509_REQ_free>>;
using x509_ptr = std::unique_ptr<X509, freed_by<X509_free>>;
using extensions_ptr = std::unique_ptr<STACK_OF(X509_EXTENSION), freed_by<free_extensions>>;

// A memory buffer that wipes its bytes when it grows and when it is freed: every PEM text goes through one.
inline bio_ptr new_buffer() noexcept { return bio_ptr(BIO_new(BIO_s_secmem())); }

// The pass phrase callback of every key that is read: a protected key is unusable here, and no terminal is
// ever asked for its password.
inline int no_password(char *, int, int, void *) noexcept { return -1; }

// Leaves no error of ours behind for whoever asks OpenSSL next on this thread.
struct clean_error_queue {
  ~clean_error_queue() { ERR_clear_error(); }
};

}  // namespace tw

#endif
