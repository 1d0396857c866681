// The records of libtwobject and other C objects, released when their owner ends.
#pragma once

#include <jansson.h>
#include <twconfig.h>
#include <twobject.h>

#include <cstdlib>
#include <memory>

namespace twctl {

template <auto Release>
struct releaser {
  template <typename T>
  void operator()(T *object) const {
    Release(object);
  }
};

/// The store keeps a certificate record's own block alive for other holders; this owner is the only one.
inline void release_certificate(cfg_certificate *certificate) {
  cfg_certificate_free(certificate);
  std::free(certificate);
}

/// json_decref() has no linkage of its own, which a type that headers share needs.
inline void release_json(json_t *value) { json_decref(value); }

using node_record = std::unique_ptr<cfg_node, releaser<cfg_node_free>>;
using enrollment_record = std::unique_ptr<cfg_enrollment, releaser<cfg_enrollment_free>>;
using certificate_record = std::unique_ptr<cfg_certificate, releaser<release_certificate>>;
using condition_tree = std::unique_ptr<cfg_condition, releaser<cfg_free_conditions>>;
using json_value = std::unique_ptr<json_t, releaser<release_json>>;

}  // namespace twctl
