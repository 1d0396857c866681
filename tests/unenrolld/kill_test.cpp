// The worker is killed, at every call by which it leaves a trace in the world.
#include <csignal>

#include "unenrolld/harness.hpp"

namespace unenrolling {
namespace {

constexpr Jobs none{};

TEST_F(UnenrolldTest, KilledAtAnyCallItLosesNoJobAndDoesNoneTwice) {
  const std::string killed = "signal " + std::to_string(SIGKILL);
  int kills = 0, before_commit = 0, after_commit = 0;
  for (int at = 1;; ++at) {
    SCOPED_TRACE("killed at call " + std::to_string(at));
    const std::string node = add_node("rack");
    const uint64_t before = revision();
    add_action(node);
    put_job(node);
    const std::string end =
        run_once({std::string("LD_PRELOAD=") + UNENROLLD_TRAP, "ASAN_OPTIONS=verify_asan_link_order=0",
                  "TRAP_KILL_AT=" + std::to_string(at)});
    wait_until_nothing_is_reserved();
    // Both or neither.
    const bool committed = revoked_at(certificate) != 0;
    ASSERT_EQ(has_node(node), !committed);
    ASSERT_EQ(revision(), before + (committed ? 1 : 0));
    if (end != killed) {
      ASSERT_EQ(end, "exit 0") << output;
      ASSERT_TRUE(committed);
      ASSERT_EQ(jobs(), none);
      break;
    }
    ++kills;
    ++(committed ? after_commit : before_commit);
    const int32_t revoked = revoked_at(certificate);

    ASSERT_EQ(run_once(), "exit 0") << output;
    ASSERT_FALSE(has_node(node));
    ASSERT_EQ(revision(), before + 1);
    if (committed) {
      ASSERT_EQ(revoked_at(certificate), revoked);
    }
    // Killed between the end of its work and that of the job, an earlier worker has said so itself.
    ASSERT_EQ(action_of(node), "3");
    ASSERT_EQ(jobs(), none);
  }
  EXPECT_GT(before_commit, 8);
  EXPECT_GT(after_commit, 4);
  RecordProperty("kills", kills);
}

TEST_F(UnenrolldTest, ATerminatedWorkerEndsAtOnceAndItsJobsComeAgain) {
  Process worker = start();
  while (worker.printed().find("waiting for jobs") == std::string::npos) usleep(1000);
  worker.signal(SIGTERM);
  EXPECT_EQ(worker.wait(), "signal " + std::to_string(SIGTERM));
}

}  // namespace
}  // namespace unenrolling
