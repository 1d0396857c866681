#include <twaction.h>
#include <twinfod.h>

#include <cstdlib>
#include <filesystem>

#include "allocation/cases.hpp"
#include "beanstalk/server.hpp"

namespace allocation {
namespace {

// Live state and an action of kTarnwell in directories of this process.
class LiveState {
 public:
  LiveState() {
    std::string name = (std::filesystem::temp_directory_path() / "live-state-XXXXXX").string();
    if (!mkdtemp(name.data())) throw std::runtime_error("no temporary directory");
    path_ = name;
    forget_open_files();
    twaction *action = twaction_new();
    if (infod_push_text("nodes.nodes-1.status.connection_status", "DISCONNECTED", INFOD_KIND_STATUS) != 0 ||
        twaction_set_queue_name(action, "enrollment") != 0 ||
        twaction_set_state(action, TWACTION_FAILED) != 0 || twaction_set_last_error(action, kNew) != 0 ||
        twaction_store(action) != 0 || twaction_associate_node(twaction_get_id(action), kTarnwell) != 0)
      throw std::runtime_error("no live state");
    twaction_free(action);
  }
  ~LiveState() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  LiveState(const LiveState &) = delete;
  LiveState &operator=(const LiveState &) = delete;

  // Gives the directory another name, so that the next call has to open the files.
  void forget_open_files() {
    name_ = name_ == path_ ? path_ + "/." : path_;
    setenv("TW_INFOD_DIR", name_.c_str(), 1);
    setenv("TW_ACTION_DIR", name_.c_str(), 1);
  }

 private:
  std::string path_, name_;
};

void unopened(World &) {
  static LiveState only;
  only.forget_open_files();
}

template <class Value>
void getter(Value (*get)(cfg_node *), Value value, Value failure) {
  sweep([=](World &w) { return get(w.node); },
        [=](World &, Value got) {
          if (got != value) EXPECT_EQ(got, failure);
          return got == value;
        },
        unopened);
}

void error_message() {
  sweep([](World &w) { return cfg_node_runtime_get_action_error_message(w.node); }, gives_text(kNew),
        unopened);
}

// Two getters, the first of which may fail: what it has kept is whole.
void kept_state() {
  sweep(
      [](World &w) {
        cfg_node_runtime_get_connection_status(w.node);
        return cfg_node_runtime_get_action_type(w.node);
      },
      [](World &w, int32_t type) {
        if (type != CFG_NODE_ACTION_ENROLLMENT) EXPECT_EQ(type, CFG_NODE_ACTION_NONE);
        if (type == CFG_NODE_ACTION_ENROLLMENT)
          EXPECT_STREQ(cfg_node_runtime_get_action_error_message(w.node), kNew);
        return type == CFG_NODE_ACTION_ENROLLMENT;
      },
      unopened);
}

void change_time() {
  sweep([](World &w) { return cfg_node_runtime_get_last_connection_change_time(w.node); },
        [](World &, int64_t seconds) {
          if (seconds != 0) EXPECT_GT(seconds, 1'700'000'000);
          return seconds != 0;
        },
        unopened);
}

// A delta of 0 is as good as none.
void change_delta() {
  sweep([](World &w) { return cfg_node_runtime_get_last_connection_change_delta(w.node); },
        [](World &, int64_t seconds) {
          EXPECT_GE(seconds, 0);
          return true;
        },
        unopened);
}

void publish() {
  sweep([](World &w) { return cfg_node_runtime_set_connection_status(w.node, CFG_NODE_DISCONNECTED); },
        gives(1), unopened);
}

void unenroll() {
  const queue::FixedPort port;
  const queue::Server server(queue::FixedPort::number);
  sweep([](World &w) { return cfg_node_unenroll(w.generic); }, gives(1), unopened);
}

constexpr Case rows[] = {
    {"cfg_node_runtime_get_action_error_message",
     [] {
       error_message();
       kept_state();
     }},
    {"cfg_node_runtime_get_action_status",
     [] {
       getter<int32_t>(cfg_node_runtime_get_action_status, CFG_NODE_ACTION_FAILED,
                       CFG_NODE_ACTION_STATUS_UNKNOWN);
     }},
    {"cfg_node_runtime_get_action_type",
     [] {
       getter<int32_t>(cfg_node_runtime_get_action_type, CFG_NODE_ACTION_ENROLLMENT, CFG_NODE_ACTION_NONE);
     }},
    {"cfg_node_runtime_get_connection_status",
     [] {
       getter<int32_t>(cfg_node_runtime_get_connection_status, CFG_NODE_DISCONNECTED,
                       CFG_NODE_CONNECTION_UNKNOWN);
     }},
    {"cfg_node_runtime_get_last_connection_change_delta", change_delta},
    {"cfg_node_runtime_get_last_connection_change_time", change_time},
    {"cfg_node_runtime_set_connection_status", publish},
    {"cfg_node_unenroll", unenroll},
};

}  // namespace

const std::span<const Case> node_runtime_cases = rows;

}  // namespace allocation
