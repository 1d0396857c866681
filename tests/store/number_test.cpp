// The numbers of list entries: given out upwards or not, but never twice.
#include "fixture.hpp"
#include "tree.hpp"

#include <set>

class NumberTest : public StoreTest {
 protected:
  // Appends `count` strings to the list at a path, commits, and checks that none of their IDs was seen
  // before.
  void append_fresh(const std::string &path, int count = 2) {
    cfg_elem *list = cfg_get_by_path(store, path.c_str());
    ASSERT_EQ(cfg_elem_kind(list), CFG_LIST) << path;
    int before = size_of(list);
    for (int i = 0; i < count; ++i) ASSERT_NE(append_string(store, list, "x"), nullptr);
    ASSERT_TRUE(commits(store));
    std::vector<std::string> ids = ids_in(cfg_get_by_path(store, path.c_str()));
    ASSERT_EQ(ids.size(), static_cast<std::size_t>(before + count));
    for (int i = before; i < before + count; ++i) {
      const std::string &id = ids[static_cast<std::size_t>(i)];
      EXPECT_GT(number_of(id), 0) << id;
      EXPECT_TRUE(used.insert(id).second) << id << " was given out twice";
    }
  }
  void start(const std::string &path) {
    ASSERT_NE(make_list(store, path), nullptr);
    ASSERT_TRUE(commits(store));
    append_fresh(path, 3);
  }
  std::set<std::string> used;
};
STORE_TEST_ON_BOTH_ENGINES(NumberTest);

TEST_P(NumberTest, NotAfterDeletingTheLastEntry) {
  start("nodes");
  for (int round = 0; round < 4; ++round) {
    cfg_elem *list = cfg_get_by_path(store, "nodes");
    ASSERT_EQ(cfg_delete_element(store, cfg_simple_get_listelem(store, list, size_of(list) - 1)), 1);
    if (round % 2) {
      ASSERT_TRUE(commits(store));
    }
    if (round == 3) reopen();
    append_fresh("nodes", 1);
  }
}

TEST_P(NumberTest, NotAfterEmptyingTheList) {
  start("nodes");
  for (int round = 0; round < 6; ++round) {
    ASSERT_NE(cfg_set_list(store, cfg_get_by_path(store, "nodes")), nullptr);
    if (round % 2) {
      ASSERT_TRUE(commits(store));
    }
    if (round > 3) {
      ASSERT_TRUE(commits(store));
      reopen();
    }
    append_fresh("nodes");
  }
}

TEST_P(NumberTest, NotAfterDeletingTheListAndMakingItAgain) {
  start("nodes");
  for (int round = 0; round < 6; ++round) {
    ASSERT_EQ(cfg_map_delete_key(store, cfg_root(store), "nodes"), 1);
    if (round % 2) {
      ASSERT_TRUE(commits(store));
    }
    if (round > 3) {
      ASSERT_TRUE(commits(store));
      reopen();
    }
    ASSERT_NE(make_list(store, "nodes"), nullptr);
    append_fresh("nodes");
  }
}

TEST_P(NumberTest, NotAfterReplacingTheList) {
  start("nodes");
  for (int round = 0; round < 3; ++round) {
    cfg_elem *fresh = cfg_new_list(store);
    ASSERT_NE(append_string(store, fresh, "already there"), nullptr);
    ASSERT_EQ(cfg_add_mapelem(store, cfg_root(store), "nodes", fresh), 1);
    ASSERT_TRUE(commits(store));
    EXPECT_TRUE(used.insert(ids_in(cfg_get_by_path(store, "nodes")).front()).second);
    append_fresh("nodes");
    reopen();
  }
}

TEST_P(NumberTest, NotAfterTheListWasAScalarInBetween) {
  start("nodes");
  ASSERT_EQ(cfg_map_set_int(store, cfg_root(store), "nodes", 1), 1);
  ASSERT_TRUE(commits(store));
  reopen();
  ASSERT_NE(make_list(store, "nodes"), nullptr);
  append_fresh("nodes");
}

TEST_P(NumberTest, NotAfterDeletingAMapAboveTheList) {
  start("system.net.conns");
  for (const char *above : {"system.net", "system"}) {
    ASSERT_EQ(cfg_delete_element(store, cfg_get_by_path(store, above)), 1);
    ASSERT_TRUE(commits(store));
    ASSERT_EQ(cfg_get_by_path(store, "system.net"), nullptr);
    ASSERT_NE(make_list(store, "system.net.conns"), nullptr);
    append_fresh("system.net.conns");
  }
  // The same within one edit, with everything replaced from above.
  ASSERT_NE(put_map(store, cfg_root(store), "system"), nullptr);
  ASSERT_NE(make_list(store, "system.net.conns"), nullptr);
  append_fresh("system.net.conns");
}

