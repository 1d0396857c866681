// The record of one node's share of a push.
#ifndef TW_PUSHES_NODE_CTXT_HPP
#define TW_PUSHES_NODE_CTXT_HPP

#include <twobject/push_node_ctxt.h>

#include <array>

#include "record/text_array.hpp"
#include "record/view.hpp"

namespace tw {

// The lists of messages, in the order in which they are read.
enum class message_list : std::size_t {
  preflight_changes,
  preflight_warnings,
  preflight_errors,
  preflight_messages,
  execution_changes,
  execution_warnings,
  execution_errors,
  execution_messages
};
inline constexpr std::array message_list_keys = {
    "preflight_changes", "preflight_warnings", "preflight_errors", "preflight_messages",
    "execution_changes", "execution_warnings", "execution_errors", "execution_messages"};

}  // namespace tw

struct cfg_push_node_ctxt : tw::object_view {
  tw::text parent_uuid;
  tw::text node;
  std::array<tw::text_array, tw::message_list_keys.size()> messages;  // the IDs of each list's messages
  int32_t status = CFG_PUSH_NODE_PREFLIGHT_READY;
  int32_t apply_execution = 0;
};

#endif
