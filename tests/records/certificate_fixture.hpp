// A store with an authority, the log's lines, and a watch that no private key is among them.
#ifndef TW_TESTS_RECORDS_CERTIFICATE_FIXTURE_HPP
#define TW_TESTS_RECORDS_CERTIFICATE_FIXTURE_HPP

#include <twlog.h>
#include <twobject/certificate.h>

#include "authority.hpp"
#include "store_fixture.hpp"

namespace records {

/** Gives all of a record back: its fields, and the block that cfg_certificate_free() leaves to its owner. */
struct free_certificate {
  void operator()(cfg_certificate *certificate) const {
    cfg_certificate_free(certificate);
    std::free(certificate);
  }
};
using certificate_record = std::unique_ptr<cfg_certificate, free_certificate>;

class CertificateTest : public StoreTest {
 protected:
  void SetUp() override;
  void TearDown() override;

  /** Puts an authority under "services.ca" with a serial blob. */
  void add_authority(const authority &ca, std::string_view serial = "1\n");
  void set_serial(std::string_view bytes) { set_blob(map_at("services.ca"), "serial", bytes); }
  std::string serial() { return blob_at("services.ca.serial").value_or("none"); }
  certificate_record issue(const char *common_name = "node") {
    return certificate_record(cfg_certificate_new(store, common_name));
  }
  /** The captured lines as "priority function: message", from the last call on. */
  std::vector<std::string> log_lines();

 private:
  static void take_line(void *context, const char *file, const char *function, int line, int priority,
                        const char *message);
  std::vector<std::string> lines_;
  std::string everything_;
  std::vector<std::string> secrets_;
};

/** The lines of an issue that goes well; its signing says nothing. */
inline const std::vector<std::string> lines_of_a_success = {
    "7 build_pkey: Building key PEM",
    "7 build_pkey: Successfully built new key PEM",
    "7 build_csr: Building X509 CSR",
    "7 build_csr: Successfully built X509 CSR",
};

}  // namespace records

#endif
