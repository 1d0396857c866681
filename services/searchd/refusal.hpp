// Why a request is not served, in words for whoever asked.
#pragma once

#include <stdexcept>

namespace searchd {

struct refusal : std::runtime_error {
  using std::runtime_error::runtime_error;
};

}  // namespace searchd
