// Lists inside list entries that grow large and shrink again: IDs, handles and neighbours stay right however
// such a list is stored.
#include "fixture.hpp"
#include "tree.hpp"

#include <algorithm>

class InnerListTest : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    cfg_elem *list = make_list(store, "nodes");
    for (const char *name : {"n1", "n2", "n3"}) {
      cfg_elem *entry = append_named(store, list, name);
      ASSERT_NE(put_list(store, entry, "ports"), nullptr);
      ASSERT_EQ(cfg_map_set_int(store, entry, "behind", 7), 1);
    }
    ASSERT_TRUE(commits(store));
  }
  cfg_elem *ports() { return cfg_get_by_id(store, "nodes-2.ports"); }
  // Appends entries of about `bytes` bytes, remembering what each should be called.
  void grow(int count, std::size_t bytes) {
    cfg_elem *list = ports();
    for (int i = 0; i < count; ++i) {
      ++last_;
      std::string name = std::to_string(last_) + std::string(bytes, 'p');
      ASSERT_NE(append_named(store, list, name), nullptr);
      expected_.emplace_back("nodes-2_ports-" + std::to_string(last_), name);
    }
  }
  void remove(std::size_t index) {
    ASSERT_EQ(cfg_delete_element(store, cfg_get_by_id(store, expected_[index].first.c_str())), 1);
    expected_.erase(expected_.begin() + static_cast<std::ptrdiff_t>(index));
  }
  void empty() {
    ASSERT_NE(cfg_set_list(store, ports()), nullptr);
    expected_.clear();
  }
  void expect_right() {
    cfg_elem *list = ports();
    ASSERT_EQ(size_of(list), static_cast<int>(expected_.size()));
    for (std::size_t i = 0; i < expected_.size(); ++i) {
      ASSERT_EQ(cfg_get_listelem(list, static_cast<int>(i)), expected_[i].first);
      cfg_elem *entry = cfg_get_by_id(store, expected_[i].first.c_str());
      ASSERT_EQ(string_at(store, entry, "name"), expected_[i].second);
    }
    for (const char *node : {"nodes-1", "nodes-2", "nodes-3"})
      EXPECT_EQ(int_at(store, cfg_get_by_id(store, node), "behind"), 7);
    EXPECT_EQ(cfg_verify(store, nullptr, nullptr), 1);
  }
  void commit_and_check() {
    ASSERT_TRUE(commits(store));
    expect_right();
    check_tree(store);
  }

 private:
  int last_ = 0;
  std::vector<std::pair<std::string, std::string>> expected_;

 protected:
  std::size_t count() const { return expected_.size(); }
};
STORE_TEST_ON_BOTH_ENGINES(InnerListTest);

TEST_P(InnerListTest, GrowsStepByStepAndShrinksAgain) {
  for (int step = 0; step < 20; ++step) {
    grow(10, 500);
    commit_and_check();
  }
  reopen();
  expect_right();
  while (count() > 0) {
    for (int i = 0; i < 10; ++i) remove(count() > 1 ? count() / 2 : 0);
    commit_and_check();
  }
  reopen();
  grow(3, 10);
  commit_and_check();
}

TEST_P(InnerListTest, GrowsShrinksIsEmptiedAndRefilledAtOnce) {
  for (int round = 0; round < 4; ++round) {
    grow(300, 500);
    commit_and_check();
    reopen();
    while (count() > 2) remove(count() - 1);
    commit_and_check();
    grow(300, 20);
    commit_and_check();
    empty();
    if (round % 2) commit_and_check();
    grow(400, 500);
    commit_and_check();
    empty();
    commit_and_check();
    reopen();
  }
}

TEST_P(InnerListTest, HandlesAreHeldWhileTheListGrowsAndShrinks) {
  grow(4, 10);
  commit_and_check();
  cfg_elem *list = ports();
  cfg_elem *second = cfg_get_by_id(store, "nodes-2_ports-2");
  cfg_elem *name = cfg_get_by_id(store, "nodes-2_ports-2.name");
  std::string expected = string_at(store, second, "name");
  auto expect_held = [&](int size) {
    EXPECT_EQ(size_of(list), size);
    EXPECT_EQ(id_of(second), "nodes-2_ports-2");
    EXPECT_EQ(string_at(store, second, "name"), expected);
    cfg_value value{};
    EXPECT_EQ(cfg_elem_read(name, &value), 1);
    EXPECT_EQ(std::string(value.data ? value.data : "", value.length), expected);
    EXPECT_EQ(id_of(cfg_get_parent_elem(store, second)), "nodes-2.ports");
    EXPECT_EQ(id_of(cfg_get_parent_elem(store, list)), "nodes-2");
  };
  grow(300, 500);
  expect_held(4);
  ASSERT_TRUE(commits(store));
  expect_held(304);
  cfg_elem *grown = cfg_get_by_id(store, "nodes-2_ports-300");
  while (count() > 3) remove(2);
  expect_held(3);
  ASSERT_TRUE(commits(store));
  expect_held(3);
  EXPECT_EQ(cfg_elem_kind(grown), CFG_NONE);
  grow(500, 500);
  ASSERT_TRUE(commits(store));
  expect_held(503);
  ASSERT_EQ(cfg_map_set_string(store, second, "extra", "x"), 1);
  ASSERT_TRUE(commits(store));
  expect_held(503);
  EXPECT_EQ(string_at(store, cfg_get_by_id(store, "nodes-2_ports-2"), "extra"), "x");
}

