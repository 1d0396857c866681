// Issuing a certificate: key, request, signature of the appliance's certificate authority, next serial
// number.
#include <twconfig/message.h>
#include <twconfig/read.h>

#include "certificate/certificate.hpp"
#include "certificate/request.hpp"
#include "certificate/sign.hpp"

namespace {

// The value of a blob element in a buffer of its own; NULL when it is no blob, empty, or does not fit.
tw::bio_ptr build_blob_bio(cfg_elem *elem) noexcept {
  cfg_value value;
  if (!cfg_elem_read(elem, &value) || value.kind != CFG_BLOB || value.length == 0) return nullptr;
  tw::bio_ptr buffer = tw::new_buffer();
  if (!buffer) return nullptr;
  size_t written = 0;
  if (!BIO_write_ex(buffer.get(), value.data, value.length, &written) || written != value.length) {
    CERTIFICATE_LOG(LOG_ERR, "Could not write blob data to BIO: %s", tw::openssl_error().text());
    return nullptr;
  }
  return buffer;
}

}  // namespace

int cfg_certificate_generate(cfg_certificate *record) noexcept {
  if (!record) return 0;
  const tw::clean_error_queue at_exit;
  cfg *store = record->cfg;

  const tw::bio_ptr key_pem = tw::new_buffer();
  if (!key_pem) {
    CERTIFICATE_LOG_AS("build_pkey", LOG_ERR, "Could not allocate PEM bio");
    return 0;
  }
  CERTIFICATE_LOG_AS("build_pkey", LOG_DEBUG, "Building key PEM");
  if (!tw::build_pkey(key_pem.get())) {
    CERTIFICATE_LOG_AS("build_pkey", LOG_ERR, "Failed to build new key PEM");
    return 0;
  }
  CERTIFICATE_LOG_AS("build_pkey", LOG_DEBUG, "Successfully built new key PEM");
  const tw::bytes key = tw::content_of(key_pem.get());
  if (!record->private_key.assign(key.data, key.length)) {
    CERTIFICATE_LOG_AS("build_pkey", LOG_ERR, "Failed to store new key PEM: %s",
                       cfg_get_first_message_string(store));
    return 0;
  }

  CERTIFICATE_LOG_AS("build_csr", LOG_DEBUG, "Building X509 CSR");
  const tw::bio_ptr request_pem = tw::build_csr(key_pem.get(), record->common_name.c_str());
  if (!request_pem) {
    CERTIFICATE_LOG_AS("build_csr", LOG_ERR, "Failed to build CSR");
    return 0;
  }
  CERTIFICATE_LOG_AS("build_csr", LOG_DEBUG, "Successfully built X509 CSR");

  cfg_elem *key_elem = cfg_get_by_path(store, "services.ca.key");
  cfg_elem *certificate_elem = cfg_get_by_path(store, "services.ca.certificate");
  cfg_elem *serial_elem = cfg_get_by_path(store, "services.ca.serial");
  if (!key_elem || !certificate_elem || !serial_elem) {
    // The line break belongs to the message.
    CERTIFICATE_LOG(LOG_ERR, "Could not get CA blob elements: %s\n", cfg_get_first_message_string(store));
    return 0;
  }
  tw::authority ca;
  ca.key = build_blob_bio(key_elem);
  if (!ca.key) {
    CERTIFICATE_LOG(LOG_ERR, "Failed to load CA key into BIO");
    return 0;
  }
  ca.certificate = build_blob_bio(certificate_elem);
  if (!ca.certificate) {
    CERTIFICATE_LOG(LOG_ERR, "Failed to load CA certificate into BIO");
    return 0;
  }
  ca.serial = build_blob_bio(serial_elem);
  if (!ca.serial) {
    CERTIFICATE_LOG(LOG_ERR, "Failed to load CA serial into BIO");
    return 0;
  }

  const tw::bio_ptr certificate_pem = tw::new_buffer();
  if (!certificate_pem) {
    CERTIFICATE_LOG(LOG_ERR, "Could not allocate CRT bio: %s", tw::openssl_error().text());
    return 0;
  }
  if (!tw::sign_csr(request_pem.get(), ca, certificate_pem.get())) {
    CERTIFICATE_LOG(LOG_ERR, "Failed to sign CSR");
    return 0;
  }

  const tw::bytes certificate = tw::content_of(certificate_pem.get());
  if (!record->cert.assign(certificate.data, certificate.length)) return 0;
  const tw::bytes serial = tw::content_of(ca.serial.get());
  if (!cfg_set_blob(store, serial_elem, serial.data, serial.length)) {
    CERTIFICATE_LOG(LOG_ERR, "Failed to store updated CA serial: %s", cfg_get_first_message_string(store));
    return 0;
  }
  return 1;
}
