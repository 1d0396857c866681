// A certificate record that another record owns whole.
#ifndef TW_RECORD_OWNED_CERTIFICATE_HPP
#define TW_RECORD_OWNED_CERTIFICATE_HPP

#include <twobject/certificate.h>

#include <cstdlib>
#include <memory>

#include "record/row.hpp"

namespace tw {

// cfg_certificate_free() leaves the record's block, so that pointers to it stay good. The record that reads a
// certificate for itself holds the last pointer and gives the block back too.
struct certificate_release {
  void operator()(cfg_certificate *certificate) const noexcept {
    cfg_certificate_free(certificate);
    std::free(certificate);
  }
};
using owned_certificate = std::unique_ptr<cfg_certificate, certificate_release>;

// For hook_row(): loads the certificate behind a reference on the spot. One that cannot be loaded leaves the
// record without certificate.
template <auto Member>
bool load_certificate(void *record, const cfg_value &reference) noexcept {
  auto *self = static_cast<typename member_of<Member>::record *>(record);
  (self->*Member).reset(cfg_get_certificate_by_id(self->cfg, reference.data));
  return true;
}

}  // namespace tw

#endif
