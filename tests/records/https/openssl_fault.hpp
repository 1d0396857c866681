// OpenSSL functions that fail when a test wants them to.
#ifndef TW_TESTS_RECORDS_HTTPS_OPENSSL_FAULT_HPP
#define TW_TESTS_RECORDS_HTTPS_OPENSSL_FAULT_HPP

#include <string_view>

namespace records {

/** While it lives, the OpenSSL function of this name fails: X509_REQ_set_pubkey or PEM_write_bio_PrivateKey.
 */
class OpensslFault {
 public:
  explicit OpensslFault(std::string_view function);
  ~OpensslFault();
  OpensslFault(const OpensslFault &) = delete;
  OpensslFault &operator=(const OpensslFault &) = delete;
};

}  // namespace records

#endif
