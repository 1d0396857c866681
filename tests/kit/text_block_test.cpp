// Texts that share the memory of a block.
#include "record/text_block.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <string_view>

#include "record/text.hpp"
#include "record/text_array.hpp"

namespace {

cfg_value string_value(std::string_view text) { return {CFG_STRING, 0, text.data(), text.size()}; }

TEST(TextBlock, GivesPlacesThatDoNotOverlap) {
  tw::text_block block;
  std::set<char *> places;
  for (int i = 0; i < 1000; ++i) {
    char *place = block.take(37);
    ASSERT_NE(nullptr, place);
    std::memset(place, i & 127, 37);
    places.insert(place);
  }
  ASSERT_EQ(1000U, places.size());
  for (auto at = places.begin(); std::next(at) != places.end(); ++at) EXPECT_GE(*std::next(at) - *at, 37);
}

TEST(TextBlock, GivesPlacesForPointersThatAreAligned) {
  tw::text_block block;
  for (int i = 0; i < 100; ++i) {
    ASSERT_NE(nullptr, block.take(3));
    char **pointers = block.take_pointers(2);
    ASSERT_NE(nullptr, pointers);
    EXPECT_EQ(0U, reinterpret_cast<std::uintptr_t>(pointers) % alignof(char *));
  }
}

TEST(TextBlock, TakesNothingBehindItsPieces) {
  tw::text_block block;
  char *const first = block.take(256);
  for (int i = 1; i < 4; ++i) EXPECT_EQ(first + i * 256, block.take(256));
  EXPECT_NE(first + 4 * 256, block.take(1));
}

TEST(TextBlock, TakesNoLongTexts) {
  tw::text_block block;
  EXPECT_NE(nullptr, block.take(256));
  EXPECT_EQ(nullptr, block.take(257));
  EXPECT_EQ(nullptr, block.take_pointers(257 / sizeof(char *) + 1));
  EXPECT_EQ(nullptr, block.take_pointers(SIZE_MAX));
}

TEST(TextInABlock, ReadsAndChangesLikeAnyOther) {
  tw::text_block block;
  tw::text text;
  ASSERT_TRUE(text.assign("first", 5, &block));
  EXPECT_STREQ("first", text.c_str());
  ASSERT_TRUE(text.assign(text.c_str() + 1, 3, &block));
  EXPECT_STREQ("irs", text.c_str());
  ASSERT_TRUE(text.set("on the heap"));
  EXPECT_STREQ("on the heap", text.c_str());
  ASSERT_TRUE(text.assign("back", 4, &block));
  text.clear();
  EXPECT_EQ(nullptr, text.c_str());
}

TEST(TextInABlock, IsHandedOnWithItsMemory) {
  tw::text_block block;
  tw::text first, second;
  ASSERT_TRUE(first.assign("block", 5, &block));
  ASSERT_TRUE(second.set("heap"));
  const char *place = first.c_str();
  first = std::move(second);
  EXPECT_STREQ("heap", first.c_str());
  EXPECT_EQ(place, second.c_str());
  const tw::text third(std::move(second));
  EXPECT_EQ(place, third.c_str());
  EXPECT_TRUE(second.move_out());  // NOLINT: nothing is left in it
  EXPECT_EQ(nullptr, second.c_str());
}

TEST(TextInABlock, IsTooLongForItAndStandsAlone) {
  tw::text text;
  const std::string bytes(5000, 'x');
  {
    tw::text_block block;
    ASSERT_TRUE(text.assign(bytes.data(), bytes.size(), &block));
  }
  EXPECT_EQ(bytes, text.c_str());
}

TEST(TextInABlock, ThatIsSecretIsOverwrittenThere) {
  tw::text_block block;
  const std::string key("sec\0ret", 7);
  for (const char *fresh : {"replaced", static_cast<const char *>(nullptr)}) {
    tw::secret text;
    tw::text neighbour;
    ASSERT_TRUE(text.assign(key.data(), key.size(), &block));
    ASSERT_TRUE(neighbour.assign("stays", 5, &block));
    const char *place = text.c_str();
    EXPECT_EQ(key, std::string(place, key.size()));
    ASSERT_TRUE(text.set(fresh));
    EXPECT_EQ(std::string(8, '\0'), std::string(place, 8));
    EXPECT_STREQ("stays", neighbour.c_str());
  }
}

TEST(TextBlock, HoldsLongTextsInThePieceThatWasAskedFor) {
  tw::text_block block;
  ASSERT_TRUE(block.reserve(5005));
  char *first = block.take(5000);
  ASSERT_NE(nullptr, first);
  EXPECT_EQ(first + 5000, block.take(5));
  EXPECT_EQ(nullptr, block.take(257));
  EXPECT_NE(nullptr, block.take(256));
  EXPECT_EQ(nullptr, block.take(257));
}

TEST(TextBlock, BeginsAnewWhenItIsCleared) {
  tw::text_block block;
  ASSERT_TRUE(block.reserve(5000));
  block.clear();
  EXPECT_EQ(nullptr, block.take(5000));
  EXPECT_NE(nullptr, block.take(5));
}

TEST(TextInABlock, OutlivesItWhenItMovesOut) {
  tw::text text;
  {
    tw::text_block block;
    ASSERT_TRUE(text.assign("moved", 5, &block));
    ASSERT_TRUE(text.move_out());
    ASSERT_TRUE(text.move_out());
  }
  EXPECT_STREQ("moved", text.c_str());
}

TEST(TextArrayInABlock, HoldsCopiesOfTheStringsAmongTheValues) {
  tw::text_block block;
  const cfg_value values[] = {string_value("first"), {CFG_INT, 5, nullptr, 0}, string_value("")};
  tw::text_array texts;
  ASSERT_TRUE(texts.append("before"));
  ASSERT_TRUE(texts.assign(values, 3, &block));
  ASSERT_EQ(3, texts.count());
  EXPECT_STREQ("first", texts.at(0));
  EXPECT_EQ(nullptr, texts.at(1));
  EXPECT_STREQ("", texts.at(2));
}

TEST(TextArrayInABlock, MovesOutWhenItChanges) {
  auto block = std::make_unique<tw::text_block>();
  const cfg_value values[] = {string_value("first"), {CFG_INT, 5, nullptr, 0}};
  tw::text_array set, appended, moved;
  for (tw::text_array *texts : {&set, &appended, &moved}) ASSERT_TRUE(texts->assign(values, 2, block.get()));
  ASSERT_TRUE(set.set(1, "second"));
  ASSERT_TRUE(appended.append("third"));
  ASSERT_TRUE(moved.move_out());
  block.reset();
  for (const tw::text_array *texts : {&set, &appended, &moved}) EXPECT_STREQ("first", texts->at(0));
  EXPECT_STREQ("second", set.at(1));
  EXPECT_EQ(nullptr, moved.at(1));
  EXPECT_STREQ("third", appended.at(2));
}

TEST(TextArrayInABlock, WithATextThatIsTooLongStandsAlone) {
  const std::string text(500, 'x');
  const cfg_value values[] = {string_value("first"), string_value(text)};
  tw::text_array texts;
  {
    tw::text_block block;
    ASSERT_TRUE(texts.assign(values, 2, &block));
  }
  EXPECT_STREQ("first", texts.at(0));
  EXPECT_EQ(text, texts.at(1));
}

}  // namespace
