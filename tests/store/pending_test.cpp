// Provisional IDs: what a new element is called before and after its commit.
#include "fixture.hpp"
#include "tree.hpp"

#include <set>

class PendingTest : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    list = make_list(store, "nodes");
    ASSERT_TRUE(commits(store));
    list = cfg_get_by_path(store, "nodes");
  }
  cfg_elem *list = nullptr;
};
STORE_TEST_ON_BOTH_ENGINES(PendingTest);

TEST_P(PendingTest, ANewElementReadsAsItsProvisionalId) {
  std::set<std::string> ids;
  for (int i = 0; i < 50; ++i)
    for (cfg_elem *elem : {cfg_new_map(store), cfg_new_list(store), cfg_new_string(store, "x"),
                           cfg_new_reference(store, "nodes-1")}) {
      ASSERT_NE(elem, nullptr);
      EXPECT_EQ(text_of(elem)[0], '{');
      EXPECT_EQ(id_of(elem), text_of(elem));
      EXPECT_EQ(id_of(cfg_get_by_id(store, text_of(elem))), text_of(elem));
      EXPECT_TRUE(ids.insert(text_of(elem)).second);
    }
}

TEST_P(PendingTest, CommitGivesTheFinalIdAndKeepsTheProvisionalOneUnderstood) {
  cfg_elem *entry = append_named(store, list, "a");
  std::string before = id_of(entry);
  ASSERT_TRUE(commits(store));
  EXPECT_EQ(id_of(entry), "nodes-1");
  EXPECT_EQ(text_of(entry), before);
  EXPECT_EQ(string_at(store, entry, "name"), "a");
  EXPECT_EQ(id_of(cfg_get_by_id(store, before.c_str())), "nodes-1");
  EXPECT_STREQ(text_of(cfg_simple_get_listelem(store, list, 0)), "nodes-1");
  EXPECT_EQ(id_of(cfg_get_parent_elem(store, entry)), "nodes");
  ASSERT_EQ(cfg_map_set_string(store, entry, "name", "b"), 1);
  ASSERT_TRUE(commits(store));
  EXPECT_EQ(id_of(cfg_get_by_id(store, before.c_str())), "nodes-1");
  EXPECT_EQ(string_at(store, cfg_get_by_id(store, "nodes-1"), "name"), "b");
  reopen();
  EXPECT_EQ(cfg_get_by_id(store, before.c_str()), nullptr);
}

TEST_P(PendingTest, EveryNewElementBelowAnEntryGetsItsFinalId) {
  cfg_elem *entry = append_named(store, list, "a");
  cfg_elem *ssh = cfg_new_map(store);
  cfg_elem *ports = cfg_new_list(store);
  cfg_elem *port = cfg_new_map(store);
  cfg_elem *word = cfg_new_string(store, "x");
  ASSERT_EQ(cfg_add_mapelem(store, entry, "ssh", ssh), 1);
  ASSERT_EQ(cfg_add_mapelem(store, entry, "ports", ports), 1);
  ASSERT_EQ(cfg_append_future_listelem(store, ports, port), 1);
  ASSERT_EQ(cfg_add_mapelem(store, port, "word", word), 1);
  std::vector<std::string> before;
  for (cfg_elem *elem : {ssh, ports, port, word}) before.emplace_back(text_of(elem));
  EXPECT_EQ(id_of(cfg_get_parent_elem(store, word)), before[2]);
  EXPECT_EQ(id_of(cfg_get_parent_elem(store, port)), before[1]);
  ASSERT_TRUE(commits(store));
  const char *after[] = {"nodes-1.ssh", "nodes-1.ports", "nodes-1_ports-1", "nodes-1_ports-1.word"};
  for (std::size_t i = 0; i < 4; ++i) EXPECT_EQ(id_of(cfg_get_by_id(store, before[i].c_str())), after[i]);
  EXPECT_EQ(id_of(word), "nodes-1_ports-1.word");
}

