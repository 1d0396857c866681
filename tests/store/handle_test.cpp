// Element handles: what they are after the edit, the snapshot or the element itself has changed.
#include "fixture.hpp"
#include "tree.hpp"

#include <cstdlib>

class HandleTest : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    cfg_elem *list = make_list(store, "nodes");
    for (const char *name : {"a", "b", "c"}) {
      cfg_elem *entry = append_named(store, list, name);
      cfg_elem *below = put_map(store, entry, "ssh");
      ASSERT_EQ(cfg_map_set_int(store, below, "port", 22), 1);
      ASSERT_NE(append_named(store, put_list(store, entry, "ports"), "p1"), nullptr);
    }
    ASSERT_TRUE(commits(store));
    reopen();
    node = cfg_get_by_id(store, "nodes-2");
    ssh = cfg_get_by_id(store, "nodes-2.ssh");
    port = cfg_get_by_id(store, "nodes-2.ssh.port");
    ports = cfg_get_by_id(store, "nodes-2.ports");
    p1 = cfg_get_by_id(store, "nodes-2_ports-1");
    for (cfg_elem *elem : {node, ssh, port, ports, p1}) ASSERT_NE(elem, nullptr);
  }
  // The handles of nodes-2 and below still read what they were made for.
  void expect_alive() {
    EXPECT_EQ(id_of(node), "nodes-2");
    EXPECT_EQ(string_at(store, node, "name"), "b");
    EXPECT_EQ(int_at(store, ssh, "port"), 22);
    std::int32_t value = 0;
    EXPECT_EQ(cfg_int_value(port, &value), 1);
    EXPECT_EQ(value, 22);
    EXPECT_EQ(size_of(ports), 1);
    EXPECT_EQ(string_at(store, p1, "name"), "p1");
    EXPECT_STREQ(text_of(p1), "nodes-2_ports-1");
  }
  // The handle behaves like NULL in every call.
  void expect_gone(cfg_elem *elem) {
    SCOPED_TRACE(text_of(elem));
    char *text = nullptr;
    std::int32_t number = 0;
    void *data = nullptr;
    std::size_t length = 0;
    cfg_value value{};
    EXPECT_EQ(cfg_elem_kind(elem), CFG_NONE);
    EXPECT_EQ(cfg_get_child_by_path(store, elem, "name"), nullptr);
    EXPECT_EQ(cfg_get_parent_elem(store, elem), nullptr);
    EXPECT_EQ(cfg_get_mapelem(elem, "name"), nullptr);
    EXPECT_EQ(cfg_simple_get_mapelem(store, elem, "name"), nullptr);
    EXPECT_EQ(cfg_map_has(elem, "name"), 0);
    EXPECT_EQ(cfg_get_listelem(elem, 0), nullptr);
    EXPECT_EQ(cfg_simple_get_listelem(store, elem, 0), nullptr);
    EXPECT_EQ(cfg_get_future_listelem(elem, 0), nullptr);
    EXPECT_EQ(cfg_get_list(store, elem), 0);
    EXPECT_EQ(cfg_list_size(elem, &number), 0);
    EXPECT_EQ(cfg_list_future_size(elem, &number), 0);
    EXPECT_EQ(cfg_add_listelem(store, elem, cfg_new_map(store)), 0);
    EXPECT_EQ(cfg_append_future_listelem(store, elem, cfg_new_map(store)), 0);
    EXPECT_EQ(cfg_set_list(store, elem), nullptr);
    EXPECT_EQ(cfg_map_get_string(store, elem, "name", &text), 0);
    EXPECT_EQ(cfg_map_get_int(store, elem, "port", &number), 0);
    EXPECT_EQ(cfg_map_set_string(store, elem, "name", "x"), 0);
    EXPECT_EQ(cfg_map_set_int(store, elem, "name", 1), 0);
    EXPECT_EQ(cfg_map_delete_key(store, elem, "name"), 0);
    EXPECT_EQ(cfg_map_keys(elem, nullptr, &number), 0);
    EXPECT_EQ(cfg_add_mapelem(store, elem, "x", cfg_new_map(store)), 0);
    EXPECT_EQ(cfg_set_string(store, elem, "x"), 0);
    EXPECT_EQ(cfg_set_blob(store, elem, "x", 1), 0);
    EXPECT_EQ(cfg_set_reference(store, elem, "x"), 0);
    EXPECT_EQ(cfg_delete_element(store, elem), 0);
    EXPECT_EQ(cfg_string_value(elem, &text), 0);
    EXPECT_EQ(cfg_int_value(elem, &number), 0);
    EXPECT_EQ(cfg_bool_value(elem, &number), 0);
    EXPECT_EQ(cfg_blob_value(elem, &data, &length), 0);
    EXPECT_EQ(cfg_reference_value(elem, &text), 0);
    EXPECT_EQ(cfg_elem_read(elem, &value), 0);
    EXPECT_EQ(cfg_map_read(elem, &keyset_of({"name"}), &value), 0);
    EXPECT_EQ(cfg_elem_uuid(elem, &text), 0);
    EXPECT_EQ(cfg_add_mapelem(store, cfg_root(store), "gone", elem), 0);
  }
  void expect_all_gone() {
    for (cfg_elem *elem : {node, ssh, port, ports, p1}) expect_gone(elem);
  }
  cfg_elem *node = nullptr, *ssh = nullptr, *port = nullptr, *ports = nullptr, *p1 = nullptr;
};
STORE_TEST_ON_BOTH_ENGINES(HandleTest);

