// Lists of references, and finding entries by a text.
#include "record/references.hpp"

#include <new>
#include <vector>

#include "kit/fixture.hpp"
#include "record/text_search.hpp"

namespace {

constexpr const char *list_keys[] = {"list"};
constexpr cfg_keyset list_key{list_keys, 1};

class References : public kit::StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    list = list_at("list");
  }
  cfg_value value() {
    cfg_value read{};
    EXPECT_TRUE(cfg_map_read(root, &list_key, &read));
    return read;
  }
  cfg_elem *list = nullptr;
};

TEST_F(References, AreShownInListOrderWithoutEntriesOfOtherKinds) {
  ASSERT_TRUE(tw::add_reference(store.get(), list, "b-2"));
  ASSERT_TRUE(cfg_add_listelem(store.get(), list, cfg_new_string(store.get(), "text")));
  ASSERT_TRUE(tw::add_reference(store.get(), list, "a-1"));
  for (int committed = 0; committed < 2; ++committed) {
    std::vector<std::string> ids;
    EXPECT_TRUE(tw::each_reference(store.get(), value(), [&](const char *id) {
      ids.emplace_back(id);
      return true;
    }));
    EXPECT_EQ((std::vector<std::string>{"b-2", "a-1"}), ids);
    commit();
  }
}

TEST_F(References, TheReadingEndsWhereItIsToldToAndWhereMemoryEnds) {
  for (const char *id : {"a-1", "a-2", "a-3"}) ASSERT_TRUE(tw::add_reference(store.get(), list, id));
  int shown = 0;
  EXPECT_FALSE(tw::each_reference(store.get(), value(), [&](const char *) { return ++shown < 2; }));
  EXPECT_EQ(2, shown);
  EXPECT_FALSE(
      tw::each_reference(store.get(), value(), [&](const char *) -> bool { throw std::bad_alloc(); }));
}

TEST_F(References, WhatIsNoListHasNone) {
  ASSERT_TRUE(cfg_map_set_int(store.get(), root, "list", 1));
  EXPECT_FALSE(tw::each_reference(store.get(), value(), [](const char *) { return true; }));
  EXPECT_FALSE(tw::add_reference(store.get(), nullptr, "a-1"));
}

TEST_F(References, WithoutAnIdNoneIsMade) {
  EXPECT_FALSE(tw::add_reference(store.get(), list, nullptr));
  int32_t size = -1;
  ASSERT_TRUE(cfg_list_size(list, &size));
  EXPECT_EQ(0, size);
}

constexpr const char *name_keys[] = {"name"};
constexpr cfg_keyset by_name{name_keys, 1};

class TextSearch : public References {
 protected:
  cfg_elem *add(const char *name) {
    cfg_elem *entry = cfg_new_map(store.get());
    EXPECT_TRUE(cfg_add_listelem(store.get(), list, entry));
    if (name) {
      EXPECT_TRUE(cfg_map_set_string(store.get(), entry, "name", name));
    }
    return entry;
  }
  cfg_elem *find(const char *name) { return tw::find_by_text(store.get(), "list", by_name, name); }
};

TEST_F(TextSearch, FindsTheFirstEntryWithExactlyThatText) {
  add(nullptr);
  ASSERT_TRUE(cfg_map_set_int(store.get(), add(nullptr), "name", 1));
  cfg_elem *first = add("a");
  add("a");
  cfg_elem *empty = add("");
  EXPECT_EQ(first, find("a"));
  EXPECT_EQ(empty, find(""));
  for (const char *other : {"A", "ab", "b"}) EXPECT_EQ(nullptr, find(other)) << other;
  EXPECT_EQ(nullptr, find(nullptr));
  EXPECT_EQ(nullptr, tw::find_by_text(store.get(), "nowhere", by_name, "a"));
}

}  // namespace
