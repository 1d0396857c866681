// The web server's certificate: installing it, and what it says.
#include <twobject/https.h>

#include <cstring>
#include <memory>
#include <new>

#include "https/https.hpp"
#include "record/memory_watch.hpp"
#include "record/text.hpp"

namespace {

using details = cfg_https_cert_details;

struct free_details {
  void operator()(details *record) const noexcept { cfg_free_https_cert_details(record); }
};

void delete_at(cfg *store, const char *path) noexcept {
  if (cfg_elem *elem = cfg_get_by_path(store, path)) cfg_delete_element(store, elem);
}

// A blob as a heap text; NULL when there is none.
char *blob_text(cfg *store, const char *path) noexcept {
  void *data = nullptr;
  size_t length = 0;
  return cfg_blob_value(cfg_get_by_path(store, path), &data, &length) ? static_cast<char *>(data) : nullptr;
}

struct subject_field {
  int nid;
  char (details::*text)[CFG_HTTPS_TEXT_SIZE];
};
constexpr subject_field subject_fields[] = {
    {NID_commonName, &details::common_name},        {NID_organizationalUnitName, &details::org_unit},
    {NID_organizationName, &details::organization}, {NID_localityName, &details::locality},
    {NID_stateOrProvinceName, &details::state},     {NID_countryName, &details::country},
    {NID_pkcs9_emailAddress, &details::email},
};

bool read_key_length(details &record) noexcept {
  const tw::pkey_ptr key = tw::read_key(record.private_key);
  const int type = key ? EVP_PKEY_get_base_id(key.get()) : EVP_PKEY_NONE;
  if (type != EVP_PKEY_RSA && type != EVP_PKEY_RSA_PSS) return false;
  record.key_length = EVP_PKEY_get_size(key.get()) * 8;
  return true;
}

bool read_certificate(details &record) noexcept {
  const tw::bio_ptr text = tw::reading(record.certificate);
  if (!text) return false;
  const tw::x509_ptr certificate(PEM_read_bio_X509(text.get(), nullptr, tw::no_password, nullptr));
  if (!certificate) return false;
  X509_NAME *subject = X509_get_subject_name(certificate.get());
  if (X509_NAME_entry_count(subject) <= 0) return false;
  for (const subject_field &field : subject_fields)
    X509_NAME_get_text_by_NID(subject, field.nid, record.*field.text, CFG_HTTPS_TEXT_SIZE);
  time_to_string(X509_get0_notBefore(certificate.get()), record.not_before);
  time_to_string(X509_get0_notAfter(certificate.get()), record.not_after);
  return true;
}

}  // namespace

// Callers count on 1 whatever the store says to the two writes.
int cfg_set_https_cert(cfg *store, const char *certificate, const char *private_key) noexcept {
  if (!store || !certificate || !private_key) return 0;
  const tw::memory_watch memory;
  delete_at(store, "services.https.csr.csr");
  delete_at(store, "services.https.csr.private_key");
  cfg_elem *https = tw::need_https(store);
  cfg_map_set_blob(store, https, "certificate", certificate, std::strlen(certificate));
  cfg_map_set_blob(store, https, "private_key", private_key, std::strlen(private_key));
  return !memory.ran_short();
}

cfg_https_cert_details *cfg_get_https_cert_details(cfg *store) noexcept {
  const tw::memory_watch memory;
  const tw::clean_error_queue at_exit;
  std::unique_ptr<details, free_details> record(new (std::nothrow) details{});
  if (!record) return nullptr;
  record->certificate = blob_text(store, "services.https.certificate");
  record->private_key = blob_text(store, "services.https.private_key");
  if (!record->certificate || !record->private_key) return nullptr;
  if (!read_key_length(*record) || !read_certificate(*record)) return nullptr;
  return memory.ran_short() ? nullptr : record.release();
}

void cfg_free_https_cert_details(cfg_https_cert_details *record) noexcept {
  if (!record) return;
  tw::secret().adopt(record->private_key);  // wiped where it goes
  std::free(record->certificate);
  delete record;
}