TEST_P(HandleTest, LiveThroughCommitsOfOtherThings) {
  for (int round = 0; round < 20; ++round) {
    ASSERT_EQ(cfg_map_set_int(store, cfg_root(store), "round", round), 1);
    ASSERT_NE(append_named(store, cfg_get_by_path(store, "nodes"), "more"), nullptr);
    ASSERT_TRUE(commits(store));
    expect_alive();
  }
  ASSERT_EQ(cfg_delete_element(store, cfg_get_by_id(store, "nodes-1")), 1);
  expect_alive();
  ASSERT_TRUE(commits(store));
  expect_alive();
}

TEST_P(HandleTest, LiveThroughAbandonRefreshAndPark) {
  cfg *other = another_handle();
  for (int round = 0; round < 5; ++round) {
    ASSERT_EQ(cfg_map_set_string(store, node, "name", "changed"), 1);
    ASSERT_EQ(cfg_map_set_int(store, ssh, "port", 23), 1);
    ASSERT_NE(append_named(store, ports, "p2"), nullptr);
    cfg_abandon(store);
    expect_alive();
    ASSERT_NE(append_named(other, cfg_get_by_path(other, "nodes"), "more"), nullptr);
    ASSERT_TRUE(commits(other));
    ASSERT_EQ(cfg_refresh(store), 1);
    expect_alive();
    ASSERT_EQ(cfg_park(store), 1);
    expect_alive();
  }
}

TEST_P(HandleTest, ReadTheNewValueAfterRefresh) {
  cfg *other = another_handle();
  ASSERT_EQ(cfg_map_set_int(other, cfg_get_by_id(other, "nodes-2.ssh"), "port", 2222), 1);
  ASSERT_TRUE(commits(other));
  expect_alive();
  ASSERT_EQ(cfg_refresh(store), 1);
  std::int32_t value = 0;
  EXPECT_EQ(cfg_int_value(port, &value), 1);
  EXPECT_EQ(value, 2222);
  EXPECT_EQ(int_at(store, ssh, "port"), 2222);
}

TEST_P(HandleTest, OfADeletedElementAndAllBelowBehaveLikeNull) {
  ASSERT_EQ(cfg_delete_element(store, node), 1);
  expect_all_gone();
  ASSERT_TRUE(commits(store));
  expect_all_gone();
  ASSERT_NE(append_named(store, cfg_get_by_path(store, "nodes"), "new"), nullptr);
  ASSERT_TRUE(commits(store));
  expect_all_gone();
}

TEST_P(HandleTest, AreBackWhenTheDeletionIsAbandoned) {
  ASSERT_EQ(cfg_delete_element(store, node), 1);
  expect_all_gone();
  cfg_abandon(store);
  expect_alive();
  ASSERT_EQ(cfg_delete_element(store, cfg_get_by_path(store, "nodes")), 1);
  expect_all_gone();
  cfg_abandon(store);
  expect_alive();
}

TEST_P(HandleTest, BehaveLikeNullWhenAnotherHandleDeletedTheElement) {
  cfg *other = another_handle();
  ASSERT_EQ(cfg_delete_element(other, cfg_get_by_id(other, "nodes-2")), 1);
  ASSERT_TRUE(commits(other));
  expect_alive();
  ASSERT_EQ(cfg_refresh(store), 1);
  expect_all_gone();
}

TEST_P(HandleTest, OfAnEmptiedListsEntriesBehaveLikeNull) {
  ASSERT_NE(cfg_set_list(store, cfg_get_by_path(store, "nodes")), nullptr);
  expect_all_gone();
  ASSERT_TRUE(commits(store));
  expect_all_gone();
}

