// Messages: what the libraries tell about an edit.
#include "fixture.hpp"
#include "tree.hpp"

class EditMessageTest : public StoreTest {};
STORE_TEST_ON_BOTH_ENGINES(EditMessageTest);

TEST_P(EditMessageTest, AreKeptInOrder) {
  EXPECT_EQ(cfg_get_message_count(store), 0);
  EXPECT_STREQ(cfg_get_first_message_string(store), "");
  EXPECT_EQ(cfg_message_add_bad_key(store), 1);
  EXPECT_EQ(cfg_message_add_unexpected(store, "src/users", 123), 1);
  EXPECT_EQ(cfg_message_add_csr_generate_failed(store), 1);
  ASSERT_EQ(cfg_get_message_count(store), 3);
  EXPECT_EQ(cfg_message_get_code(cfg_get_message(store, 0)), CFG_MESSAGE_BAD_KEY);
  EXPECT_EQ(cfg_message_get_code(cfg_get_message(store, 1)), CFG_MESSAGE_UNEXPECTED);
  EXPECT_EQ(cfg_message_get_code(cfg_get_message(store, 2)), CFG_MESSAGE_CSR_GENERATE_FAILED);
  EXPECT_EQ(cfg_get_message(store, 3), nullptr);
  EXPECT_EQ(cfg_get_message(store, -1), nullptr);
  const cfg_message *unexpected = cfg_get_message(store, 1);
  ASSERT_EQ(cfg_message_get_argc(unexpected), 2);
  EXPECT_STREQ(cfg_message_get_arg(unexpected, 0), "src/users");
  EXPECT_STREQ(cfg_message_get_arg(unexpected, 1), "123");
  EXPECT_STREQ(cfg_get_first_message_string(store), cfg_message_get_text(cfg_get_message(store, 0)));
  EXPECT_STRNE(cfg_get_first_message_string(store), "");
}

TEST_P(EditMessageTest, AreDroppedByCommitAndAbandon) {
  ASSERT_EQ(cfg_message_add_bad_key(store), 1);
  cfg_abandon(store);
  EXPECT_EQ(cfg_get_message_count(store), 0);
  ASSERT_EQ(cfg_message_add_bad_key(store), 1);
  ASSERT_EQ(cfg_map_set_int(store, cfg_root(store), "x", 1), 1);
  ASSERT_TRUE(commits(store));
  EXPECT_EQ(cfg_get_message_count(store), 0);
  EXPECT_STREQ(cfg_get_first_message_string(store), "");
}

TEST_P(EditMessageTest, AreNoChangeOfTheStore) {
  ASSERT_EQ(cfg_message_add_bad_key(store), 1);
  EXPECT_EQ(cfg_has_changes(store), 0);
  ASSERT_TRUE(commits(store));
  EXPECT_EQ(cfg_revision(store), 0U);
}

TEST_P(EditMessageTest, BelongToOneHandle) {
  cfg *other = another_handle();
  ASSERT_EQ(cfg_message_add_bad_key(store), 1);
  EXPECT_EQ(cfg_get_message_count(other), 0);
}

TEST_P(EditMessageTest, TheLastErrorStandsInForAMessage) {
  EXPECT_EQ(cfg_map_set_int(store, cfg_root(store), "", 1), 0);
  EXPECT_STREQ(cfg_get_first_message_string(store), cfg_error_text(store));
  EXPECT_STRNE(cfg_get_first_message_string(store), "");
  ASSERT_EQ(cfg_message_add_bad_key(store), 1);
  EXPECT_STREQ(cfg_get_first_message_string(store), cfg_message_get_text(cfg_get_message(store, 0)));
}

TEST_P(EditMessageTest, SurviveARefusedCommit) {
  cfg *other = another_handle();
  EXPECT_EQ(cfg_revision(other), 0U);
  ASSERT_EQ(cfg_map_set_int(store, cfg_root(store), "x", 1), 1);
  ASSERT_EQ(cfg_map_set_int(other, cfg_root(other), "x", 2), 1);
  ASSERT_EQ(cfg_message_add_bad_key(other), 1);
  ASSERT_TRUE(commits(store));
  EXPECT_TRUE(refuses_commit(other, CFG_E_CONFLICT));
  EXPECT_EQ(cfg_get_message_count(other), 1);
}

TEST_P(EditMessageTest, ANullFileNameIsSurvived) {
  int added = cfg_message_add_unexpected(store, nullptr, -1);
  EXPECT_EQ(cfg_get_message_count(store), added);
}
