// What the certificate and the request share: their place in the store, and the reading of PEM texts.
#ifndef TW_HTTPS_HTTPS_HPP
#define TW_HTTPS_HTTPS_HPP

#include <twconfig/element.h>

#include "record/openssl.hpp"

namespace tw {

// The map "services.https", made when it is missing. NULL when it cannot be made.
cfg_elem *need_https(cfg *store) noexcept;

// Reads a PEM text in place, without a copy of what may be a private key.
inline bio_ptr reading(const char *pem) noexcept { return bio_ptr(BIO_new_mem_buf(pem, -1)); }

// The private key in a PEM text, which may come from anywhere; NULL when there is none without pass phrase.
pkey_ptr read_key(const char *pem) noexcept;

}  // namespace tw

#endif
