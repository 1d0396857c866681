// Enrolment records that free themselves.
#ifndef TW_TESTS_RECORDS_ENROLLMENT_FIXTURE_HPP
#define TW_TESTS_RECORDS_ENROLLMENT_FIXTURE_HPP

#include <twobject/enrollment.h>

#include "node_fixture.hpp"

namespace records {

struct free_enrollment {
  void operator()(cfg_enrollment *enrollment) const { cfg_enrollment_free(enrollment); }
};
using enrollment_record = std::unique_ptr<cfg_enrollment, free_enrollment>;

class EnrollmentTest : public NodeTest {
 protected:
  enrollment_record make(const char *product) {
    return enrollment_record(cfg_enrollment_new(store, product));
  }
  enrollment_record load_enrollment(const std::string &id) {
    return enrollment_record(cfg_enrollment_get_by_id(store, id.c_str()));
  }
  static std::string status_of(const enrollment_record &enrollment) {
    const heap_text status(cfg_enrollment_get_status(enrollment.get()));
    return status == nullptr ? "none" : status.get();
  }
  /** The element that a record is saved in. */
  std::string stored(const enrollment_record &enrollment) {
    return dump(cfg_get_by_id(store, cfg_enrollment_get_uuid(enrollment.get())));
  }
};

}  // namespace records

#endif
