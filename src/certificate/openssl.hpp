// Owners of OpenSSL objects, and the one way this folder logs.
#ifndef TW_CERTIFICATE_OPENSSL_HPP
#define TW_CERTIFICATE_OPENSSL_HPP

#include <openssl/bio.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509.h>
#include <openssl/x509v3.h>
#include <syslog.h>
#include <twlog.h>

#include <array>
#include <memory>

#include "record/assertion.hpp"

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

struct bytes {
  const char *data;
  size_t length;
};

// All that is left in a buffer that was filled before.
inline bytes content_of(BIO *buffer) noexcept {
  char *data = nullptr;
  const long length = BIO_get_mem_data(buffer, &data);
  TW_ASSERT(data && length > 0, "src/certificate");
  return {data, static_cast<size_t>(length)};
}

// The text of the thread's most recent OpenSSL error.
struct openssl_error {
  std::array<char, 256> chars{};
  openssl_error() noexcept { ERR_error_string_n(ERR_peek_last_error(), chars.data(), chars.size()); }
  const char *text() const noexcept { return chars.data(); }
};

// Each phase of issuing logs under its own name, also where the line stands outside the phase's function:
// those who read the journal follow a phase by it.
#define CERTIFICATE_LOG_AS(phase, priority, ...) \
  twlog_log_prio_codepos("src/certificate", phase, __LINE__, priority, __VA_ARGS__)
#define CERTIFICATE_LOG(priority, ...) CERTIFICATE_LOG_AS(__func__, priority, __VA_ARGS__)

}  // namespace tw

#endif
