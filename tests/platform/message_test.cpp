#include <gtest/gtest.h>
#include <twconfig/message.h>

#include <climits>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <string>

namespace {

char **heap_array(std::initializer_list<const char *> texts) {
  auto **array = static_cast<char **>(calloc(texts.size() + 1, sizeof(char *)));
  std::size_t i = 0;
  for (const char *text : texts) array[i++] = text ? strdup(text) : nullptr;
  return array;
}

std::string text_and_free(cfg_message *message) {
  std::string text = message ? cfg_message_get_text(message) : "NULL";
  cfg_message_free(message);
  return text;
}

}  // namespace

TEST(Message, KeepsCodeAndArguments) {
  cfg_message *message = cfg_new_message(4711, 3, heap_array({"one", nullptr, ""}));
  EXPECT_EQ(cfg_message_get_code(message), 4711);
  EXPECT_EQ(cfg_message_get_argc(message), 3);
  EXPECT_STREQ(cfg_message_get_arg(message, 0), "one");
  EXPECT_EQ(cfg_message_get_arg(message, 1), nullptr);
  EXPECT_STREQ(cfg_message_get_arg(message, 2), "");
  EXPECT_EQ(cfg_message_get_arg(message, 3), nullptr);
  EXPECT_EQ(cfg_message_get_arg(message, -1), nullptr);
  EXPECT_EQ(cfg_message_get_arg(message, INT32_MAX), nullptr);
  cfg_message_free(message);
}

TEST(Message, TakesOverTheArgumentArrayItself) {
  char **args = heap_array({"a"});
  const char *first = args[0];
  cfg_message *message = cfg_new_message(9, 1, args);
  EXPECT_EQ(cfg_message_get_arg(message, 0), first);
  cfg_message_free(message);  // the leak checker watches
}

TEST(Message, MayHaveNoArguments) {
  EXPECT_EQ(text_and_free(cfg_new_message(12, 0, nullptr)), "Message 12");
  EXPECT_EQ(text_and_free(cfg_new_message(-1, 0, heap_array({}))), "Message -1");
}

TEST(Message, ReleasesTheArgumentsOfARefusedMessage) {
  EXPECT_EQ(cfg_new_message(1, -1, heap_array({})), nullptr);
  EXPECT_EQ(cfg_new_message(1, INT32_MIN, heap_array({})), nullptr);
  EXPECT_EQ(cfg_new_message(1, 1, nullptr), nullptr);
  EXPECT_EQ(cfg_new_message(1, 1025, nullptr), nullptr);
  auto **args = static_cast<char **>(calloc(1025, sizeof(char *)));
  for (int i = 0; i < 1025; ++i) args[i] = strdup("x");
  EXPECT_EQ(cfg_new_message(1, 1025, args), nullptr);
}

TEST(Message, HasAtMost1024Arguments) {
  auto **args = static_cast<char **>(calloc(1024, sizeof(char *)));
  args[1023] = strdup("last");
  cfg_message *message = cfg_new_message(7, 1024, args);
  ASSERT_NE(message, nullptr);
  EXPECT_STREQ(cfg_message_get_arg(message, 1023), "last");
  cfg_message_free(message);
}

TEST(Message, SaysKnownCodesInWords) {
  EXPECT_EQ(text_and_free(cfg_new_message(CFG_MESSAGE_UNEXPECTED, 2, heap_array({"src/users", "120"}))),
            "Unexpected failure at src/users:120");
  EXPECT_EQ(text_and_free(cfg_new_message(CFG_MESSAGE_UNEXPECTED, 2, heap_array({"src/users", nullptr}))),
            "Unexpected failure at src/users:(none)");
  EXPECT_EQ(text_and_free(cfg_new_message(CFG_MESSAGE_UNEXPECTED, 0, nullptr)), "Unexpected failure");
  EXPECT_EQ(text_and_free(cfg_new_message(CFG_MESSAGE_BAD_KEY, 0, nullptr)),
            "The supplied private key could not be read");
  EXPECT_EQ(text_and_free(cfg_new_message(CFG_MESSAGE_CSR_GENERATE_FAILED, 0, nullptr)),
            "The certificate request could not be generated");
}

TEST(Message, SaysOtherCodesAsNumberAndArguments) {
  EXPECT_EQ(text_and_free(cfg_new_message(4711, 1, heap_array({"arg1"}))), "Message 4711: arg1");
  EXPECT_EQ(text_and_free(cfg_new_message(4711, 3, heap_array({"arg1", nullptr, "100% %s"}))),
            "Message 4711: arg1, (none), 100% %s");
  EXPECT_EQ(text_and_free(cfg_new_message(INT32_MIN, 0, nullptr)), "Message -2147483648");
}

TEST(Message, NullIsNoMessage) {
  EXPECT_EQ(cfg_message_get_code(nullptr), 0);
  EXPECT_EQ(cfg_message_get_argc(nullptr), 0);
  EXPECT_EQ(cfg_message_get_arg(nullptr, 0), nullptr);
  EXPECT_EQ(cfg_message_get_text(nullptr), nullptr);
  cfg_message_free(nullptr);
}
