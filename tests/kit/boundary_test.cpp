#include "record/boundary.hpp"

#include <gtest/gtest.h>

#include <new>

#include "record/assertion.hpp"

namespace {

struct sample {
  tw::text name;
  tw::secret password;
  int32_t count = 0;
  uint32_t port = 0;
};

TEST(Guarded, PassesAResultThrough) {
  EXPECT_EQ(7, tw::guarded([] { return 7; }));
}

TEST(Guarded, TurnsAnyExceptionIntoTheFailureValue) {
  static int something = 0;
  EXPECT_EQ(0, tw::guarded([]() -> int { throw std::bad_alloc(); }));
  EXPECT_EQ(nullptr, tw::guarded([]() -> int * {
              if (something == 0) throw 42;
              return &something;
            }));
}

TEST(Getter, OfANullRecordIsNullOrZero) {
  const sample *none = nullptr;
  EXPECT_EQ(nullptr, tw::get<&sample::name>(none));
  EXPECT_EQ(0, tw::get<&sample::count>(none));
  EXPECT_EQ(0U, tw::get<&sample::port>(none));
}

TEST(Getter, AnswersTheFieldItself) {
  sample s;
  ASSERT_TRUE(s.name.set("n"));
  s.port = 4294967295U;
  EXPECT_EQ(s.name.c_str(), tw::get<&sample::name>(&s));
  EXPECT_EQ(4294967295U, tw::get<&sample::port>(&s));
}

TEST(Setter, OfANullRecordIsZero) {
  sample *none = nullptr;
  EXPECT_EQ(0, tw::set<&sample::count>(none, 3));
  EXPECT_EQ(0, tw::replace<&sample::name>(none, "n"));
}

TEST(Setter, OfAnIntegerKeepsEveryValue) {
  sample s;
  EXPECT_EQ(1, tw::set<&sample::count>(&s, -5));
  EXPECT_EQ(-5, s.count);
}

TEST(Setter, OfAStringKeepsThePointerThatTheFieldHoldsAndAnswersOne) {
  sample s;
  ASSERT_TRUE(s.password.set("pw"));
  const char *held = s.password.c_str();
  EXPECT_EQ(1, tw::replace<&sample::password>(&s, held));
  EXPECT_EQ(held, s.password.c_str());
  EXPECT_STREQ("pw", s.password.c_str());
}

TEST(AssertionDeathTest, NamesExpressionSourceAndFunction) {
  EXPECT_DEATH(
      {
        const int *np = nullptr;
        TW_ASSERT(np && *np, "src/nodes");
      },
      "src/nodes: .*TestBody.*: Assertion `np && \\*np' failed");
}

}  // namespace
