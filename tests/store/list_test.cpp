// Lists: committed and pending entries, their order, their ends.
#include "fixture.hpp"
#include "tree.hpp"

#include <climits>

class ListTest : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    list = make_list(store, "nodes");
    for (const char *name : {"a", "b", "c"}) ASSERT_NE(append_named(store, list, name), nullptr);
    ASSERT_TRUE(commits(store));
    list = cfg_get_by_path(store, "nodes");
    ASSERT_EQ(size_of(list), 3);
  }
  void commit_and_reopen() {
    ASSERT_TRUE(commits(store));
    reopen();
    list = cfg_get_by_path(store, "nodes");
  }
  std::vector<std::string> names() { return names_in(store, list); }
  using Names = std::vector<std::string>;
  cfg_elem *list = nullptr;
};
STORE_TEST_ON_BOTH_ENGINES(ListTest);

TEST_P(ListTest, APendingEntryIsSeenOnlyAmongThePendingOnesUntilCommit) {
  cfg_elem *entry = append_named(store, list, "d");
  EXPECT_EQ(size_of(list), 3);
  EXPECT_EQ(pending_size_of(list), 1);
  EXPECT_EQ(cfg_get_listelem(list, 3), nullptr);
  EXPECT_EQ(cfg_simple_get_listelem(store, list, 3), nullptr);
  EXPECT_EQ(id_of(cfg_get_future_listelem(list, 0)), id_of(entry));
  EXPECT_EQ(cfg_get_future_listelem(list, 1), nullptr);
  ASSERT_TRUE(commits(store));
  EXPECT_EQ(size_of(list), 4);
  EXPECT_EQ(pending_size_of(list), 0);
  EXPECT_EQ(cfg_get_future_listelem(list, 0), nullptr);
  EXPECT_EQ(names(), (Names{"a", "b", "c", "d"}));
}

TEST_P(ListTest, PendingEntriesKeepTheirOrder) {
  for (int i = 0; i < 100; ++i) ASSERT_NE(append_named(store, list, std::to_string(i)), nullptr);
  for (int i = 0; i < 100; ++i)
    EXPECT_EQ(string_at(store, cfg_get_future_listelem(list, i), "name"), std::to_string(i));
  commit_and_reopen();
  Names all = names();
  ASSERT_EQ(all.size(), 103U);
  for (std::size_t i = 0; i < 100; ++i) EXPECT_EQ(all[i + 3], std::to_string(i));
}

TEST_P(ListTest, AnAddedEntryIsSeenAtOnce) {
  cfg_elem *entry = cfg_new_map(store);
  ASSERT_EQ(cfg_map_set_string(store, entry, "name", "d"), 1);
  ASSERT_EQ(cfg_add_listelem(store, list, entry), 1);
  EXPECT_EQ(size_of(list), 4);
  EXPECT_EQ(pending_size_of(list), 0);
  EXPECT_EQ(id_of(cfg_simple_get_listelem(store, list, 3)), id_of(entry));
  EXPECT_EQ(names(), (Names{"a", "b", "c", "d"}));
  commit_and_reopen();
  EXPECT_EQ(names(), (Names{"a", "b", "c", "d"}));
}

TEST_P(ListTest, PendingEntriesComeBehindCommittedOnesAfterCommit) {
  ASSERT_NE(append_named(store, list, "pending 1"), nullptr);
  cfg_elem *entry = cfg_new_map(store);
  ASSERT_EQ(cfg_map_set_string(store, entry, "name", "added"), 1);
  ASSERT_EQ(cfg_add_listelem(store, list, entry), 1);
  ASSERT_NE(append_named(store, list, "pending 2"), nullptr);
  EXPECT_EQ(names(), (Names{"a", "b", "c", "added"}));
  commit_and_reopen();
  EXPECT_EQ(names(), (Names{"a", "b", "c", "added", "pending 1", "pending 2"}));
}

TEST_P(ListTest, AnIndexOutsideGivesNothing) {
  for (int index : {-1, 3, 4, 1000000, INT_MAX, INT_MIN}) {
    EXPECT_EQ(cfg_get_listelem(list, index), nullptr) << index;
    EXPECT_EQ(cfg_simple_get_listelem(store, list, index), nullptr) << index;
    EXPECT_EQ(cfg_get_future_listelem(list, index), nullptr) << index;
  }
  EXPECT_EQ(cfg_get_future_listelem(list, 0), nullptr);
}