TEST_P(PendingTest, AbandonRemovesNewElements) {
  cfg_elem *entry = append_named(store, list, "a");
  cfg_elem *loose = cfg_new_map(store);
  std::string entry_id = id_of(entry);
  std::string loose_id = id_of(loose);
  cfg_abandon(store);
  EXPECT_EQ(cfg_get_by_id(store, entry_id.c_str()), nullptr);
  EXPECT_EQ(cfg_get_by_id(store, loose_id.c_str()), nullptr);
  EXPECT_EQ(pending_size_of(list), 0);
  EXPECT_EQ(size_of(list), 0);
  ASSERT_NE(append_named(store, list, "b"), nullptr);
  EXPECT_NE(pending_ids_in(list).front(), entry_id);
  ASSERT_TRUE(commits(store));
  EXPECT_EQ(names_in(store, list), std::vector<std::string>{"b"});
}

TEST_P(PendingTest, AnElementThatIsNeverAttachedIsGoneAfterCommit) {
  cfg_elem *loose = cfg_new_map(store);
  ASSERT_EQ(cfg_map_set_int(store, loose, "x", 1), 1);
  std::string id = id_of(loose);
  EXPECT_EQ(cfg_has_changes(store), 0);
  std::uint64_t before = cfg_revision(store);
  ASSERT_TRUE(commits(store));
  EXPECT_EQ(cfg_revision(store), before);
  EXPECT_EQ(cfg_get_by_id(store, id.c_str()), nullptr);
  EXPECT_EQ(cfg_elem_kind(loose), CFG_NONE);
}

TEST_P(PendingTest, ProvisionalIdsOfTwoHandlesNeverMeet) {
  cfg *other = another_handle();
  std::set<std::string> ids;
  for (int i = 0; i < 100; ++i) {
    EXPECT_TRUE(ids.insert(id_of(cfg_new_map(store))).second);
    EXPECT_TRUE(ids.insert(id_of(cfg_new_map(other))).second);
  }
}

TEST_P(PendingTest, OneHandlesProvisionalIdsMeanNothingToAnother) {
  cfg *other = another_handle();
  std::string id = id_of(append_named(store, list, "a"));
  EXPECT_EQ(cfg_get_by_id(other, id.c_str()), nullptr);
  ASSERT_TRUE(commits(store));
  ASSERT_EQ(cfg_refresh(other), 1);
  EXPECT_EQ(cfg_get_by_id(other, id.c_str()), nullptr);
  EXPECT_NE(cfg_get_by_id(other, "nodes-1"), nullptr);
}

TEST_P(PendingTest, AProvisionalIdIsNotReusedAfterCommitOrAbandon) {
  std::set<std::string> ids;
  for (int i = 0; i < 20; ++i) {
    EXPECT_TRUE(ids.insert(id_of(append_named(store, list, "x"))).second);
    if (i % 2) {
      ASSERT_TRUE(commits(store));
    } else
      cfg_abandon(store);
  }
}

TEST_P(PendingTest, APendingEntryOfADeletedListIsGone) {
  cfg_elem *entry = append_named(store, list, "a");
  std::string id = id_of(entry);
  ASSERT_EQ(cfg_delete_element(store, list), 1);
  EXPECT_EQ(cfg_get_by_id(store, id.c_str()), nullptr);
  EXPECT_EQ(cfg_elem_kind(entry), CFG_NONE);
  EXPECT_EQ(cfg_map_set_int(store, entry, "x", 1), 0);
  ASSERT_TRUE(commits(store));
  EXPECT_EQ(cfg_get_by_id(store, id.c_str()), nullptr);
}

TEST_P(PendingTest, ADeletedNewElementIsGoneForGood) {
  cfg_elem *loose = cfg_new_map(store);
  EXPECT_EQ(cfg_delete_element(store, loose), 1);
  EXPECT_EQ(cfg_elem_kind(loose), CFG_NONE);
  EXPECT_EQ(cfg_append_future_listelem(store, list, loose), 0);
  EXPECT_EQ(cfg_add_mapelem(store, cfg_root(store), "x", loose), 0);
  EXPECT_EQ(cfg_delete_element(store, loose), 0);
  EXPECT_EQ(cfg_has_changes(store), 0);
}
