#include "record/enumeration.hpp"

#include <gtest/gtest.h>

namespace {

constexpr const char *media_texts[] = {"ethernet", "wireless"};
constexpr tw::enumeration media{.texts = media_texts, .any_case = true};

constexpr const char *kind_texts[] = {"dummy", "script"};
constexpr tw::enumeration kind{.texts = kind_texts, .first = 0, .unknown = 2};

TEST(Enumeration, ValuesCountFromTheFirstInTableOrder) {
  EXPECT_STREQ("ethernet", media.to_string(1));
  EXPECT_STREQ("wireless", media.to_string(2));
  EXPECT_STREQ("dummy", kind.to_string(0));
}

TEST(Enumeration, ValuesOutsideTheTableHaveNoText) {
  EXPECT_EQ(nullptr, media.to_string(0));
  EXPECT_EQ(nullptr, media.to_string(3));
  EXPECT_EQ(nullptr, media.to_string(INT32_MIN));
  EXPECT_EQ(nullptr, kind.to_string(-1));
  EXPECT_EQ(nullptr, kind.to_string(INT32_MAX));
}

TEST(Enumeration, NullAndForeignTextReadAsUnknown) {
  EXPECT_EQ(0, media.from_string(nullptr));
  EXPECT_EQ(0, media.from_string("ether"));
  EXPECT_EQ(2, kind.from_string(nullptr));
  EXPECT_EQ(2, kind.from_string("dummy "));
}

TEST(Enumeration, CaseCountsUnlessTheTableSaysOtherwise) {
  EXPECT_EQ(1, media.from_string("Ethernet"));
  EXPECT_EQ(2, kind.from_string("Dummy"));
  EXPECT_EQ(0, kind.from_string("dummy"));
}

}  // namespace
