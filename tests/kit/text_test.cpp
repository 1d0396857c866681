#include "record/text.hpp"

#include <gtest/gtest.h>

#include <memory>

#include <string>

namespace {

// Counts what is wiped: the library's objects are linked into this program and find these first.
size_t wiped_bytes = 0;

}  // namespace

extern "C" void explicit_bzero(void *bytes, size_t length) noexcept {
  wiped_bytes += length;
  volatile char *at = static_cast<char *>(bytes);
  for (size_t i = 0; i < length; ++i) at[i] = 0;
}
extern "C" void __explicit_bzero_chk(void *bytes, size_t length, size_t) noexcept {
  explicit_bzero(bytes, length);
}

namespace {

using tw::secret;
using tw::text;

TEST(Text, ANewTextIsNull) {
  const text t;
  EXPECT_EQ(nullptr, t.c_str());
  EXPECT_FALSE(t);
}

TEST(Text, SettingNullOrEmptyClears) {
  text t;
  ASSERT_TRUE(t.set("abc"));
  EXPECT_TRUE(t.set(""));
  EXPECT_EQ(nullptr, t.c_str());
  ASSERT_TRUE(t.set("abc"));
  EXPECT_TRUE(t.set(nullptr));
  EXPECT_EQ(nullptr, t.c_str());
}

TEST(Text, AssigningNothingGivesTheEmptyStringNotNull) {
  text t;
  EXPECT_TRUE(t.assign("", 0));
  EXPECT_STREQ("", t.c_str());
}

TEST(Text, AssignTakesTheGivenLengthAndEndsWithNul) {
  text t;
  EXPECT_TRUE(t.assign("abcdef", 3));
  EXPECT_STREQ("abc", t.c_str());
}

TEST(Text, CanBeSetToAPieceOfItself) {
  text t;
  ASSERT_TRUE(t.set("prefix-rest"));
  EXPECT_TRUE(t.set(t.c_str() + 7));
  EXPECT_STREQ("rest", t.c_str());
}

TEST(Text, AdoptKeepsTheVeryPointer) {
  char *chars = strdup("heap");
  text t;
  t.adopt(chars);
  EXPECT_EQ(chars, t.c_str());
}

TEST(Text, MovingLeavesNullBehind) {
  text from;
  ASSERT_TRUE(from.set("abc"));
  const text to(std::move(from));
  EXPECT_STREQ("abc", to.c_str());
  EXPECT_EQ(nullptr, from.c_str());  // NOLINT: the state after a move is what is tested
}

TEST(Text, IsNotWiped) {
  text t;
  ASSERT_TRUE(t.set("harmless"));
  wiped_bytes = 0;
  t.clear();
  EXPECT_EQ(0U, wiped_bytes);
}

TEST(Secret, IsWipedWhenReplacedClearedAndFreed) {
  const std::string longer(100, 'x');
  wiped_bytes = 0;
  {
    secret s;
    ASSERT_TRUE(s.set(longer.c_str()));
    EXPECT_EQ(0U, wiped_bytes);
    ASSERT_TRUE(s.set("123"));
    EXPECT_GE(wiped_bytes, 101U);
    wiped_bytes = 0;
    s.clear();
    EXPECT_GE(wiped_bytes, 4U);
    ASSERT_TRUE(s.set(longer.c_str()));
    wiped_bytes = 0;
  }
  EXPECT_GE(wiped_bytes, 101U);
}

TEST(Secret, IsWipedBeyondANulInIt) {
  secret s;
  std::string key(100, 'x');
  key[3] = 0;
  ASSERT_TRUE(s.assign(key.data(), key.size()));
  wiped_bytes = 0;
  s.clear();
  EXPECT_GE(wiped_bytes, 101U);
}

TEST(Secret, ThatTakesOverAHeapStringAfterABlocksIsWipedWhole) {
  tw::text_block block;
  secret s;
  ASSERT_TRUE(s.assign("123", 3, &block));
  s.adopt(strdup(std::string(100, 'x').c_str()));
  wiped_bytes = 0;
  s.clear();
  EXPECT_GE(wiped_bytes, 101U);
}

TEST(Same, ComparesExactlyAndNullEqualsNothing) {
  EXPECT_TRUE(tw::same("abc", "abc"));
  EXPECT_FALSE(tw::same("abc", "Abc"));
  EXPECT_FALSE(tw::same("abc", "ab"));
  EXPECT_FALSE(tw::same(nullptr, "abc"));
  EXPECT_FALSE(tw::same("abc", nullptr));
  EXPECT_FALSE(tw::same(nullptr, nullptr));
}

TEST(Text, LeavesItsStringToWhoeverWasGivenIt) {
  tw::text field;
  ASSERT_TRUE(field.set("left"));
  const std::unique_ptr<char, decltype(&std::free)> left(const_cast<char *>(field.c_str()), std::free);
  field.leave();
  EXPECT_FALSE(field);
  EXPECT_STREQ("left", left.get());
}

}  // namespace
