// IDs: each names one element, whatever the keys look like.
#include "fixture.hpp"
#include "tree.hpp"

class IdTest : public StoreTest {
 protected:
  // Checks the whole tree before the commit, after it and after opening the store again.
  void check_everywhere(std::size_t elements) {
    EXPECT_EQ(check_tree(store).size(), elements);
    ASSERT_TRUE(commits(store));
    EXPECT_EQ(check_tree(store).size(), elements);
    std::string committed = dump(store);
    reopen();
    EXPECT_EQ(check_tree(store).size(), elements);
    EXPECT_EQ(dump(store), committed);
  }
};
STORE_TEST_ON_BOTH_ENGINES(IdTest);

TEST_P(IdTest, ADottedKeyAndAPathAreToldApart) {
  cfg_elem *root = cfg_root(store);
  ASSERT_EQ(cfg_map_set_int(store, root, "a.b", 1), 1);
  ASSERT_EQ(cfg_map_set_int(store, put_map(store, root, "a"), "b", 2), 1);
  check_everywhere(4);
  EXPECT_EQ(int_at(store, cfg_root(store), "a.b"), 1);
  EXPECT_EQ(int_at(store, cfg_get_by_path(store, "a"), "b"), 2);
}

TEST_P(IdTest, ThreeWaysToSplitDotsAreToldApart) {
  cfg_elem *root = cfg_root(store);
  ASSERT_EQ(cfg_map_set_int(store, root, "a.b.c", 1), 1);
  ASSERT_EQ(cfg_map_set_int(store, put_map(store, root, "a.b"), "c", 2), 1);
  cfg_elem *a = put_map(store, root, "a");
  ASSERT_EQ(cfg_map_set_int(store, a, "b.c", 3), 1);
  ASSERT_EQ(cfg_map_set_int(store, put_map(store, a, "b"), "c", 4), 1);
  check_everywhere(8);
}

TEST_P(IdTest, AKeyThatLooksLikeAnEntryIsToldFromTheEntry) {
  cfg_elem *x = make_list(store, "x");
  for (const char *name : {"1", "2", "3", "4"}) ASSERT_NE(append_named(store, x, name), nullptr);
  ASSERT_TRUE(commits(store));
  ASSERT_EQ(cfg_map_set_int(store, cfg_root(store), "x-3", 33), 1);
  cfg_elem *map = put_map(store, cfg_root(store), "x-4");
  ASSERT_EQ(cfg_map_set_string(store, map, "name", "a map"), 1);
  check_everywhere(1 + 1 + 8 + 1 + 2);
  EXPECT_EQ(string_at(store, cfg_get_by_id(store, "x-3"), "name"), "3");
  EXPECT_EQ(string_at(store, cfg_get_by_id(store, "x-4"), "name"), "4");
}

TEST_P(IdTest, AKeyThatLooksLikeAnEntryStaysWhatItIsWhenTheEntryComes) {
  ASSERT_EQ(cfg_map_set_int(store, cfg_root(store), "x-1", 11), 1);
  ASSERT_EQ(cfg_map_set_int(store, put_map(store, cfg_root(store), "x-2"), "name", 22), 1);
  ASSERT_TRUE(commits(store));
  std::string id = cfg_get_mapelem(cfg_root(store), "x-1");
  cfg_elem *x = make_list(store, "x");
  ASSERT_NE(append_named(store, x, "one"), nullptr);
  ASSERT_NE(append_named(store, x, "two"), nullptr);
  check_everywhere(1 + 1 + 2 + 1 + 4);
  EXPECT_STREQ(cfg_get_mapelem(cfg_root(store), "x-1"), id.c_str());
  EXPECT_EQ(cfg_elem_kind(cfg_get_by_id(store, id.c_str())), CFG_INT);
}

TEST_P(IdTest, KeysWithDashDigitsBelowAnEntryAreToldApart) {
  cfg_elem *x = make_list(store, "x");
  cfg_elem *entry = append_named(store, x, "one");
  cfg_elem *ports = put_list(store, entry, "ports");
  ASSERT_NE(append_named(store, ports, "p"), nullptr);
  ASSERT_EQ(cfg_map_set_int(store, cfg_root(store), "x-1_ports-1", 1), 1);
  ASSERT_EQ(cfg_map_set_int(store, cfg_root(store), "x-1.name", 1), 1);
  ASSERT_EQ(cfg_map_set_int(store, entry, "ports-1", 1), 1);
  ASSERT_EQ(cfg_map_set_int(store, put_map(store, cfg_root(store), "x-1"), "ports-1", 1), 1);
  check_everywhere(1 + 1 + 2 + 1 + 2 + 1 + 1 + 1 + 2);
}

TEST_P(IdTest, OddKeysNestedInEachOtherAreToldApart) {
  const char *odd[] = {"a",   ".",  "..",  "~",  "~~",  "~0",  "~1",       "~d",  "%",
                       "%2e", "\\", "\\.", "{",  "{1}", "-",   "-1",       "x-1", "_",
                       " ",   "a.", ".a",  "a~", "~a",  "[1]", "\xc3\xa4", "\n",  "\x01"};
  std::size_t elements = 1;
  for (const char *outer : odd) {
    cfg_elem *map = put_map(store, cfg_root(store), outer);
    ASSERT_NE(map, nullptr) << outer;
    ++elements;
    for (const char *inner : odd) {
      ASSERT_EQ(cfg_map_set_int(store, map, inner, 1), 1) << inner;
      ++elements;
      std::string joined = std::string(outer) + "." + inner;
      if (!cfg_map_has(cfg_root(store), joined.c_str())) {
        ASSERT_EQ(cfg_map_set_int(store, cfg_root(store), joined.c_str(), 2), 1) << joined;
        ++elements;
      }
    }
  }
  check_everywhere(elements);
}