TEST_P(NumberTest, NotForAListInAnEntry) {
  ASSERT_NE(make_list(store, "nodes"), nullptr);
  ASSERT_TRUE(commits(store));
  ASSERT_NE(append_named(store, cfg_get_by_path(store, "nodes"), "a"), nullptr);
  ASSERT_TRUE(commits(store));
  for (int round = 0; round < 4; ++round) {
    ASSERT_NE(put_list(store, cfg_get_by_id(store, "nodes-1"), "ports"), nullptr);
    for (int i = 0; i < 3; ++i)
      ASSERT_NE(append_string(store, cfg_get_by_id(store, "nodes-1.ports"), "x"), nullptr);
    ASSERT_TRUE(commits(store));
    for (const std::string &id : ids_in(cfg_get_by_id(store, "nodes-1.ports")))
      EXPECT_TRUE(used.insert(id).second) << id << " was given out twice";
    if (round % 2 == 0) {
      ASSERT_EQ(cfg_map_delete_key(store, cfg_get_by_id(store, "nodes-1"), "ports"), 1);
      ASSERT_TRUE(commits(store));
    }
    reopen();
  }
}

TEST_P(NumberTest, NotForAnotherListThatWouldNameItsEntriesAlike) {
  start("a_b");
  ASSERT_EQ(cfg_map_delete_key(store, cfg_root(store), "a_b"), 1);
  ASSERT_TRUE(commits(store));
  ASSERT_NE(make_list(store, "a.b"), nullptr);
  append_fresh("a.b");
  EXPECT_EQ(ids_in(cfg_get_by_path(store, "a.b")).front().substr(0, 4), "a_b-");
}

TEST_P(NumberTest, NotAfterExportAndImport) {
  start("nodes");
  start("gone");
  cfg_elem *list = cfg_get_by_path(store, "nodes");
  ASSERT_EQ(cfg_delete_element(store, cfg_simple_get_listelem(store, list, 2)), 1);
  ASSERT_EQ(cfg_map_delete_key(store, cfg_root(store), "gone"), 1);
  ASSERT_TRUE(commits(store));
  std::string text = export_text(store);
  store = another_store();
  ASSERT_EQ(import_text(store, text), 1);
  ASSERT_TRUE(commits(store));
  append_fresh("nodes");
  ASSERT_NE(make_list(store, "gone"), nullptr);
  append_fresh("gone");
}

TEST_P(NumberTest, NotAfterImportingAnOlderExport) {
  start("nodes");
  std::string text = export_text(store);
  append_fresh("nodes", 5);
  start("younger");
  ASSERT_EQ(import_text(store, text), 1);
  ASSERT_TRUE(commits(store));
  EXPECT_EQ(size_of(cfg_get_by_path(store, "nodes")), 3);
  EXPECT_EQ(cfg_get_by_path(store, "younger"), nullptr);
  append_fresh("nodes", 5);
  ASSERT_NE(make_list(store, "younger"), nullptr);
  append_fresh("younger");
}

TEST_P(NumberTest, NotByTwoHandlesThatAppendAtOnce) {
  start("nodes");
  cfg *other = another_handle();
  for (int round = 0; round < 5; ++round) {
    ASSERT_NE(append_string(store, cfg_get_by_path(store, "nodes"), "mine"), nullptr);
    ASSERT_NE(append_string(other, cfg_get_by_path(other, "nodes"), "theirs"), nullptr);
    ASSERT_TRUE(commits(store));
    ASSERT_TRUE(commits(other));
    ASSERT_EQ(cfg_refresh(store), 1);
  }
  std::vector<std::string> ids = ids_in(cfg_get_by_path(store, "nodes"));
  EXPECT_EQ(ids.size(), 13U);
  EXPECT_EQ(std::set<std::string>(ids.begin(), ids.end()).size(), 13U);
}

TEST_P(NumberTest, NotWhenTwoHandlesDeleteAndMakeTheList) {
  start("nodes");
  cfg *other = another_handle();
  ASSERT_EQ(cfg_map_delete_key(other, cfg_root(other), "nodes"), 1);
  ASSERT_TRUE(commits(other));
  ASSERT_EQ(cfg_refresh(store), 1);
  ASSERT_NE(make_list(store, "nodes"), nullptr);
  append_fresh("nodes");
}

TEST_P(NumberTest, AListThatBecameAListAgainInOneEditGoesOn) {
  start("nodes");
  ASSERT_NE(append_string(store, cfg_get_by_path(store, "nodes"), "never committed"), nullptr);
  ASSERT_EQ(cfg_map_delete_key(store, cfg_root(store), "nodes"), 1);
  ASSERT_NE(make_list(store, "nodes"), nullptr);
  ASSERT_EQ(cfg_map_delete_key(store, cfg_root(store), "nodes"), 1);
  ASSERT_NE(make_list(store, "nodes"), nullptr);
  append_fresh("nodes");
}
