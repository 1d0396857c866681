// The appliance's certificate authority: making it, and reading certificates.
#pragma once

#include <cstdint>
#include <string>

#include "cli/secret.hpp"

namespace twctl {

struct authority {
  std::string certificate;  ///< PEM
  secret key;               ///< PEM, unencrypted
};

/**
 * Makes a certificate authority: a 3072-bit RSA key and a self-signed certificate, valid for 20 years.
 * @param common_name the subject's CN, 1 to 64 characters
 */
authority make_authority(const std::string &common_name);

/// What a certificate says, as people read it.
struct certificate_facts {
  std::string subject, issuer;    ///< "CN = x, O = y"
  std::string serial;             ///< hexadecimal, upper case
  int64_t not_before, not_after;  ///< seconds since the epoch
  std::string fingerprint;        ///< SHA-256, hexadecimal, colons between the bytes
};

/// Reads a PEM certificate; fails with exit code 1 when the text is none.
certificate_facts read_certificate(const char *pem);

/// Fails with exit code 5 unless a PEM certificate and a PEM key can both be read and belong together.
void require_pair(const char *certificate, const char *key);

}  // namespace twctl