TEST_P(IdTest, OddKeysAboveListsAreToldApart) {
  // No two of these lists name their entries alike.
  const char *odd[] = {"~", "~1", "%", "{", "{1}", "-", "-1", "q-7", "\\", " ", "[1]", "\xc3\xa4", "\n"};
  std::size_t elements = 1;
  for (const char *key : odd) {
    cfg_elem *list = put_list(store, cfg_root(store), key);
    ASSERT_NE(list, nullptr) << key;
    cfg_elem *entry = append_named(store, list, key);
    ASSERT_NE(append_string(store, put_list(store, entry, key), "inner"), nullptr);
    elements += 5;
  }
  check_everywhere(elements);
}

TEST_P(IdTest, TwoListsThatWouldNameTheirEntriesAlikeAreRefused) {
  ASSERT_NE(append_string(store, make_list(store, "a_b"), "x"), nullptr);
  ASSERT_NE(append_string(store, make_list(store, "a.b"), "y"), nullptr);
  std::string before = dump(store);
  ASSERT_EQ(cfg_commit(store, nullptr), 0);
  EXPECT_NE(std::string(cfg_error_text(store)).find("a_b"), std::string::npos) << cfg_error_text(store);
  EXPECT_EQ(cfg_code_advice(cfg_error_code(store)), CFG_ADVICE_FIX) << cfg_error_code(store);
  EXPECT_EQ(dump(store), before);
  // Taking one of them away makes the edit good.
  ASSERT_EQ(cfg_map_delete_key(store, cfg_root(store), "a_b"), 1);
  check_everywhere(4);
}

TEST_P(IdTest, AListThatNamesItsEntriesLikeACommittedOneIsRefused) {
  ASSERT_NE(append_string(store, make_list(store, "a_b"), "x"), nullptr);
  ASSERT_TRUE(commits(store));
  ASSERT_NE(append_string(store, make_list(store, "a.b"), "y"), nullptr);
  ASSERT_EQ(cfg_commit(store, nullptr), 0);
  EXPECT_NE(std::string(cfg_error_text(store)).find("a_b"), std::string::npos) << cfg_error_text(store);
  cfg_abandon(store);
  check_everywhere(3);
}

// The key of the list at the top reads like a list in an entry; its own ID has to tell it apart.
TEST_P(IdTest, AListNamedLikeAnInnerListIsToldApart) {
  cfg_elem *node = append_named(store, make_list(store, "nodes"), "n");
  ASSERT_NE(append_string(store, put_list(store, node, "ports"), "p"), nullptr);
  ASSERT_TRUE(commits(store));
  ASSERT_NE(append_string(store, put_list(store, cfg_root(store), "nodes-1_ports"), "q"), nullptr);
  check_everywhere(8);
  EXPECT_EQ(dump(store, cfg_get_by_id(store, "nodes-1_ports-1")), "s'p'");
}

TEST_P(IdTest, AnInnerListKeepsItsNameBesideATopOneLikeIt) {
  ASSERT_NE(append_string(store, put_list(store, cfg_root(store), "nodes-1_ports"), "q"), nullptr);
  ASSERT_NE(append_named(store, make_list(store, "nodes"), "n"), nullptr);
  ASSERT_TRUE(commits(store));
  ASSERT_NE(append_string(store, put_list(store, cfg_get_by_id(store, "nodes-1"), "ports"), "p"), nullptr);
  check_everywhere(8);
  EXPECT_EQ(dump(store, cfg_get_by_id(store, "nodes-1_ports-1")), "s'p'");
}

TEST_P(IdTest, TwoHandlesThatMakeAlikeListsDoNotBothCommit) {
  cfg *other = another_handle();
  ASSERT_NE(append_string(store, make_list(store, "a_b"), "x"), nullptr);
  ASSERT_NE(append_string(other, make_list(other, "a.b"), "y"), nullptr);
  ASSERT_TRUE(commits(store));
  EXPECT_EQ(cfg_commit(other, nullptr), 0);
  cfg_abandon(other);
  ASSERT_EQ(cfg_refresh(other), 1);
  EXPECT_EQ(check_tree(other).size(), 3U);
}

TEST_P(IdTest, AnIdNamesWhatReplacedItsElement) {
  ASSERT_EQ(cfg_map_set_int(store, put_map(store, cfg_root(store), "k"), "x", 1), 1);
  ASSERT_TRUE(commits(store));
  ASSERT_EQ(cfg_map_set_string(store, put_map(store, cfg_root(store), "k"), "x", "new"), 1);
  ASSERT_TRUE(commits(store));
  EXPECT_EQ(cfg_elem_kind(cfg_get_by_id(store, "k.x")), CFG_STRING);
  check_everywhere(3);
}
