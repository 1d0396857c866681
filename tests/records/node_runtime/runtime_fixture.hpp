// A node, and live state and actions that belong to the test alone.
#ifndef TW_TESTS_RECORDS_NODE_RUNTIME_RUNTIME_FIXTURE_HPP
#define TW_TESTS_RECORDS_NODE_RUNTIME_RUNTIME_FIXTURE_HPP

#include <twaction.h>
#include <twinfod.h>
#include <twobject/node_runtime.h>

#include <cstdlib>

#include "records/node_fixture.hpp"
#include "store_processes/scratch.hpp"

namespace records {

struct free_action {
  void operator()(twaction *action) const { twaction_free(action); }
};
using action_record = std::unique_ptr<twaction, free_action>;

class RuntimeTest : public NodeTest {
 protected:
  void SetUp() override {
    NodeTest::SetUp();
    setenv("TW_INFOD_DIR", (scratch_.path() + "/live").c_str(), 1);
    setenv("TW_ACTION_DIR", (scratch_.path() + "/actions").c_str(), 1);
    cfg_elem *elem = add_node("rack-1");
    commit();
    id = id_of(elem);
    record = load(id);
    ASSERT_NE(record, nullptr);
    node = record.get();
  }

  std::string key() const { return "nodes." + id + ".status.connection_status"; }
  void publish(const char *text) { ASSERT_EQ(infod_push_text(key().c_str(), text, INFOD_KIND_STATUS), 0); }
  /** Stores an action of the node; its number. */
  uint64_t add_action(const char *queue, int32_t state, const char *error = nullptr) {
    const action_record action(twaction_new());
    EXPECT_EQ(twaction_set_queue_name(action.get(), queue), 0);
    EXPECT_EQ(twaction_set_state(action.get(), state), 0);
    EXPECT_EQ(twaction_set_last_error(action.get(), error), 0);
    EXPECT_EQ(twaction_store(action.get()), 0);
    const uint64_t number = twaction_get_id(action.get());
    EXPECT_EQ(twaction_associate_node(number, id.c_str()), 0);
    return number;
  }
  action_record action_of(const char *queue) {
    twaction *action = nullptr;
    twaction_get_for_node(id.c_str(), queue, &action);
    return action_record(action);
  }

  std::string id;
  node_record record;
  cfg_node *node = nullptr;

 private:
  trial::Scratch scratch_;
};

}  // namespace records

#endif
