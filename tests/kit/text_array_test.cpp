// Arrays of heap strings, and the IDs of lists.
#include "record/text_array.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>

#include "kit/fixture.hpp"
#include "record/view.hpp"

namespace {

using tw::text_array;

TEST(TextArray, IsEmptyAtFirstAndHasNoBlock) {
  const text_array texts;
  EXPECT_EQ(0, texts.count());
  EXPECT_EQ(nullptr, texts.texts());
  EXPECT_EQ(nullptr, texts.at(0));
}

TEST(TextArray, HoldsCopiesInOrder) {
  text_array texts;
  std::string first = "first";
  EXPECT_TRUE(texts.append(first.c_str()));
  first = "other";
  EXPECT_TRUE(texts.append(nullptr));
  EXPECT_TRUE(texts.append(""));
  ASSERT_EQ(3, texts.count());
  EXPECT_STREQ("first", texts.at(0));
  EXPECT_EQ(nullptr, texts.at(1));
  EXPECT_STREQ("", texts.at(2));
  EXPECT_EQ(texts.at(0), texts.texts()[0]);
}

TEST(TextArray, GivesNullOutside) {
  text_array texts;
  ASSERT_TRUE(texts.append("only"));
  for (const int32_t index : {1, -1, INT32_MAX, INT32_MIN}) EXPECT_EQ(nullptr, texts.at(index)) << index;
}

TEST(TextArray, GrowsByEntriesThatAreNull) {
  text_array texts;
  ASSERT_TRUE(texts.append("first"));
  EXPECT_TRUE(texts.grow(2));
  ASSERT_EQ(3, texts.count());
  EXPECT_STREQ("first", texts.at(0));
  EXPECT_EQ(nullptr, texts.at(2));
  EXPECT_TRUE(texts.set(2, "third"));
  EXPECT_TRUE(texts.set(2, "last"));
  EXPECT_STREQ("last", texts.at(2));
  EXPECT_TRUE(texts.set(2, nullptr));
  EXPECT_EQ(nullptr, texts.at(2));
}

TEST(TextArray, GrowsNeitherBackwardsNorPastWhatItCanCount) {
  text_array texts;
  ASSERT_TRUE(texts.append("first"));
  EXPECT_TRUE(texts.grow(0));
  EXPECT_FALSE(texts.grow(-1));
  EXPECT_FALSE(texts.grow(INT32_MAX));
  EXPECT_EQ(1, texts.count());
}

TEST(TextArray, IsMoved) {
  text_array texts, other;
  ASSERT_TRUE(texts.append("first"));
  other = std::move(texts);
  const text_array last(std::move(other));
  EXPECT_STREQ("first", last.at(0));
}

TEST(TextArray, TakesOverAnArrayAndFreesWhatItHad) {
  text_array texts;
  ASSERT_TRUE(texts.append("first"));
  auto **block = static_cast<char **>(std::calloc(1, sizeof(char *)));
  block[0] = strdup("adopted");
  texts.adopt(block, 1);
  EXPECT_EQ(1, texts.count());
  EXPECT_STREQ("adopted", texts.at(0));
}

TEST(TextArray, LeavesItsBlockWithoutItsTexts) {
  text_array texts;
  ASSERT_TRUE(texts.append("first"));
  char **block = texts.texts();
  texts.leave_block();
  EXPECT_EQ(0, texts.count());
  EXPECT_EQ(nullptr, texts.texts());
  std::free(static_cast<void *>(block));
}

class ListIds : public kit::StoreTest {};

TEST_F(ListIds, AreReadCommittedAndPendingApart) {
  cfg_elem *list = list_at("list");
  ASSERT_TRUE(cfg_add_listelem(store.get(), list, cfg_new_map(store.get())));
  ASSERT_TRUE(cfg_add_listelem(store.get(), list, cfg_new_map(store.get())));
  commit();
  list = cfg_get_by_path(store.get(), "list");
  cfg_elem *pending = cfg_new_map(store.get());
  ASSERT_TRUE(cfg_append_future_listelem(store.get(), list, pending));
  text_array ids;
  EXPECT_TRUE(ids.append_ids(list));
  ASSERT_EQ(2, ids.count());
  EXPECT_STREQ("list-1", ids.at(0));
  EXPECT_STREQ("list-2", ids.at(1));
  EXPECT_TRUE(ids.append_pending_ids(list));
  ASSERT_EQ(3, ids.count());
  EXPECT_STREQ(reinterpret_cast<const char *>(pending), ids.at(2));
}

TEST_F(ListIds, OfWhatIsNoListAreNone) {
  text_array ids;
  for (cfg_elem *elem : {static_cast<cfg_elem *>(nullptr), root}) {
    EXPECT_TRUE(ids.append_ids(elem));
    EXPECT_TRUE(ids.append_pending_ids(elem));
  }
  EXPECT_EQ(0, ids.count());
}

}  // namespace
