// The live state of a node, as it was when it was first asked for.
#ifndef TW_NODES_RUNTIME_HPP
#define TW_NODES_RUNTIME_HPP

#include <cstdint>

#include "record/text.hpp"

namespace tw {

struct node_runtime {
  int64_t last_connection_change_time = 0;
  int64_t last_connection_change_delta = 0;
  int32_t connection_status = 0;
  int32_t action_type = 0;
  int32_t action_status = 0;
  text action_error_message;
};

}  // namespace tw

#endif
