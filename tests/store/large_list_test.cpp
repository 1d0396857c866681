// A list of 20,000 entries: reached from both ends and anywhere between, also while entries go.
#include "fixture.hpp"
#include "tree.hpp"

#include <random>

class LargeListTest : public StoreTest {
 protected:
  static constexpr int kEntries = 20000;
  void SetUp() override {
    StoreTest::SetUp();
    list = make_list(store, "nodes");
    for (int i = 1; i <= kEntries; ++i) ASSERT_NE(append_named(store, list, std::to_string(i)), nullptr);
    ASSERT_EQ(pending_size_of(list), kEntries);
    ASSERT_TRUE(commits(store));
    reopen();
    list = cfg_get_by_path(store, "nodes");
    ASSERT_EQ(size_of(list), kEntries);
  }
  std::string name_at(int index) {
    return string_at(store, cfg_simple_get_listelem(store, list, index), "name");
  }
  cfg_elem *list = nullptr;
};
STORE_TEST_ON_BOTH_ENGINES(LargeListTest);

TEST_P(LargeListTest, IsIndexedForwardsBackwardsAndAnywhere) {
  for (int i = 0; i < kEntries; ++i) ASSERT_EQ(cfg_get_listelem(list, i), "nodes-" + std::to_string(i + 1));
  for (int i = kEntries - 1; i >= 0; --i)
    ASSERT_EQ(cfg_get_listelem(list, i), "nodes-" + std::to_string(i + 1));
  std::mt19937 random(1);
  for (int i = 0; i < 5000; ++i) {
    int index = static_cast<int>(random() % kEntries);
    ASSERT_EQ(name_at(index), std::to_string(index + 1));
  }
  EXPECT_EQ(cfg_get_listelem(list, kEntries), nullptr);
}

TEST_P(LargeListTest, ClosesTheGapsOfRemovedEntries) {
  std::vector<int> left;
  for (int i = 1; i <= kEntries; ++i) left.push_back(i);
  std::mt19937 random(2);
  for (int round = 0; round < 3; ++round) {
    for (int i = 0; i < 300; ++i) {
      std::size_t index = random() % left.size();
      cfg_elem *entry = cfg_simple_get_listelem(store, list, static_cast<int>(index));
      ASSERT_EQ(id_of(entry), "nodes-" + std::to_string(left[index]));
      ASSERT_EQ(cfg_delete_element(store, entry), 1);
      left.erase(left.begin() + static_cast<std::ptrdiff_t>(index));
      ASSERT_EQ(size_of(list), static_cast<int>(left.size()));
      std::size_t other = random() % left.size();
      ASSERT_EQ(name_at(static_cast<int>(other)), std::to_string(left[other]));
    }
    for (std::size_t i = left.size(); i-- > 0;)
      ASSERT_EQ(cfg_get_listelem(list, static_cast<int>(i)), "nodes-" + std::to_string(left[i]));
    EXPECT_EQ(cfg_get_listelem(list, static_cast<int>(left.size())), nullptr);
    if (round == 0) continue;
    ASSERT_TRUE(commits(store));
    for (std::size_t i = 0; i < left.size(); ++i)
      ASSERT_EQ(cfg_get_listelem(list, static_cast<int>(i)), "nodes-" + std::to_string(left[i]));
  }
}

TEST_P(LargeListTest, FirstAndLastEntriesCanGoOneByOne) {
  for (int i = 0; i < 500; ++i) {
    ASSERT_EQ(cfg_delete_element(store, cfg_simple_get_listelem(store, list, 0)), 1);
    ASSERT_EQ(cfg_delete_element(store, cfg_simple_get_listelem(store, list, size_of(list) - 1)), 1);
  }
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(size_of(list), kEntries - 1000);
    EXPECT_EQ(name_at(0), "501");
    EXPECT_EQ(name_at(size_of(list) - 1), std::to_string(kEntries - 500));
    EXPECT_EQ(name_at(size_of(list)), kNothing);
    ASSERT_TRUE(commits(store));
  }
}

TEST_P(LargeListTest, AppendingToItAddsOneRecord) {
  cfg_status_info before{}, after{};
  ASSERT_EQ(cfg_status(store, &before), 1);
  for (int i = 0; i < 20; ++i) {
    ASSERT_NE(append_named(store, list, "new"), nullptr);
    ASSERT_TRUE(commits(store));
  }
  EXPECT_EQ(ids_in(list).back(), "nodes-" + std::to_string(kEntries + 20));
  ASSERT_EQ(cfg_status(store, &after), 1);
  EXPECT_GE(after.records, before.records + 20);
}

TEST_P(LargeListTest, IsScannedInOrderUntilTheVisitorEndsIt) {
  struct Seen {
    int count = 0;
    int end_at = -1;
    bool right = true;
  } seen;
  cfg_scan_visitor visit = [](void *context, std::int32_t index, const cfg_value *values) {
    auto *all = static_cast<Seen *>(context);
    all->right = all->right && index == all->count && values[0].kind == CFG_STRING &&
                 values[0].data == std::to_string(index + 1) && values[1].kind == CFG_NONE;
    return ++all->count == all->end_at ? 0 : 1;
  };
  const cfg_keyset &set = keyset_of({"name", "nothing"});
  EXPECT_EQ(cfg_list_scan(list, &set, visit, &seen), 1);
  EXPECT_EQ(seen.count, kEntries);
  EXPECT_TRUE(seen.right);
  seen = Seen{0, 5000, true};
  EXPECT_EQ(cfg_list_scan(list, &set, visit, &seen), 1);
  EXPECT_EQ(seen.count, 5000);
  EXPECT_TRUE(seen.right);
}
