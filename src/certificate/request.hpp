// The first half of issuing: a new key and a signing request for it.
#ifndef TW_CERTIFICATE_REQUEST_HPP
#define TW_CERTIFICATE_REQUEST_HPP

#include "certificate/openssl.hpp"

namespace tw {

// Writes a new RSA key to `key_pem` as unencrypted PEM.
bool build_pkey(BIO *key_pem) noexcept;

// Reads the key back from `key_pem` and returns a request for it as PEM; NULL on failure.
bio_ptr build_csr(BIO *key_pem, const char *common_name) noexcept;

}  // namespace tw

#endif