TEST_P(InnerListTest, ListsOfScalarsGrowAndShrink) {
  cfg_elem *tags = put_list(store, cfg_get_by_id(store, "nodes-1"), "tags");
  ASSERT_NE(tags, nullptr);
  std::vector<std::string> values;
  for (int i = 0; i < 500; ++i) {
    values.push_back(std::to_string(i) + std::string(static_cast<std::size_t>(i), 't'));
    ASSERT_NE(append_string(store, tags, values.back()), nullptr);
  }
  ASSERT_TRUE(commits(store));
  reopen();
  tags = cfg_get_by_id(store, "nodes-1.tags");
  for (int keep : {500, 250, 3, 1, 0}) {
    while (size_of(tags) > keep) {
      ASSERT_EQ(cfg_delete_element(store, cfg_simple_get_listelem(store, tags, keep / 2)), 1);
      values.erase(values.begin() + keep / 2);
    }
    ASSERT_TRUE(commits(store));
    ASSERT_EQ(size_of(tags), keep);
    for (int i = 0; i < keep; ++i)
      EXPECT_EQ(dump(store, cfg_simple_get_listelem(store, tags, i)),
                "s'" + values[static_cast<std::size_t>(i)] + "'");
    check_tree(store);
  }
}

TEST_P(InnerListTest, AnEntryWithAHugeListCanBeDeleted) {
  grow(1000, 500);
  ASSERT_TRUE(commits(store));
  cfg_status_info before{}, after{};
  ASSERT_EQ(cfg_status(store, &before), 1);
  ASSERT_EQ(cfg_delete_element(store, cfg_get_by_id(store, "nodes-2")), 1);
  ASSERT_TRUE(commits(store));
  EXPECT_EQ(cfg_get_by_id(store, "nodes-2_ports-500"), nullptr);
  EXPECT_EQ(names_in(store, cfg_get_by_path(store, "nodes")), (std::vector<std::string>{"n1", "n3"}));
  EXPECT_EQ(cfg_verify(store, nullptr, nullptr), 1);
  ASSERT_EQ(cfg_status(store, &after), 1);
  EXPECT_LT(after.records, before.records);  // nothing of it stays behind
  reopen();
  check_tree(store);
}

TEST_P(InnerListTest, AHugeListInAHugeListIsReplacedAsAWhole) {
  cfg_elem *outer = make_list(store, "outer");
  for (int i = 0; i < 100; ++i) {
    cfg_elem *inner = cfg_new_list(store);
    ASSERT_EQ(cfg_append_future_listelem(store, outer, inner), 1);
    for (int j = 0; j < 50; ++j) ASSERT_NE(append_string(store, inner, std::string(200, 'x')), nullptr);
  }
  ASSERT_TRUE(commits(store));
  EXPECT_EQ(size_of(cfg_get_by_id(store, "outer-100")), 50);
  EXPECT_NE(cfg_get_by_id(store, "outer-100-50"), nullptr);
  check_tree(store);
  cfg_status_info before{}, after{};
  ASSERT_EQ(cfg_status(store, &before), 1);
  ASSERT_NE(put_list(store, cfg_root(store), "outer"), nullptr);
  ASSERT_TRUE(commits(store));
  EXPECT_EQ(cfg_get_by_id(store, "outer-100-50"), nullptr);
  EXPECT_EQ(size_of(cfg_get_by_path(store, "outer")), 0);
  ASSERT_EQ(cfg_status(store, &after), 1);
  EXPECT_LE(after.records, before.records);
  EXPECT_EQ(cfg_verify(store, nullptr, nullptr), 1);
  check_tree(store);
}

TEST_P(InnerListTest, GrowthByChangedValuesKeepsEverything) {
  grow(40, 5);
  ASSERT_TRUE(commits(store));
  std::vector<std::string> ids = ids_in(ports());
  for (std::size_t bytes : {std::size_t{2000}, std::size_t{5}, std::size_t{70000}, std::size_t{0}}) {
    for (const std::string &id : ids)
      ASSERT_EQ(cfg_map_set_string(store, cfg_get_by_id(store, id.c_str()), "text",
                                   std::string(bytes, 'v').c_str()),
                1);
    ASSERT_TRUE(commits(store));
    EXPECT_EQ(ids_in(ports()), ids);
    expect_right();
    for (const std::string &id : ids)
      EXPECT_EQ(string_at(store, cfg_get_by_id(store, id.c_str()), "text").size(), bytes);
    reopen();
  }
  check_tree(store);
}
