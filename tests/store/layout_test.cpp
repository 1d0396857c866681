// What a new store is to hold, and what new entries hold before anything is written to them.
#include <span>

#include "fixture.hpp"
#include "tree.hpp"

namespace {

const std::vector<std::string> kMessageLists = {
    "execution_changes", "execution_errors", "execution_messages", "execution_warnings",
    "preflight_changes", "preflight_errors", "preflight_messages", "preflight_warnings"};

std::span<const cfg_place> base() {
  std::size_t count = 0;
  const cfg_place *places = cfg_base_layout(&count);
  return {places, count};
}

class LayoutTest : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    cfg_elem *push = append_named(store, make_list(store, "cfg_push_exec_ctxts"), "a push");
    nodes = put_list(store, push, "nodes");
  }
  // A map that has just joined a list as a pending entry.
  cfg_elem *pending(cfg_elem *list) {
    cfg_elem *entry = cfg_new_map(store);
    EXPECT_EQ(cfg_append_future_listelem(store, list, entry), 1) << cfg_error_text(store);
    return entry;
  }
  void expect_message_lists(cfg_elem *entry) {
    EXPECT_EQ(keys_of(entry), kMessageLists);
    for (const std::string &key : kMessageLists) {
      cfg_elem *list = cfg_simple_get_mapelem(store, entry, key.c_str());
      EXPECT_EQ(cfg_elem_kind(list), CFG_LIST) << key;
      EXPECT_EQ(size_of(list), 0) << key;
      EXPECT_EQ(pending_size_of(list), 0) << key;
    }
  }
  cfg_elem *nodes = nullptr;  // of a push that is not committed
};
STORE_TEST_ON_BOTH_ENGINES(LayoutTest);

TEST_P(LayoutTest, APendingNodeOfAPushHasItsListsOfMessages) {
  cfg_elem *entry = pending(nodes);
  expect_message_lists(entry);
  ASSERT_TRUE(commits(store));
  EXPECT_EQ(id_of(entry), "cfg_push_exec_ctxts-1_nodes-1");
  expect_message_lists(entry);
  check_tree(store);
  EXPECT_EQ(cfg_verify(store, nullptr, nullptr), 1);
  reopen();
  expect_message_lists(cfg_get_by_id(store, "cfg_push_exec_ctxts-1_nodes-1"));
}

TEST_P(LayoutTest, OneOfACommittedPushHasThemToo) {
  ASSERT_TRUE(commits(store));
  expect_message_lists(pending(nodes));
  reopen();
  nodes = cfg_get_by_id(store, "cfg_push_exec_ctxts-1.nodes");
  for (int i = 0; i < 300; ++i) expect_message_lists(pending(nodes));
  ASSERT_TRUE(commits(store));
  expect_message_lists(pending(nodes));
  ASSERT_TRUE(commits(store));
  EXPECT_EQ(size_of(nodes), 301);
  for (int i = 0; i < 301; ++i) expect_message_lists(cfg_simple_get_listelem(store, nodes, i));
  check_tree(store);
}

TEST_P(LayoutTest, MessagesAreTakenBeforeAndAfterTheCommit) {
  cfg_elem *entry = pending(nodes);
  ASSERT_NE(append_named(store, cfg_simple_get_mapelem(store, entry, "execution_errors"), "first"), nullptr);
  ASSERT_TRUE(commits(store));
  ASSERT_NE(append_named(store, cfg_simple_get_mapelem(store, entry, "execution_errors"), "second"), nullptr);
  ASSERT_TRUE(commits(store));
  EXPECT_EQ(names_in(store, cfg_get_by_id(store, "cfg_push_exec_ctxts-1_nodes-1.execution_errors")),
            (std::vector<std::string>{"first", "second"}));
}

TEST_P(LayoutTest, WhatAnEntryHasAlreadyStays) {
  cfg_elem *entry = cfg_new_map(store);
  ASSERT_NE(append_string(store, put_list(store, entry, "preflight_changes"), "kept"), nullptr);
  ASSERT_EQ(cfg_map_set_string(store, entry, "execution_errors", "no list"), 1);
  ASSERT_EQ(cfg_map_set_string(store, entry, "status", "preflight_ready"), 1);
  ASSERT_EQ(cfg_append_future_listelem(store, nodes, entry), 1);
  std::vector<std::string> keys = kMessageLists;
  keys.emplace_back("status");
  EXPECT_EQ(keys_of(entry), keys);
  EXPECT_EQ(string_at(store, entry, "execution_errors"), "no list");
  EXPECT_EQ(pending_size_of(cfg_simple_get_mapelem(store, entry, "preflight_changes")), 1);
}

TEST_P(LayoutTest, AListThatWasDeletedIsNotMadeAgain) {
  cfg_elem *entry = pending(nodes);
  ASSERT_EQ(cfg_map_delete_key(store, entry, "preflight_changes"), 1);
  ASSERT_TRUE(commits(store));
  EXPECT_EQ(keys_of(entry).size(), kMessageLists.size() - 1);
  reopen();
  EXPECT_EQ(keys_of(cfg_get_by_id(store, "cfg_push_exec_ctxts-1_nodes-1")).size(), kMessageLists.size() - 1);
}

TEST_P(LayoutTest, AnEntryThatIsAddedAtOnceHoldsWhatItWasGiven) {
  cfg_elem *entry = cfg_new_map(store);
  ASSERT_EQ(cfg_add_listelem(store, nodes, entry), 1);
  EXPECT_EQ(keys_of(entry), std::vector<std::string>{});
}

