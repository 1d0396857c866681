// The connection status: reading, publishing, and what a record keeps of it.
#include <ctime>

#include "runtime_fixture.hpp"

namespace records {
namespace {

struct Seen {
  std::string key, text;
  int32_t kind = 0;
};

/** Everything that is published. */
std::vector<Seen> published() {
  std::vector<Seen> all;
  EXPECT_EQ(
      infod_visit(
          "",
          [](void *context, const infod_value *value) {
            static_cast<std::vector<Seen> *>(context)->push_back({value->key, value->text, value->kind});
            return 0;
          },
          &all),
      0);
  return all;
}

int64_t published_ms(const std::string &key) {
  char *text = nullptr;
  int64_t time_ms = 0;
  EXPECT_EQ(infod_get_extended(key.c_str(), &text, &time_ms), 0);
  std::free(text);
  return time_ms;
}

TEST_F(RuntimeTest, WithoutLiveStateEveryGetterAnswersItsFailureValue) {
  add_action("unenroll_node", TWACTION_FAILED, "no such node");
  EXPECT_EQ(cfg_node_runtime_get_connection_status(node), 3);
  EXPECT_EQ(cfg_node_runtime_get_action_type(node), 3);
  EXPECT_EQ(cfg_node_runtime_get_action_status(node), 3);
  EXPECT_EQ(cfg_node_runtime_get_action_error_message(node), nullptr);
  EXPECT_EQ(cfg_node_runtime_get_last_connection_change_time(node), 0);
  EXPECT_EQ(cfg_node_runtime_get_last_connection_change_delta(node), 0);
}

TEST_F(RuntimeTest, EveryGetterAnswersItsFailureValueForNull) {
  EXPECT_EQ(cfg_node_runtime_get_connection_status(nullptr), 3);
  EXPECT_EQ(cfg_node_runtime_get_action_type(nullptr), 3);
  EXPECT_EQ(cfg_node_runtime_get_action_status(nullptr), 3);
  EXPECT_EQ(cfg_node_runtime_get_action_error_message(nullptr), nullptr);
  EXPECT_EQ(cfg_node_runtime_get_last_connection_change_time(nullptr), 0);
  EXPECT_EQ(cfg_node_runtime_get_last_connection_change_delta(nullptr), 0);
  EXPECT_EQ(cfg_node_runtime_set_connection_status(nullptr, 0), 0);
  EXPECT_EQ(cfg_node_unenroll(nullptr), 0);
  EXPECT_TRUE(published().empty());
}

TEST_F(RuntimeTest, EachPublishedTextHasItsStatusComparedExactly) {
  const struct {
    const char *text;
    int32_t status;
  } rows[] = {{"CONNECTED", 0}, {"DISCONNECTED", 1}, {"NEVER_SEEN", 2}, {"UNKNOWN", 3},     {"connected", 3},
              {"", 3},          {"CONNECTED ", 3},   {" CONNECTED", 3}, {"CONNECTED\n", 3}, {"0", 3}};
  for (const auto &[text, status] : rows) {
    publish(text);
    EXPECT_EQ(cfg_node_runtime_get_connection_status(load(id).get()), status) << '"' << text << '"';
  }
}

TEST_F(RuntimeTest, EachStatusIsPublishedAsItsText) {
  const struct {
    int32_t status;
    const char *text;
  } rows[] = {{0, "CONNECTED"}, {1, "DISCONNECTED"}, {2, "NEVER_SEEN"},      {3, "UNKNOWN"},
              {7, "UNKNOWN"},   {-1, "UNKNOWN"},     {INT32_MIN, "UNKNOWN"}, {INT32_MAX, "UNKNOWN"}};
  for (const auto &[status, text] : rows) {
    EXPECT_EQ(cfg_node_runtime_set_connection_status(node, status), 1);
    const auto all = published();
    ASSERT_EQ(all.size(), 1U);
    EXPECT_EQ(all[0].key, "nodes." + id + ".status.connection_status");
    EXPECT_EQ(all[0].text, text) << status;
    EXPECT_EQ(all[0].kind, 2);
  }
}

TEST_F(RuntimeTest, TheTimeIsThatOfThePublishingInWholeSeconds) {
  publish("CONNECTED");
  const int64_t time_ms = published_ms(key());
  const int64_t before = std::time(nullptr);
  EXPECT_EQ(cfg_node_runtime_get_last_connection_change_time(node), time_ms / 1000);
  const int64_t after = std::time(nullptr);
  const int64_t delta = cfg_node_runtime_get_last_connection_change_delta(node);
  EXPECT_GE(delta, before - time_ms / 1000);
  EXPECT_LE(delta, after - time_ms / 1000);
}

TEST_F(RuntimeTest, WhatWasReadOnceIsKept) {
  publish("CONNECTED");
  EXPECT_EQ(cfg_node_runtime_get_connection_status(node), 0);
  publish("DISCONNECTED");
  add_action("enrollment", TWACTION_FAILED, "too late");
  EXPECT_EQ(cfg_node_runtime_get_connection_status(node), 0);
  EXPECT_EQ(cfg_node_runtime_get_action_type(node), 3);
  EXPECT_EQ(cfg_node_runtime_get_action_error_message(node), nullptr);
  EXPECT_EQ(cfg_node_runtime_get_connection_status(load(id).get()), 1) << "another record reads anew";
}

TEST_F(RuntimeTest, OneGetterReadsForAllOthers) {
  publish("CONNECTED");
  EXPECT_EQ(cfg_node_runtime_get_action_error_message(node), nullptr);
  publish("DISCONNECTED");
  EXPECT_EQ(cfg_node_runtime_get_connection_status(node), 0);
}

TEST_F(RuntimeTest, PublishingDropsWhatWasKept) {
  publish("CONNECTED");
  EXPECT_EQ(cfg_node_runtime_get_connection_status(node), 0);
  EXPECT_EQ(cfg_node_runtime_set_connection_status(node, 1), 1);
  add_action("enrollment", TWACTION_DONE);
  EXPECT_EQ(cfg_node_runtime_get_connection_status(node), 1);
  EXPECT_EQ(cfg_node_runtime_get_action_type(node), 1);
}

TEST_F(RuntimeTest, AFailureIsNotKept) {
  EXPECT_EQ(cfg_node_runtime_get_connection_status(node), 3);
  publish("NEVER_SEEN");
  EXPECT_EQ(cfg_node_runtime_get_connection_status(node), 2);
}

TEST_F(RuntimeTest, AnotherNodesLiveStateIsNotRead) {
  ASSERT_EQ(infod_push_text("nodes.nodes-99.status.connection_status", "CONNECTED", INFOD_KIND_STATUS), 0);
  EXPECT_EQ(cfg_node_runtime_get_connection_status(node), 3);
}

TEST_F(RuntimeTest, ThatNothingCanBePublishedIsNotLookedAt) {
  setenv("TW_INFOD_DIR", "/dev/null/nowhere", 1);
  EXPECT_EQ(cfg_node_runtime_set_connection_status(node, 0), 1);
  EXPECT_EQ(cfg_node_runtime_get_connection_status(node), 3);
}

TEST_F(RuntimeTest, ARecordWithoutElementHasNoLiveState) {
  const node_record fresh(cfg_new_node(store));
  EXPECT_EQ(cfg_node_runtime_set_connection_status(fresh.get(), 0), 1);
  EXPECT_TRUE(published().empty());
  EXPECT_EQ(cfg_node_runtime_get_connection_status(fresh.get()), 3);
}

}  // namespace
}  // namespace records
