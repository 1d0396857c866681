// Asking for a node to be unenrolled: first the record of the request, then the job.
#include <jansson.h>
#include <twaction.h>
#include <twbeanstalk.h>
#include <twobject/node_runtime.h>

#include <cstring>
#include <memory>

#include "nodes/node.hpp"

namespace {

constexpr char queue[] = "unenroll_node";  // the tube, and the queue of the action

constexpr char server[] = "127.0.0.1";
constexpr uint16_t port = 11300;
constexpr uint32_t most_urgent = 0;
constexpr uint32_t no_delay = 0;
constexpr uint32_t seconds_to_run = 600;

// The worker finds the action by the node. Whether it could be recorded does not decide about the job.
void record_action(const char *uuid) noexcept {
  twaction *action = twaction_new();
  twaction_set_state(action, TWACTION_NEW);
  twaction_set_queue_name(action, queue);
  twaction_store(action);
  twaction_associate_node(twaction_get_id(action), uuid);
  twaction_free(action);
}

// {"node_id": "..."}; NULL when it cannot be made.
tw::text job_body(const char *uuid) noexcept {
  struct release {
    void operator()(json_t *value) const noexcept { json_decref(value); }
  };
  tw::text body;
  const std::unique_ptr<json_t, release> object(json_object());
  if (object && json_object_set_new(object.get(), "node_id", json_string(uuid)) == 0)
    body.adopt(json_dumps(object.get(), 0));
  return body;
}

}  // namespace

int cfg_node_unenroll(cfg_node *node) noexcept {
  if (!node || !node->uuid) return 0;
  record_action(node->uuid.c_str());
  const std::unique_ptr<bs_connection, decltype(&bs_disconnect)> connection(bs_connect(server, port),
                                                                            bs_disconnect);
  if (!connection || bs_use(connection.get(), queue) != 0) return 0;
  const tw::text body = job_body(node->uuid.c_str());
  if (!body) return 0;
  // The body carries its NUL: workers read it as the string that it is.
  return bs_put(connection.get(), most_urgent, no_delay, seconds_to_run, body.c_str(),
                std::strlen(body.c_str()) + 1) >= 0;
}