TEST_P(ListTest, OnlyAListHasEntries) {
  cfg_elem *map = cfg_get_by_id(store, "nodes-1");
  cfg_elem *scalar = cfg_get_by_id(store, "nodes-1.name");
  for (cfg_elem *elem : {map, scalar}) {
    std::int32_t size = 77;
    EXPECT_EQ(cfg_list_size(elem, &size), 0);
    EXPECT_EQ(cfg_list_future_size(elem, &size), 0);
    EXPECT_EQ(size, 77);
    EXPECT_EQ(cfg_get_listelem(elem, 0), nullptr);
    EXPECT_EQ(cfg_simple_get_listelem(store, elem, 0), nullptr);
    EXPECT_EQ(cfg_get_future_listelem(elem, 0), nullptr);
    EXPECT_TRUE(failed_with(store, cfg_add_listelem(store, elem, cfg_new_map(store)), CFG_E_ARGUMENT));
    EXPECT_TRUE(
        failed_with(store, cfg_append_future_listelem(store, elem, cfg_new_map(store)), CFG_E_ARGUMENT));
    EXPECT_EQ(cfg_set_list(store, elem), nullptr);
  }
  EXPECT_EQ(cfg_has_changes(store), 0);
}

TEST_P(ListTest, OnlyAnUnattachedElementCanBeAppended) {
  cfg_elem *entry = append_named(store, list, "d");
  EXPECT_EQ(cfg_append_future_listelem(store, list, entry), 0);
  EXPECT_EQ(cfg_add_listelem(store, list, entry), 0);
  EXPECT_EQ(cfg_add_listelem(store, list, cfg_get_by_id(store, "nodes-1")), 0);
  EXPECT_EQ(cfg_append_future_listelem(store, list, cfg_root(store)), 0);
  EXPECT_EQ(cfg_append_future_listelem(store, list, list), 0);
  EXPECT_EQ(cfg_append_future_listelem(store, list, nullptr), 0);
  EXPECT_EQ(cfg_add_mapelem(store, cfg_root(store), "again", entry), 0);
  EXPECT_EQ(size_of(list), 3);
  EXPECT_EQ(pending_size_of(list), 1);
  commit_and_reopen();
  EXPECT_EQ(names(), (Names{"a", "b", "c", "d"}));
}

TEST_P(ListTest, DeletingAnEntryClosesTheGap) {
  EXPECT_EQ(cfg_delete_element(store, cfg_get_by_id(store, "nodes-2")), 1);
  for (bool committed : {false, true}) {
    if (committed) commit_and_reopen();
    EXPECT_EQ(ids_in(list), (Names{"nodes-1", "nodes-3"}));
    EXPECT_EQ(names(), (Names{"a", "c"}));
    EXPECT_EQ(cfg_get_by_id(store, "nodes-2"), nullptr);
    EXPECT_EQ(cfg_get_by_id(store, "nodes-2.name"), nullptr);
  }
}

TEST_P(ListTest, DeletingAPendingEntryLeavesTheOthers) {
  ASSERT_NE(append_named(store, list, "d"), nullptr);
  cfg_elem *middle = append_named(store, list, "e");
  ASSERT_NE(append_named(store, list, "f"), nullptr);
  std::string id = id_of(middle);
  EXPECT_EQ(cfg_delete_element(store, middle), 1);
  EXPECT_EQ(pending_size_of(list), 2);
  EXPECT_EQ(string_at(store, cfg_get_future_listelem(list, 1), "name"), "f");
  EXPECT_EQ(cfg_elem_kind(middle), CFG_NONE);
  EXPECT_EQ(cfg_get_by_id(store, id.c_str()), nullptr);
  commit_and_reopen();
  EXPECT_EQ(names(), (Names{"a", "b", "c", "d", "f"}));
}

TEST_P(ListTest, AppendingAndDeletingAgainIsNoChange) {
  cfg_elem *entry = append_named(store, list, "d");
  EXPECT_EQ(cfg_has_changes(store), 1);
  EXPECT_EQ(cfg_delete_element(store, entry), 1);
  EXPECT_EQ(cfg_has_changes(store), 0);
  std::uint64_t before = cfg_revision(store);
  ASSERT_TRUE(commits(store));
  EXPECT_EQ(cfg_revision(store), before);
}

TEST_P(ListTest, SettingAListEmptiesItForRefilling) {
  ASSERT_NE(append_named(store, list, "pending"), nullptr);
  cfg_elem *refilled = cfg_set_list(store, list);
  ASSERT_NE(refilled, nullptr);
  EXPECT_EQ(id_of(refilled), "nodes");
  for (cfg_elem *same : {list, refilled}) {
    EXPECT_EQ(size_of(same), 0);
    EXPECT_EQ(pending_size_of(same), 0);
  }
  EXPECT_EQ(cfg_get_by_id(store, "nodes-1"), nullptr);
  ASSERT_NE(append_named(store, refilled, "x"), nullptr);
  ASSERT_NE(append_named(store, refilled, "y"), nullptr);
  commit_and_reopen();
  EXPECT_EQ(names(), (Names{"x", "y"}));
  EXPECT_EQ(ids_in(list), (Names{"nodes-4", "nodes-5"}));
}

