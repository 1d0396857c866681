// Jansson values that release themselves.
#pragma once

#include <jansson.h>

#include <memory>

namespace searchd {

struct json_release {
  void operator()(json_t *value) const noexcept { json_decref(value); }
};
using json = std::unique_ptr<json_t, json_release>;

}  // namespace searchd
