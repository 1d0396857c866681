// What all certificate requests are made of: a new RSA key, a subject, and the extensions that are asked for.
#ifndef TW_RECORD_REQUEST_HPP
#define TW_RECORD_REQUEST_HPP

#include <span>

#include "record/openssl.hpp"

namespace tw {

// Generates an RSA key of `bits` bits with the public exponent 65537 in its container.
bool generate_rsa_key(EVP_PKEY *container, int bits) noexcept;

struct subject_entry {
  const char *type;   // "CN" and the like
  const char *value;  // NULL fails
};

// Appends the entries in order, as ASCII strings. All are tried; false when one or more fail. OpenSSL itself
// refuses what is longer than a subject may hold (64 characters of a common name).
bool add_subject(X509_REQ *request, std::span<const subject_entry> entries) noexcept;

// Asks for the key usage and the Netscape type that all certificates of the appliance have.
bool add_extensions(X509_REQ *request) noexcept;

}  // namespace tw

#endif
