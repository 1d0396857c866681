// Jobs that are done.
#include <twinfod.h>
#include <twobject.h>

#include <cerrno>
#include <ctime>

#include "unenrolld/harness.hpp"

namespace unenrolling {
namespace {

constexpr Jobs none{};

TEST_F(UnenrolldTest, TheNodeIsGoneAndItsCertificateRevokedInOneCommit) {
  const std::string node = add_node("rack-1"), other = add_node("rack-2", false);
  const uint64_t before = revision();
  const auto begun = static_cast<int32_t>(std::time(nullptr));
  add_action(node);
  put_job(node);
  EXPECT_EQ(run_once(), "exit 0");
  EXPECT_FALSE(has_node(node));
  EXPECT_GE(revoked_at(certificate), begun);
  EXPECT_LE(revoked_at(certificate), static_cast<int32_t>(std::time(nullptr)));
  EXPECT_EQ(revision(), before + 1);
  EXPECT_EQ(commits(), texts{"unenrolld: unenroll " + node});
  EXPECT_EQ(action_of(node), "3");
  EXPECT_EQ(jobs(), none);
  EXPECT_TRUE(has_node(other));
  EXPECT_NE(output.find("notice"), std::string::npos) << output;
  EXPECT_NE(output.find(node + " is unenrolled"), std::string::npos) << output;
}

TEST_F(UnenrolldTest, WhatALibrarysUserAskedForIsDone) {
  fixed_port.emplace();
  server = std::make_unique<queue::Server>(queue::FixedPort::number);
  const std::string node = add_node("rack-1");
  {
    const store_handle store = open();
    cfg_node *record = cfg_get_node_by_id(store.get(), node.c_str());
    EXPECT_EQ(cfg_node_unenroll(record), 1);
    cfg_node_free(record);
  }
  EXPECT_EQ(action_of(node), "0");
  EXPECT_EQ(run_once(), "exit 0");
  EXPECT_FALSE(has_node(node));
  EXPECT_NE(revoked_at(certificate), 0);
  EXPECT_EQ(action_of(node), "3");
  EXPECT_EQ(jobs(), none);
}

TEST_F(UnenrolldTest, TheLiveStateOfTheNodeGoesWithItAndNoOthers) {
  const std::string node = add_node("rack-1"), key = "nodes." + node + ".status.connection_status",
                    other = "nodes." + node + "2.status.connection_status";
  for (const std::string &one : {key, other})
    ASSERT_EQ(infod_push_text(one.c_str(), "CONNECTED", INFOD_KIND_STATUS), 0);
  put_job(node);
  EXPECT_EQ(run_once(), "exit 0");
  char *text = nullptr;
  EXPECT_EQ(infod_get_extended(key.c_str(), &text, nullptr), -ENOENT);
  EXPECT_EQ(infod_get_extended(other.c_str(), &text, nullptr), 0);
  std::free(text);
}

TEST_F(UnenrolldTest, ManyJobsAreDoneOneAfterTheOther) {
  texts nodes;
  for (int i = 0; i < 10; ++i) nodes.push_back(add_node("rack", false));
  for (const std::string &node : nodes) put_job(node);
  EXPECT_EQ(run_once(), "exit 0");
  for (const std::string &node : nodes) EXPECT_FALSE(has_node(node)) << node;
  EXPECT_EQ(jobs(), none);
}

TEST_F(UnenrolldTest, TwoWorkersShareTheJobs) {
  texts nodes;
  for (int i = 0; i < 10; ++i) nodes.push_back(add_node("rack"));
  for (const std::string &node : nodes) {
    add_action(node);
    put_job(node);
  }
  Process first = start({"--once"}), second = start({"--once"});
  EXPECT_EQ(first.wait(), "exit 0") << first.printed();
  EXPECT_EQ(second.wait(), "exit 0") << second.printed();
  for (const std::string &node : nodes) {
    EXPECT_FALSE(has_node(node)) << node;
    EXPECT_EQ(action_of(node), "3") << node;
  }
  EXPECT_EQ(commits().size(), nodes.size());
  EXPECT_EQ(jobs(), none);
}

TEST_F(UnenrolldTest, ANodeWithoutCertificateIsRemoved) {
  const std::string node = add_node("rack-1", false);
  put_job(node);
  EXPECT_EQ(run_once(), "exit 0");
  EXPECT_FALSE(has_node(node));
}

TEST_F(UnenrolldTest, ANodeWhoseCertificateIsGoneIsRemoved) {
  const std::string node = add_node("rack-1");
  {
    const store_handle store = open();
    cfg_delete_element(store.get(), cfg_get_by_id(store.get(), certificate.c_str()));
    ASSERT_TRUE(cfg_commit(store.get(), nullptr));
  }
  put_job(node);
  EXPECT_EQ(run_once(), "exit 0");
  EXPECT_FALSE(has_node(node));
}

TEST_F(UnenrolldTest, ACertificateThatWasRevokedBeforeKeepsItsTime) {
  const std::string node = add_node("rack-1");
  {
    const store_handle store = open();
    cfg_map_set_int(store.get(), cfg_get_by_id(store.get(), certificate.c_str()), "revoke_time", 12345);
    ASSERT_TRUE(cfg_commit(store.get(), nullptr));
  }
  put_job(node);
  EXPECT_EQ(run_once(), "exit 0");
  EXPECT_FALSE(has_node(node));
  EXPECT_EQ(revoked_at(certificate), 12345);
}

// Such a node cannot be loaded as a record.
TEST_F(UnenrolldTest, ANodeWithoutNameIsRemovedAndRevoked) {
  const std::string node = add_node("rack-1");
  {
    const store_handle store = open();
    cfg_map_delete_key(store.get(), cfg_get_by_id(store.get(), node.c_str()), "name");
    ASSERT_TRUE(cfg_commit(store.get(), nullptr));
  }
  put_job(node);
  EXPECT_EQ(run_once(), "exit 0");
  EXPECT_FALSE(has_node(node));
  EXPECT_NE(revoked_at(certificate), 0);
}

TEST_F(UnenrolldTest, WithoutActionTheJobIsDoneAllTheSame) {
  const std::string node = add_node("rack-1");
  put_job(node);
  EXPECT_EQ(run_once(), "exit 0");
  EXPECT_FALSE(has_node(node));
  EXPECT_EQ(action_of(node), "none");
  EXPECT_EQ(jobs(), none);
  EXPECT_NE(output.find("warning"), std::string::npos) << output;
}

TEST_F(UnenrolldTest, ANodeThatIsGoneAlreadyIsNothingToDo) {
  const std::string node = add_node("rack-1");
  const store_handle store = open();
  cfg_delete_element(store.get(), cfg_get_by_id(store.get(), node.c_str()));
  ASSERT_TRUE(cfg_commit(store.get(), nullptr));
  const uint64_t before = revision();
  add_action(node);
  put_job(node);
  EXPECT_EQ(run_once(), "exit 0");
  EXPECT_EQ(action_of(node), "4");
  EXPECT_EQ(revision(), before);
  EXPECT_EQ(jobs(), none);
}

TEST_F(UnenrolldTest, ASecondJobForTheSameNodeIsRecognised) {
  const std::string node = add_node("rack-1");
  add_action(node);
  put_job(node);
  put_job(node);
  EXPECT_EQ(run_once(), "exit 0");
  EXPECT_EQ(action_of(node), "3");
  EXPECT_EQ(commits().size(), 1U);
  EXPECT_EQ(jobs(), none);
}

// The commit log then has its unenrolment already.
TEST_F(UnenrolldTest, ANodeThatCameBackWithABackupIsUnenrolledAgain) {
  const std::string node = add_node("rack-1", false);
  {
    const store_handle store = open();
    const std::string token = "unenroll " + node;
    cfg_map_set_string(store.get(), cfg_get_by_id(store.get(), node.c_str()), "description", "restored");
    const cfg_commit_note note{"unenrolld", "restored", token.c_str()};
    ASSERT_TRUE(cfg_commit(store.get(), &note));
  }
  add_action(node);
  put_job(node);
  EXPECT_EQ(run_once(), "exit 0");
  EXPECT_FALSE(has_node(node));
  EXPECT_EQ(action_of(node), "3");
}

}  // namespace
}  // namespace unenrolling
