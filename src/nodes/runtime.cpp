// Live state of a node: reading it, and publishing the connection status.
#include "nodes/runtime.hpp"

#include <twaction.h>
#include <twinfod.h>
#include <twmisc.h>
#include <twobject/node_runtime.h>

#include <cerrno>
#include <ctime>

#include "nodes/node.hpp"
#include "record/enumeration.hpp"

namespace {

constexpr const char *connection_texts[] = {"CONNECTED", "DISCONNECTED", "NEVER_SEEN"};
constexpr tw::enumeration connections{
    .texts = connection_texts, .first = CFG_NODE_CONNECTED, .unknown = CFG_NODE_CONNECTION_UNKNOWN};

// The order in which a node's action is looked for.
constexpr struct {
  const char *queue;
  int32_t type;
} actions[] = {
    {"unenroll_node", CFG_NODE_ACTION_UNENROLL},
    {"enrollment", CFG_NODE_ACTION_ENROLLMENT},
    {"registration", CFG_NODE_ACTION_REGISTRATION},
};

// The key that a node's connection status is published under; NULL without memory.
tw::text connection_key(const cfg_node &node) noexcept {
  char *key = nullptr;
  twmisc_replace_heap_string(&key, "nodes.%s.status.connection_status", node.uuid.c_str());
  tw::text owned;
  owned.adopt(key);
  return owned;
}

int32_t action_status(int32_t state) noexcept {
  switch (state) {
    case TWACTION_NEW:
    case TWACTION_TAKEN:
    case TWACTION_RETRYING:
      return CFG_NODE_ACTION_PENDING;
    case TWACTION_DONE:
    case TWACTION_NOTHING_TO_DO:
      return CFG_NODE_ACTION_FINISHED;
    case TWACTION_FAILED:
      return CFG_NODE_ACTION_FAILED;
    default:
      return CFG_NODE_ACTION_STATUS_UNKNOWN;
  }
}

// False when memory is short.
bool read_action(tw::node_runtime &runtime, const twaction *action) noexcept {
  int32_t state = 0;
  const char *error = nullptr;
  runtime.action_status = CFG_NODE_ACTION_STATUS_UNKNOWN;
  if (twaction_get_state(action, &state) == 0) runtime.action_status = action_status(state);
  return twaction_get_last_error(action, &error) != 0 || runtime.action_error_message.set(error);
}

// Without an action the type says so, and the status stays 0, which is also that of one that was just
// recorded: callers read the two together. False when memory is short.
bool find_action(tw::node_runtime &runtime, const char *uuid) noexcept {
  runtime.action_type = CFG_NODE_ACTION_NONE;
  for (const auto &[queue, type] : actions) {
    twaction *action = nullptr;
    const int result = twaction_get_for_node(uuid, queue, &action);
    if (result == -ENOMEM) return false;
    if (result != 0) continue;
    const bool read = read_action(runtime, action);
    runtime.action_type = type;
    twaction_free(action);
    return read;
  }
  return true;
}

std::unique_ptr<tw::node_runtime> read_runtime(const cfg_node &node) noexcept {
  if (!node.uuid) return nullptr;
  const tw::text key = connection_key(node);
  char *text = nullptr;
  int64_t time_ms = 0;
  if (!key || infod_get_extended(key.c_str(), &text, &time_ms) != 0) return nullptr;
  tw::text status;
  status.adopt(text);
  std::unique_ptr<tw::node_runtime> runtime(new (std::nothrow) tw::node_runtime);
  if (!runtime) return nullptr;
  runtime->last_connection_change_time = time_ms / 1000;
  runtime->last_connection_change_delta = std::time(nullptr) - runtime->last_connection_change_time;
  runtime->connection_status = connections.from_string(status.c_str());
  return find_action(*runtime, node.uuid.c_str()) ? std::move(runtime) : nullptr;
}

// The state that the record keeps, read now when it keeps none. What cannot be read is asked for again by the
// next getter.
const tw::node_runtime *runtime_of(cfg_node *node) noexcept {
  if (!node) return nullptr;
  if (!node->runtime) node->runtime = read_runtime(*node);
  return node->runtime.get();
}

template <auto Member, class Value>
Value get_runtime(cfg_node *node, Value otherwise) noexcept {
  const tw::node_runtime *runtime = runtime_of(node);
  return runtime ? runtime->*Member : otherwise;
}

}  // namespace

int32_t cfg_node_runtime_get_connection_status(cfg_node *node) noexcept {
  return get_runtime<&tw::node_runtime::connection_status, int32_t>(node, CFG_NODE_CONNECTION_UNKNOWN);
}

int32_t cfg_node_runtime_get_action_type(cfg_node *node) noexcept {
  return get_runtime<&tw::node_runtime::action_type, int32_t>(node, CFG_NODE_ACTION_NONE);
}

int32_t cfg_node_runtime_get_action_status(cfg_node *node) noexcept {
  return get_runtime<&tw::node_runtime::action_status, int32_t>(node, CFG_NODE_ACTION_STATUS_UNKNOWN);
}

const char *cfg_node_runtime_get_action_error_message(cfg_node *node) noexcept {
  const tw::node_runtime *runtime = runtime_of(node);
  return runtime ? runtime->action_error_message.c_str() : nullptr;
}

int64_t cfg_node_runtime_get_last_connection_change_time(cfg_node *node) noexcept {
  return get_runtime<&tw::node_runtime::last_connection_change_time, int64_t>(node, 0);
}

int64_t cfg_node_runtime_get_last_connection_change_delta(cfg_node *node) noexcept {
  return get_runtime<&tw::node_runtime::last_connection_change_delta, int64_t>(node, 0);
}

int cfg_node_runtime_set_connection_status(cfg_node *node, int32_t status) noexcept {
  if (!node) return 0;
  if (node->uuid) {
    const tw::text key = connection_key(*node);
    if (!key) return 0;
    const char *text = connections.to_string(status);
    infod_push_text(key.c_str(), text ? text : "UNKNOWN", INFOD_KIND_STATUS);
  }
  node->runtime.reset();
  return 1;
}
