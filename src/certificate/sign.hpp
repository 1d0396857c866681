// The second half of issuing: the appliance's certificate authority signs a request.
#ifndef TW_CERTIFICATE_SIGN_HPP
#define TW_CERTIFICATE_SIGN_HPP

#include "certificate/openssl.hpp"

namespace tw {

// What the authority keeps in the store, each text in a buffer of its own.
struct authority {
  bio_ptr key;
  bio_ptr certificate;
  bio_ptr serial;
};

// Signs the request with the authority's key, writes the certificate to `certificate_pem` as PEM and appends
// the next serial number to the authority's serial buffer, from which the used line has been read.
bool sign_csr(BIO *request_pem, const authority &ca, BIO *certificate_pem) noexcept;

}  // namespace tw

#endif
