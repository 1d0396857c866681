// Asking for a node to be unenrolled: the action, and the job on a real queue.
#include <twbeanstalk.h>

#include "beanstalk/fake_server.hpp"
#include "beanstalk/server.hpp"
#include "runtime_fixture.hpp"

namespace records {
namespace {

class UnenrollTest : public RuntimeTest {
 protected:
  void expect_new_action() {
    const action_record action = action_of("unenroll_node");
    ASSERT_NE(action, nullptr);
    int32_t state = -1;
    EXPECT_EQ(twaction_get_state(action.get(), &state), 0);
    EXPECT_EQ(state, 0);
    EXPECT_STREQ(twaction_get_node(action.get()), id.c_str());
    EXPECT_STREQ(twaction_get_queue_name(action.get()), "unenroll_node");
  }
  std::string body() const { return "{\"node_id\": \"" + id + "\"}" + '\0'; }

 private:
  queue::FixedPort port_;
};

/** The bodies of the jobs on a tube, in order. */
std::vector<std::string> jobs_on(uint16_t port, const char *tube) {
  std::vector<std::string> bodies;
  bs_connection *worker = bs_connect("127.0.0.1", port);
  EXPECT_EQ(bs_watch(worker, tube), 0);
  EXPECT_EQ(bs_ignore(worker, "default"), 0);
  for (bs_job job; bs_reserve(worker, 0, &job) == 0; std::free(job.body))
    bodies.emplace_back(job.body, job.length);
  bs_disconnect(worker);
  return bodies;
}

TEST_F(UnenrollTest, PutsAJobWhoseBodyNamesTheNodeAndEndsWithANul) {
  const queue::Server server(queue::FixedPort::number);
  EXPECT_EQ(cfg_node_unenroll(node), 1);
  EXPECT_EQ(jobs_on(server.port(), "unenroll_node"), std::vector<std::string>{body()});
  expect_new_action();
}

TEST_F(UnenrollTest, SaysExactlyThisToTheQueue) {
  queue::FakeServer server({{1, "USING unenroll_node\r\n"}, {2, "INSERTED 0\r\n"}}, queue::Ending::silence,
                           queue::FixedPort::number);
  EXPECT_EQ(cfg_node_unenroll(node), 1) << "a job with the number 0 is a job";
  const std::string length = std::to_string(body().size());
  EXPECT_EQ(server.heard(), "use unenroll_node\r\nput 0 0 600 " + length + "\r\n" + body() + "\r\n");
}

TEST_F(UnenrollTest, WithoutQueueTheActionStaysBehind) {
  EXPECT_EQ(cfg_node_unenroll(node), 0);
  expect_new_action();
}

TEST_F(UnenrollTest, FailsWhenTheQueueRefusesTheJob) {
  for (const char *refusal : {"DRAINING\r\n", "JOB_TOO_BIG\r\n", "BURIED 5\r\n", "nonsense\r\n", ""}) {
    const queue::FakeServer server({{1, "USING unenroll_node\r\n"}, {2, refusal}}, queue::Ending::close,
                                   queue::FixedPort::number);
    EXPECT_EQ(cfg_node_unenroll(node), 0) << refusal;
    expect_new_action();
  }
}

TEST_F(UnenrollTest, FailsWhenTheTubeCannotBeSelected) {
  queue::FakeServer server({{1, "OUT_OF_MEMORY\r\n"}}, queue::Ending::silence, queue::FixedPort::number);
  EXPECT_EQ(cfg_node_unenroll(node), 0);
  EXPECT_EQ(server.heard(), "use unenroll_node\r\n");
}

TEST_F(UnenrollTest, ASecondRequestTakesThePlaceOfTheFirst) {
  const queue::Server server(queue::FixedPort::number);
  const uint64_t failed = add_action("unenroll_node", TWACTION_FAILED, "the first try");
  EXPECT_EQ(cfg_node_unenroll(node), 1);
  expect_new_action();
  twaction *old = nullptr;
  EXPECT_EQ(twaction_get_by_id(failed, &old), -ENOENT);
}

TEST_F(UnenrollTest, TheActionShowsInTheLiveState) {
  publish("CONNECTED");
  EXPECT_EQ(cfg_node_unenroll(node), 0);
  EXPECT_EQ(cfg_node_runtime_get_action_type(node), 2);
  EXPECT_EQ(cfg_node_runtime_get_action_status(node), 0);
}

TEST_F(UnenrollTest, ThatTheActionCannotBeRecordedDoesNotKeepTheJobBack) {
  setenv("TW_ACTION_DIR", "/dev/null/nowhere", 1);
  const queue::Server server(queue::FixedPort::number);
  EXPECT_EQ(cfg_node_unenroll(node), 1);
  EXPECT_EQ(jobs_on(server.port(), "unenroll_node").size(), 1U);
}

TEST_F(UnenrollTest, ARecordWithoutElementAsksForNothing) {
  const queue::Server server(queue::FixedPort::number);
  const node_record fresh(cfg_new_node(store));
  EXPECT_EQ(cfg_node_unenroll(fresh.get()), 0);
  EXPECT_TRUE(jobs_on(server.port(), "unenroll_node").empty());
}

}  // namespace
}  // namespace records
