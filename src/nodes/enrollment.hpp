// The enrolment record, shared by the two files that work on it.
#ifndef TW_NODES_ENROLLMENT_HPP
#define TW_NODES_ENROLLMENT_HPP

#include <twobject/enrollment.h>

#include "nodes/port_labels.hpp"
#include "nodes/product.hpp"
#include "record/owned_certificate.hpp"
#include "record/view.hpp"

struct cfg_enrollment : tw::object_view {
  tw::text product;
  tw::text address;
  tw::owned_certificate certificate;
  tw::text ca;
  tw::text status;
  tw::text name;
  tw::secret package_password;
  int32_t auto_approve = 0;
  uint32_t base_port = 0;
  int32_t port_label_count = 0;
  tw::port_labels port_labels;
  tw::text connection_method;
  tw::text username;
  tw::secret password;
};

#endif
