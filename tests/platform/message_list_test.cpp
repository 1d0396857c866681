#include "message.hpp"

#include <gtest/gtest.h>

TEST(MessageList, KeepsMessagesInTheOrderOfAdding) {
  twcfg::MessageList list;
  EXPECT_EQ(list.first_text(), nullptr);
  EXPECT_TRUE(list.add_unexpected("src/users", 120));
  EXPECT_TRUE(list.add_bad_key());
  EXPECT_TRUE(list.add_csr_generate_failed());
  ASSERT_EQ(list.size(), 3);
  EXPECT_EQ(cfg_message_get_code(list.at(0)), CFG_MESSAGE_UNEXPECTED);
  ASSERT_EQ(cfg_message_get_argc(list.at(0)), 2);
  EXPECT_STREQ(cfg_message_get_arg(list.at(0), 0), "src/users");
  EXPECT_STREQ(cfg_message_get_arg(list.at(0), 1), "120");
  EXPECT_EQ(cfg_message_get_code(list.at(1)), CFG_MESSAGE_BAD_KEY);
  EXPECT_EQ(cfg_message_get_code(list.at(2)), CFG_MESSAGE_CSR_GENERATE_FAILED);
  EXPECT_EQ(list.at(3), nullptr);
  EXPECT_EQ(list.at(-1), nullptr);
  EXPECT_STREQ(list.first_text(), "Unexpected failure at src/users:120");
}

TEST(MessageList, NeedsAFileAndTakesAnyLine) {
  twcfg::MessageList list;
  EXPECT_FALSE(list.add_unexpected(nullptr, 1));
  EXPECT_EQ(list.size(), 0);
  EXPECT_TRUE(list.add_unexpected("", INT32_MIN));
  EXPECT_STREQ(list.first_text(), "Unexpected failure at :-2147483648");
}

TEST(MessageList, ClearingDropsAll) {
  twcfg::MessageList list;
  EXPECT_TRUE(list.add_bad_key());
  list.clear();
  EXPECT_EQ(list.size(), 0);
  EXPECT_EQ(list.at(0), nullptr);
  EXPECT_EQ(list.first_text(), nullptr);
  EXPECT_TRUE(list.add_csr_generate_failed());
  EXPECT_STREQ(list.first_text(), "The certificate request could not be generated");
}

TEST(MessageList, KeepsTheFirst1024) {
  twcfg::MessageList list;
  for (int i = 0; i < 1024; ++i) ASSERT_TRUE(list.add_unexpected("src/users", i));
  EXPECT_FALSE(list.add_bad_key());
  EXPECT_EQ(list.size(), 1024);
  EXPECT_STREQ(list.first_text(), "Unexpected failure at src/users:0");
}