TEST_P(ListTest, SettingAnEmptyListIsNoChange) {
  cfg_elem *empty = make_list(store, "empty");
  ASSERT_TRUE(commits(store));
  empty = cfg_get_by_path(store, "empty");
  EXPECT_NE(cfg_set_list(store, empty), nullptr);
  EXPECT_EQ(cfg_has_changes(store), 0);
}

TEST_P(ListTest, HoldsEntriesOfEveryKind) {
  cfg_elem *mixed = make_list(store, "mixed");
  cfg_elem *inner = cfg_new_list(store);
  cfg_elem *map = cfg_new_map(store);
  ASSERT_EQ(cfg_append_future_listelem(store, mixed, cfg_new_string(store, "text")), 1);
  ASSERT_EQ(cfg_append_future_listelem(store, mixed, cfg_new_reference(store, "nodes-1")), 1);
  ASSERT_EQ(cfg_append_future_listelem(store, mixed, inner), 1);
  ASSERT_EQ(cfg_append_future_listelem(store, mixed, map), 1);
  ASSERT_EQ(cfg_append_future_listelem(store, inner, cfg_new_string(store, "deep")), 1);
  ASSERT_EQ(cfg_map_set_int(store, map, "n", 1), 1);
  commit_and_reopen();
  EXPECT_EQ(dump(store, cfg_get_by_path(store, "mixed")),
            "[mixed-1:s'text',mixed-2:r'nodes-1',mixed-3:[mixed-3-1:s'deep',],mixed-4:{'n':i1,},]");
  EXPECT_EQ(id_of(cfg_get_parent_elem(store, cfg_get_by_id(store, "mixed-3-1"))), "mixed-3");
  check_tree(store);
  cfg_elem *text = cfg_get_by_id(store, "mixed-1");
  EXPECT_EQ(cfg_set_string(store, text, "changed"), 1);
  EXPECT_EQ(cfg_delete_element(store, cfg_get_by_id(store, "mixed-3-1")), 1);
  commit_and_reopen();
  EXPECT_EQ(dump(store, cfg_get_by_path(store, "mixed")),
            "[mixed-1:s'changed',mixed-2:r'nodes-1',mixed-3:[],mixed-4:{'n':i1,},]");
}

TEST_P(ListTest, AnEntryMayHaveListsOfItsOwn) {
  for (int i = 0; i < 2; ++i) {
    cfg_elem *ports = put_list(store, cfg_simple_get_listelem(store, list, i), "ports");
    for (int port = 1; port <= 3; ++port)
      ASSERT_NE(append_named(store, ports, "port " + std::to_string(port)), nullptr);
  }
  commit_and_reopen();
  EXPECT_EQ(ids_in(cfg_get_by_id(store, "nodes-2.ports")),
            (Names{"nodes-2_ports-1", "nodes-2_ports-2", "nodes-2_ports-3"}));
  EXPECT_EQ(string_at(store, cfg_get_by_id(store, "nodes-1_ports-3"), "name"), "port 3");
  check_tree(store);
  cfg_elem *labels = put_list(store, cfg_get_by_id(store, "nodes-1_ports-3"), "labels");
  ASSERT_NE(append_string(store, labels, "blue"), nullptr);
  commit_and_reopen();
  EXPECT_EQ(dump(store, cfg_get_by_id(store, "nodes-1_ports-3")),
            "{'labels':[nodes-1_ports-3_labels-1:s'blue',],'name':s'port 3',}");
  EXPECT_EQ(cfg_delete_element(store, cfg_get_by_id(store, "nodes-1")), 1);
  commit_and_reopen();
  EXPECT_EQ(cfg_get_by_id(store, "nodes-1_ports-3"), nullptr);
  EXPECT_EQ(cfg_get_by_id(store, "nodes-1_ports-3_labels-1"), nullptr);
  EXPECT_EQ(names(), (Names{"b", "c"}));
  check_tree(store);
}

TEST_P(ListTest, AListEmptiedByDeletesStaysAList) {
  for (const char *id : {"nodes-3", "nodes-1", "nodes-2"})
    ASSERT_EQ(cfg_delete_element(store, cfg_get_by_id(store, id)), 1);
  EXPECT_EQ(size_of(list), 0);
  commit_and_reopen();
  EXPECT_EQ(cfg_elem_kind(list), CFG_LIST);
  EXPECT_EQ(size_of(list), 0);
}