// The ID of what is no list entry names a place, and so does its handle.
TEST_P(HandleTest, OfAPlaceLeadToWhatReplacedIt) {
  cfg_elem *fresh = cfg_new_map(store);
  ASSERT_EQ(cfg_add_mapelem(store, node, "ssh", fresh), 1);
  EXPECT_EQ(cfg_elem_kind(ssh), CFG_MAP);
  EXPECT_EQ(dump(store, ssh), "{}");
  EXPECT_EQ(cfg_elem_kind(port), CFG_NONE);
  ASSERT_EQ(cfg_map_set_string(store, fresh, "port", "new"), 1);
  EXPECT_EQ(dump(store, ssh), "{'port':s'new',}");
  EXPECT_EQ(dump(store, port), "s'new'");
  ASSERT_TRUE(commits(store));
  for (cfg_elem *handle : {ssh, fresh}) {
    EXPECT_EQ(id_of(handle), "nodes-2.ssh");
    EXPECT_EQ(dump(store, handle), "{'port':s'new',}");
  }
  EXPECT_EQ(dump(store, port), "s'new'");
}

TEST_P(HandleTest, OfEntriesDoNotLeadToWhatReplacedThem) {
  ASSERT_NE(append_named(store, put_list(store, node, "ports"), "new"), nullptr);
  expect_gone(p1);
  EXPECT_EQ(size_of(ports), 0);
  EXPECT_EQ(pending_size_of(ports), 1);
  ASSERT_TRUE(commits(store));
  expect_gone(p1);
  EXPECT_EQ(ids_in(ports), std::vector<std::string>{"nodes-2_ports-2"});
}

TEST_P(HandleTest, OfAValueChangedOfKindReadsNothingWrong) {
  ASSERT_EQ(cfg_map_set_string(store, ssh, "port", "a string now"), 1);
  std::int32_t value = 77;
  EXPECT_EQ(cfg_int_value(port, &value), 0);
  EXPECT_EQ(value, 77);
  ASSERT_TRUE(commits(store));
  EXPECT_EQ(cfg_int_value(port, &value), 0);
}

TEST_P(HandleTest, OfANewElementServeOnAfterItsCommit) {
  cfg_elem *fresh = append_named(store, ports, "p2");
  cfg_elem *below = put_map(store, fresh, "below");
  ASSERT_TRUE(commits(store));
  EXPECT_EQ(id_of(fresh), "nodes-2_ports-2");
  ASSERT_EQ(cfg_map_set_int(store, fresh, "n", 1), 1);
  ASSERT_EQ(cfg_map_set_int(store, below, "m", 2), 1);
  ASSERT_TRUE(commits(store));
  EXPECT_EQ(dump(store, cfg_get_by_id(store, "nodes-2_ports-2")), "{'below':{'m':i2,},'n':i1,'name':s'p2',}");
  ASSERT_EQ(cfg_delete_element(store, fresh), 1);
  expect_gone(fresh);
  expect_gone(below);
  ASSERT_TRUE(commits(store));
  EXPECT_EQ(cfg_get_by_id(store, "nodes-2_ports-2"), nullptr);
  expect_alive();
}

TEST_P(HandleTest, OfAbandonedNewElementsBehaveLikeNull) {
  cfg_elem *fresh = append_named(store, ports, "p2");
  cfg_elem *below = put_map(store, fresh, "below");
  cfg_elem *loose = cfg_new_list(store);
  cfg_abandon(store);
  for (cfg_elem *elem : {fresh, below, loose}) expect_gone(elem);
  expect_alive();
}

TEST_P(HandleTest, OfADeletedNewElementInALaterEditBehaveLikeNull) {
  cfg_elem *fresh = append_named(store, ports, "p2");
  ASSERT_EQ(cfg_map_delete_key(store, node, "ports"), 1);
  expect_gone(fresh);
  expect_gone(ports);
  cfg_abandon(store);
  expect_gone(fresh);
  expect_alive();
}

TEST_P(HandleTest, OfTheRootCannotBeRemoved) {
  EXPECT_EQ(cfg_delete_element(store, cfg_root(store)), 0);
  EXPECT_EQ(cfg_has_changes(store), 0);
  expect_alive();
}

TEST_P(HandleTest, ManyOfThemCanBeHeld) {
  cfg_elem *list = cfg_get_by_path(store, "nodes");
  for (int i = 0; i < 3000; ++i) ASSERT_NE(append_named(store, list, std::to_string(i)), nullptr);
  ASSERT_TRUE(commits(store));
  std::vector<cfg_elem *> held;
  for (int i = 3; i < 3003; ++i) held.push_back(cfg_simple_get_listelem(store, list, i));
  ASSERT_EQ(cfg_delete_element(store, held[1500]), 1);
  ASSERT_TRUE(commits(store));
  for (std::size_t i = 0; i < held.size(); ++i)
    EXPECT_EQ(string_at(store, held[i], "name"), i == 1500 ? kNothing : std::to_string(i));
  expect_alive();
}
