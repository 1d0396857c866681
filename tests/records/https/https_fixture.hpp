// A store with what "services.https" can hold, and OpenSSL's objects to judge what was made.
#ifndef TW_TESTS_RECORDS_HTTPS_HTTPS_FIXTURE_HPP
#define TW_TESTS_RECORDS_HTTPS_HTTPS_FIXTURE_HPP

#include <openssl/x509.h>
#include <twobject/https.h>

#include <fstream>

#include "records/authority.hpp"
#include "records/store_fixture.hpp"

namespace records {

struct free_csr {
  void operator()(cfg_csr *csr) const { cfg_csr_free(csr); }
};
using csr_record = std::unique_ptr<cfg_csr, free_csr>;

struct free_details {
  void operator()(cfg_https_cert_details *details) const { cfg_free_https_cert_details(details); }
};
using details_record = std::unique_ptr<cfg_https_cert_details, free_details>;

struct free_request {
  void operator()(X509_REQ *request) const { X509_REQ_free(request); }
};
using request_object = std::unique_ptr<X509_REQ, free_request>;

/** The request in a PEM text; NULL when there is none. */
request_object request_from(const char *pem);
/** A new RSA key as PEM, made once per process for each size. */
const std::string &rsa_key(unsigned bits);
/** A key that is given away, as PEM. */
std::string pem_of(EVP_PKEY *key);

/** A text of the record: its key in the store, and the functions of its field. */
struct text_field {
  const char *key;
  const char *(*get)(const cfg_csr *);
  int (*set)(cfg_csr *, const char *);
};
/** The seven of the subject. */
inline constexpr text_field subject_fields[] = {
    {"common_name", cfg_csr_get_common_name, cfg_csr_set_common_name},
    {"org_unit", cfg_csr_get_org_unit, cfg_csr_set_org_unit},
    {"organization", cfg_csr_get_organization, cfg_csr_set_organization},
    {"locality", cfg_csr_get_locality, cfg_csr_set_locality},
    {"state", cfg_csr_get_state, cfg_csr_set_state},
    {"country", cfg_csr_get_country, cfg_csr_set_country},
    {"email", cfg_csr_get_email, cfg_csr_set_email},
};
/** The three others. */
inline constexpr text_field other_fields[] = {
    {"challenge_password", cfg_csr_get_challenge_password, cfg_csr_set_challenge_password},
    {"private_key", cfg_csr_get_private_key, cfg_csr_set_private_key},
    {"csr", cfg_csr_get_csr, cfg_csr_set_csr},
};
/** All ten. */
std::vector<text_field> text_fields();

class HttpsTest : public StoreTest {
 protected:
  /** A record that a request can be generated for, with a small key. */
  csr_record filled();
  csr_record load() { return csr_record(cfg_get_https_csr(store)); }
  details_record details() { return details_record(cfg_get_https_cert_details(store)); }
  /** The codes of the edit's messages, in order. */
  std::vector<int32_t> messages();
  /** A new file of this test with this content. */
  std::string file(const std::string &name, const std::string &content);
  void TearDown() override;

 private:
  std::vector<std::string> files_;
};

}  // namespace records

#endif