TEST_P(LayoutTest, AnEntryThatIsNoMapIsTakenAsItIs) {
  ASSERT_EQ(cfg_append_future_listelem(store, nodes, cfg_new_string(store, "x")), 1);
  ASSERT_EQ(cfg_append_future_listelem(store, nodes, cfg_new_list(store)), 1);
  ASSERT_EQ(cfg_append_future_listelem(store, nodes, cfg_new_reference(store, "nodes-1")), 1);
  EXPECT_EQ(pending_size_of(nodes), 3);
}

TEST_P(LayoutTest, EntriesOfAllOtherCollectionsBeginEmpty) {
  for (const cfg_place &place : base()) {
    if (place.kind != CFG_LIST) continue;
    cfg_elem *list = make_list(store, place.path);
    EXPECT_EQ(keys_of(pending(list)), std::vector<std::string>{}) << place.path;
  }
  // Lists that are called the same elsewhere.
  for (const char *path : {"nodes", "elsewhere.nodes", "cfg_push_exec_ctxt.nodes"})
    EXPECT_EQ(keys_of(pending(make_list(store, path))), std::vector<std::string>{}) << path;
  cfg_elem *other = pending(make_list(store, "other_ctxts"));
  EXPECT_EQ(keys_of(pending(put_list(store, other, "nodes"))), std::vector<std::string>{});
  cfg_elem *push = pending(make_list(store, "cfg_push_exec_ctxts"));
  EXPECT_EQ(keys_of(push), std::vector<std::string>{});
  EXPECT_EQ(keys_of(pending(put_list(store, push, "templates"))), std::vector<std::string>{});
  EXPECT_EQ(keys_of(pending(put_list(store, put_map(store, push, "more"), "nodes"))),
            std::vector<std::string>{});
  expect_message_lists(pending(put_list(store, push, "nodes")));
}

TEST_P(LayoutTest, ALiteralKeyWithDotsOrAStarIsNoCollection) {
  EXPECT_EQ(keys_of(pending(put_list(store, cfg_root(store), "cfg_push_exec_ctxts.*.nodes"))),
            std::vector<std::string>{});
  cfg_elem *push = put_map(store, put_map(store, cfg_root(store), "cfg_push_exec_ctxts"), "*");
  EXPECT_EQ(keys_of(pending(put_list(store, push, "nodes"))), std::vector<std::string>{});
}

TEST_P(LayoutTest, AListThatIsAttachedNowhereIsNoCollection) {
  cfg_elem *push = cfg_new_map(store);
  cfg_elem *list = put_list(store, push, "nodes");
  EXPECT_EQ(keys_of(pending(list)), std::vector<std::string>{});
  ASSERT_EQ(cfg_append_future_listelem(store, cfg_get_by_path(store, "cfg_push_exec_ctxts"), push), 1);
  expect_message_lists(pending(list));
}

TEST_P(LayoutTest, AnEntryThatIsRefusedGetsNothing) {
  ASSERT_TRUE(commits(store));
  cfg_elem *attached = put_map(store, cfg_root(store), "attached");
  EXPECT_EQ(cfg_append_future_listelem(store, nodes, attached), 0);
  EXPECT_EQ(keys_of(attached), std::vector<std::string>{});
}

TEST_P(LayoutTest, AnImportIsTheExportAgain) {
  pending(nodes);
  cfg_elem *bare = cfg_new_map(store);
  ASSERT_EQ(cfg_add_listelem(store, nodes, bare), 1);
  ASSERT_TRUE(commits(store));
  const std::string text = export_text(store);
  cfg *copy = another_store();
  ASSERT_EQ(import_text(copy, text), 1) << cfg_error_text(copy);
  ASSERT_TRUE(commits(copy));
  EXPECT_EQ(export_text(copy), text);
  EXPECT_EQ(dump(copy), dump(store));
}

TEST_P(LayoutTest, TheCommitTellsOfThemLikeOfAnyOtherElement) {
  ASSERT_TRUE(commits(store));
  pending(nodes);
  std::vector<std::string> changes;
  EXPECT_EQ(cfg_visit_changes(
                store,
                [](void *context, const cfg_change *change) {
                  static_cast<std::vector<std::string> *>(context)->emplace_back(1, change->op);
                  return 1;
                },
                &changes),
            1);
  EXPECT_EQ(changes, std::vector<std::string>(1 + kMessageLists.size(), "+")) << "the entry and its lists";
  cfg_abandon(store);
  EXPECT_EQ(pending_size_of(nodes), 0);
}

TEST(BaseLayout, NamesHoldersBeforeWhatTheyHold) {
  std::map<std::string, cfg_kind> seen;
  for (const cfg_place &place : base()) {
    const std::string path = place.path;
    EXPECT_TRUE(place.kind == CFG_MAP || place.kind == CFG_LIST || place.kind == CFG_BOOL) << path;
    const auto dot = path.rfind('.');
    EXPECT_TRUE(dot == std::string::npos || seen[path.substr(0, dot)] == CFG_MAP) << path;
    EXPECT_TRUE(seen.emplace(path, place.kind).second) << path;
  }
  EXPECT_EQ(seen["nodes"], CFG_LIST);
  EXPECT_EQ(seen["cfg_push_exec_ctxts"], CFG_LIST);
  EXPECT_EQ(cfg_base_layout(nullptr), nullptr);
}

}  // namespace
