// The recorded action of a node: which one, and how far it has come.
#include "runtime_fixture.hpp"

namespace records {
namespace {

class NodeActionTest : public RuntimeTest {
 protected:
  void SetUp() override {
    RuntimeTest::SetUp();
    publish("CONNECTED");
  }
};

TEST_F(NodeActionTest, EachQueueHasItsType) {
  const struct {
    const char *queue;
    int32_t type;
  } rows[] = {{"registration", 0}, {"enrollment", 1}, {"unenroll_node", 2}};
  for (const auto &[queue, type] : rows) {
    const uint64_t number = add_action(queue, TWACTION_DONE);
    EXPECT_EQ(cfg_node_runtime_get_action_type(load(id).get()), type) << queue;
    ASSERT_EQ(twaction_remove(number), 0);
  }
}

TEST_F(NodeActionTest, UnenrollmentComesBeforeEnrollmentBeforeRegistration) {
  add_action("registration", TWACTION_FAILED, "of the registration");
  EXPECT_EQ(cfg_node_runtime_get_action_type(load(id).get()), 0);
  add_action("enrollment", TWACTION_DONE, "of the enrollment");
  const node_record second = load(id);
  EXPECT_EQ(cfg_node_runtime_get_action_type(second.get()), 1);
  EXPECT_EQ(cfg_node_runtime_get_action_status(second.get()), 1);
  EXPECT_STREQ(cfg_node_runtime_get_action_error_message(second.get()), "of the enrollment");
  add_action("unenroll_node", TWACTION_NEW);
  const node_record third = load(id);
  EXPECT_EQ(cfg_node_runtime_get_action_type(third.get()), 2);
  EXPECT_EQ(cfg_node_runtime_get_action_status(third.get()), 0);
  EXPECT_EQ(cfg_node_runtime_get_action_error_message(third.get()), nullptr);
}

TEST_F(NodeActionTest, AnyOtherQueueIsNoAction) {
  for (const char *queue : {"template_push", "Enrollment", "unenroll_node2", "unenroll"})
    add_action(queue, 5);
  EXPECT_EQ(cfg_node_runtime_get_action_type(node), 3);
}

TEST_F(NodeActionTest, EachStateHasItsStatus) {
  const struct {
    int32_t state, status;
  } rows[] = {{0, 0}, {1, 0}, {2, 0},  {3, 1},         {4, 1},
              {5, 2}, {6, 3}, {-1, 3}, {INT32_MAX, 3}, {INT32_MIN, 3}};
  for (const auto &[state, status] : rows) {
    add_action("enrollment", state);
    EXPECT_EQ(cfg_node_runtime_get_action_status(load(id).get()), status) << "state " << state;
  }
}

// Callers tell by the type that a status of 0 means nothing.
TEST_F(NodeActionTest, WithoutActionTheTypeIsThreeAndTheStatusIsZero) {
  EXPECT_EQ(cfg_node_runtime_get_action_type(node), 3);
  EXPECT_EQ(cfg_node_runtime_get_action_status(node), 0);
  EXPECT_EQ(cfg_node_runtime_get_action_error_message(node), nullptr);
  EXPECT_EQ(cfg_node_runtime_get_connection_status(node), 0);
}

TEST_F(NodeActionTest, TheLastErrorIsTold) {
  add_action("unenroll_node", TWACTION_FAILED, "the certificate is not to be found");
  EXPECT_STREQ(cfg_node_runtime_get_action_error_message(node), "the certificate is not to be found");
  EXPECT_EQ(cfg_node_runtime_get_action_error_message(node), cfg_node_runtime_get_action_error_message(node))
      << "borrowed, no copy";
}

TEST_F(NodeActionTest, AnActionWithoutErrorHasNone) {
  add_action("unenroll_node", TWACTION_FAILED);
  EXPECT_EQ(cfg_node_runtime_get_action_error_message(node), nullptr);
}

TEST_F(NodeActionTest, AnotherNodesActionIsNotThisOnes) {
  const uint64_t number = add_action("enrollment", TWACTION_DONE);
  ASSERT_EQ(twaction_associate_node(number, "nodes-99"), 0);
  EXPECT_EQ(cfg_node_runtime_get_action_type(node), 3);
}

}  // namespace
}  // namespace records
