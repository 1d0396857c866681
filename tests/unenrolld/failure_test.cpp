// Jobs that cannot be done: now, or at all.
#include <filesystem>

#include "unenrolld/harness.hpp"

namespace unenrolling {
namespace {

constexpr Jobs none{}, one_delayed{0, 0, 1, 0};

texts trap(const texts &more) {
  texts environment = {std::string("LD_PRELOAD=") + UNENROLLD_TRAP, "ASAN_OPTIONS=verify_asan_link_order=0"};
  environment.insert(environment.end(), more.begin(), more.end());
  return environment;
}

TEST_F(UnenrolldTest, MalformedJobsArePutAside) {
  const std::string nul(1, '\0');
  const texts bodies = {"",
                        nul,
                        "nodes-1",
                        "nodes-1" + nul,
                        "{\"node_id\": \"nodes-1\"}",  // without its NUL
                        "{\"node_id\": \"nodes-1\"" + nul,
                        "{\"node_id\": \"nodes-1\"}" + nul + nul,
                        "{\"node_id\": \"nodes-1\"} more" + nul,
                        "{\"node_id\": \"nodes-1\", \"node_id\": \"nodes-2\"}" + nul,
                        "{\"node_id\": 1}" + nul,
                        "{\"node_id\": null}" + nul,
                        "{\"node_id\": [\"nodes-1\"]}" + nul,
                        "{\"id\": \"nodes-1\"}" + nul,
                        "[\"nodes-1\"]" + nul,
                        "\"nodes-1\"" + nul,
                        "{\"node_id\": \"nodes-1\\u0000\"}" + nul,
                        "{\"node_id\": \"\xff\"}" + nul,
                        std::string(60'000, '[') + nul,
                        std::string(BS_BODY_MAX, 'x')};
  const std::string node = add_node("rack-1");
  const uint64_t before = revision();
  for (const std::string &body : bodies) put_body(body);
  EXPECT_EQ(run_once(), "exit 0");
  EXPECT_EQ(jobs(), (Jobs{0, 0, 0, static_cast<int>(bodies.size())}));
  EXPECT_TRUE(has_node(node));
  EXPECT_EQ(revision(), before);
}

TEST_F(UnenrolldTest, AJobThatIsTooLargeIsPutAside) {
  server = std::make_unique<queue::Server>(uint16_t{0}, texts{"-z", "1000000"});
  const std::string body(BS_BODY_MAX + 1, 'x');
  queue::send_raw(server->port(), "use unenroll_node\r\nput 0 0 60 65536\r\n" + body + "\r\n");
  EXPECT_EQ(run_once(), "exit 0");
  EXPECT_EQ(jobs(), (Jobs{0, 0, 0, 1}));
}

TEST_F(UnenrolldTest, WhatIsNoNodeIsNotRemoved) {
  const std::string node = add_node("rack-1");
  const uint64_t before = revision();
  const texts ids = {certificate, "nodes",    "certificates", "system",
                     "nodes-",    "nodes-0",  "nodes-01",     "nodes-1.name",
                     "nodes-1 ",  " nodes-1", "nodes-x",      "NODES-1",
                     "",          "{1}",      "nodes--1",     "nodes-99999999999",
                     "nodes-1\\n"};
  for (const std::string &id : ids) put_job(id);
  add_action(certificate);
  EXPECT_EQ(run_once(), "exit 0");
  EXPECT_EQ(jobs().buried, static_cast<int>(ids.size()));
  EXPECT_EQ(revision(), before);
  EXPECT_TRUE(has_node(node));
  EXPECT_EQ(action_of(certificate), "5 what the job names has not the form of a node's ID");
}

TEST_F(UnenrolldTest, WithoutStoreTheJobWaits) {
  const std::string node = add_node("rack-1"), away = store_path() + ".away";
  add_action(node);
  put_job(node);
  std::filesystem::rename(store_path(), away);
  EXPECT_EQ(run_once({}, {"--retry-delay", "1000"}), "exit 0");
  EXPECT_EQ(jobs(), one_delayed);
  EXPECT_EQ(action_of(node).rfind("2 the store cannot be opened: ", 0), 0U) << action_of(node);
  EXPECT_NE(output.find("error"), std::string::npos) << output;

  std::filesystem::rename(away, store_path());
  kick();
  EXPECT_EQ(run_once(), "exit 0");
  EXPECT_FALSE(has_node(node));
  EXPECT_EQ(action_of(node), "3") << "and no error";
  EXPECT_EQ(jobs(), none);
}

TEST_F(UnenrolldTest, WhenAnotherCommitChangesTheNodeTheJobIsDoneOnWhatIsThereThen) {
  const std::string node = add_node("rack-1");
  add_action(node);
  put_job(node);
  EXPECT_EQ(run_once(trap({"TRAP_CHANGE_NODE=3", "TRAP_NODE=" + node, "TRAP_STORE=" + store_path()})),
            "exit 0")
      << output;
  EXPECT_FALSE(has_node(node));
  EXPECT_NE(revoked_at(certificate), 0);
  EXPECT_EQ(action_of(node), "3");
  EXPECT_EQ(jobs(), none);
  EXPECT_EQ(commits().size(), 1U);
  EXPECT_NE(output.find("info"), std::string::npos) << "a conflict was met: " << output;
}

TEST_F(UnenrolldTest, WhenOthersNeverStopChangingTheNodeTheJobWaits) {
  const std::string node = add_node("rack-1");
  add_action(node);
  put_job(node);
  EXPECT_EQ(run_once(trap({"TRAP_CHANGE_NODE=1000", "TRAP_NODE=" + node, "TRAP_STORE=" + store_path()}),
                     {"--retry-delay", "1000"}),
            "exit 0");
  EXPECT_TRUE(has_node(node));
  EXPECT_EQ(revoked_at(certificate), 0);
  EXPECT_EQ(jobs(), one_delayed);
  EXPECT_EQ(action_of(node).rfind("2 the change cannot be committed: ", 0), 0U) << action_of(node);
}

TEST_F(UnenrolldTest, WhenAnotherRemovesTheNodeMeanwhileThereIsNothingToDo) {
  const std::string node = add_node("rack-1");
  add_action(node);
  put_job(node);
  EXPECT_EQ(run_once(trap({"TRAP_REMOVE_NODE=1", "TRAP_NODE=" + node, "TRAP_STORE=" + store_path()})),
            "exit 0");
  EXPECT_EQ(action_of(node), "4");
  EXPECT_EQ(jobs(), none);
}

TEST_F(UnenrolldTest, ThatTheActionsAreOutOfReachDoesNotKeepTheJobBack) {
  const std::string node = add_node("rack-1");
  put_job(node);
  EXPECT_EQ(run_once({"TW_ACTION_DIR=/dev/null/nowhere"}), "exit 0");
  EXPECT_FALSE(has_node(node));
  EXPECT_EQ(jobs(), none);
}

}  // namespace
}  // namespace unenrolling
