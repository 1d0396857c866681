// Searching a collection: operators, where keys are found, and that answers follow every commit.
#include "fixture.hpp"
#include "tree.hpp"

#include <memory>

namespace {

struct FreeCondition {
  void operator()(cfg_condition *condition) const { cfg_free_conditions(condition); }
};
using Condition = std::unique_ptr<cfg_condition, FreeCondition>;
using Ids = std::vector<std::string>;

Condition is(const char *key, const char *value) {
  return Condition(cfg_new_string_condition(key, CFG_OP_EQUAL, value));
}
Condition is_not(const char *key, const char *value) {
  return Condition(cfg_new_string_condition(key, CFG_OP_NOT_EQUAL, value));
}
Condition refers(const char *key, const char *id) {
  return Condition(cfg_new_reference_condition(key, CFG_OP_EQUAL, id));
}
Condition refers_not(const char *key, const char *id) {
  return Condition(cfg_new_reference_condition(key, CFG_OP_NOT_EQUAL, id));
}
Condition absent(const char *key) { return Condition(cfg_new_untyped_condition(key, CFG_OP_ABSENT)); }

template <class... Children>
Condition all_of(Children... children) {
  Condition node(cfg_new_and_condition());
  for (cfg_condition *child : {static_cast<cfg_condition *>(nullptr), children.release()...})
    if (child) {
      EXPECT_EQ(cfg_condition_add_child(node.get(), child), 1);
    }
  return node;
}

}  // namespace

class SearchTest : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    cfg_elem *list = make_list(store, "certificates");
    for (int i = 1; i <= 6; ++i) {
      cfg_elem *entry = append_named(store, list, "cert " + std::to_string(i % 3));
      ASSERT_EQ(cfg_map_set_string(store, put_map(store, entry, "ssh"), "port", i % 2 ? "22" : "23"), 1);
      if (i > 4) {
        ASSERT_EQ(cfg_map_set_string(store, entry, "revoke_time", "now"), 1);
      }
      if (i != 2) {
        ASSERT_EQ(cfg_map_set_reference(store, entry, "node", i < 4 ? "nodes-1" : "nodes-2"), 1);
      }
    }
    ASSERT_TRUE(commits(store));
    reopen();
  }
  Ids find(cfg *handle, const char *collection, const Condition &condition) {
    cfg_elem *found = cfg_search(handle, collection, condition.get());
    if (!found) return {kNothing};
    EXPECT_EQ(cfg_get_list(handle, found), 1);
    Ids ids = ids_in(found);
    for (std::size_t i = 0; i < ids.size(); ++i)
      EXPECT_EQ(id_of(cfg_simple_get_listelem(handle, found, static_cast<int>(i))), ids[i]);
    return ids;
  }
  Ids find(const Condition &condition) {
    Ids ids = find(store, "certificates", condition);
    for (std::string &id : ids)
      if (id.rfind("certificates-", 0) == 0) id.erase(0, 13);
    return ids;
  }
};
STORE_TEST_ON_BOTH_ENGINES(SearchTest);

TEST_P(SearchTest, EqualFindsEntriesInListOrder) {
  EXPECT_EQ(find(is("name", "cert 1")), (Ids{"1", "4"}));
  EXPECT_EQ(find(is("name", "cert 2")), (Ids{"2", "5"}));
  EXPECT_EQ(find(is("name", "cert")), Ids{});
  EXPECT_EQ(find(is("name", "")), Ids{});
  EXPECT_EQ(find(is("nothing", "x")), Ids{});
}

TEST_P(SearchTest, NotEqualHoldsAlsoWhenTheKeyIsAbsent) {
  EXPECT_EQ(find(is_not("name", "cert 1")), (Ids{"2", "3", "5", "6"}));
  EXPECT_EQ(find(is_not("revoke_time", "now")), (Ids{"1", "2", "3", "4"}));
  EXPECT_EQ(find(is_not("nothing", "x")), (Ids{"1", "2", "3", "4", "5", "6"}));
  EXPECT_EQ(find(refers_not("node", "nodes-1")), (Ids{"2", "4", "5", "6"}));
}

TEST_P(SearchTest, TheUntypedTestHoldsWhenTheKeyIsAbsent) {
  EXPECT_EQ(find(absent("revoke_time")), (Ids{"1", "2", "3", "4"}));
  EXPECT_EQ(find(absent("node")), Ids{"2"});
  EXPECT_EQ(find(absent("ssh")), Ids{});
  EXPECT_EQ(find(absent("ssh.nothing")), (Ids{"1", "2", "3", "4", "5", "6"}));
}

TEST_P(SearchTest, ReferencesAreFound) {
  EXPECT_EQ(find(refers("node", "nodes-1")), (Ids{"1", "3"}));
  EXPECT_EQ(find(refers("node", "nodes-2")), (Ids{"4", "5", "6"}));
  EXPECT_EQ(find(refers("node", "nodes-3")), Ids{});
}

TEST_P(SearchTest, AnAndNodeHoldsWhenAllItsChildrenHold) {
  EXPECT_EQ(find(all_of(refers("node", "nodes-2"), absent("revoke_time"))), Ids{"4"});
  EXPECT_EQ(find(all_of(is("name", "cert 1"), is("ssh.port", "22"))), Ids{"1"});
  EXPECT_EQ(find(all_of(is("name", "cert 1"), is("name", "cert 2"))), Ids{});
  EXPECT_EQ(find(all_of(is("name", "cert 1"))), (Ids{"1", "4"}));
  EXPECT_EQ(find(all_of()), (Ids{"1", "2", "3", "4", "5", "6"}));
  EXPECT_EQ(
      find(all_of(all_of(is("ssh.port", "23"), is_not("name", "cert 2")), all_of(absent("revoke_time")))),
      Ids{"4"});
}

TEST_P(SearchTest, AKeyIsAPathBelowTheEntry) {
  EXPECT_EQ(find(is("ssh.port", "22")), (Ids{"1", "3", "5"}));
  EXPECT_EQ(find(is("ssh.nothing", "22")), Ids{});
  EXPECT_EQ(find(is("name.x", "22")), Ids{});
  ASSERT_EQ(cfg_map_set_string(store, cfg_get_by_id(store, "certificates-4"), "ssh.port", "dotted"), 1);
  ASSERT_EQ(cfg_map_set_string(store, cfg_get_by_id(store, "certificates-3"), "a.b", "dotted"), 1);
  ASSERT_TRUE(commits(store));
  EXPECT_EQ(find(is("a.b", "dotted")), Ids{"3"});
}

TEST_P(SearchTest, ACollectionIsNamedByItsPathWithUnderscores) {
  ASSERT_NE(append_named(store, make_list(store, "system.net.conns"), "wan"), nullptr);
  ASSERT_NE(append_named(store, put_list(store, cfg_get_by_id(store, "certificates-1"), "ports"), "p1"),
            nullptr);
  ASSERT_NE(append_named(store, make_list(store, "with_underscore.x_y"), "u"), nullptr);
  ASSERT_NE(make_list(store, "empty"), nullptr);
  ASSERT_TRUE(commits(store));
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(find(store, "system_net_conns", is("name", "wan")), Ids{"system_net_conns-1"});
    EXPECT_EQ(find(store, "system_net_conns", is("name", "lan")), Ids{});
    EXPECT_EQ(find(store, "certificates-1_ports", is("name", "p1")), Ids{"certificates-1_ports-1"});
    EXPECT_EQ(find(store, "with_underscore_x_y", is("name", "u")), Ids{"with_underscore_x_y-1"});
    EXPECT_EQ(find(store, "empty", is("name", "u")), Ids{});
    reopen();
  }
}

TEST_P(SearchTest, AnUnknownCollectionGivesNothing) {
  Condition condition = is("name", "cert 1");
  for (const char *collection :
       {"", "nothing", "system", "certificates-1", "certificates-1.name", "certificates_", "_"})
    EXPECT_EQ(cfg_search(store, collection, condition.get()), nullptr) << collection;
  EXPECT_EQ(cfg_search(store, nullptr, condition.get()), nullptr);
  EXPECT_EQ(cfg_search(store, "certificates", nullptr), nullptr);
  EXPECT_EQ(cfg_search(nullptr, "certificates", condition.get()), nullptr);
}

TEST_P(SearchTest, TheSameQuestionFollowsThisHandlesCommits) {
  Condition question = is("name", "cert 1");
  for (int i = 0; i < 3; ++i) EXPECT_EQ(find(question), (Ids{"1", "4"}));
  ASSERT_NE(append_named(store, cfg_get_by_path(store, "certificates"), "cert 1"), nullptr);
  ASSERT_TRUE(commits(store));
  EXPECT_EQ(find(question), (Ids{"1", "4", "7"}));
  ASSERT_EQ(cfg_map_set_string(store, cfg_get_by_id(store, "certificates-2"), "name", "cert 1"), 1);
  ASSERT_EQ(cfg_map_set_string(store, cfg_get_by_id(store, "certificates-4"), "name", "other"), 1);
  ASSERT_TRUE(commits(store));
  EXPECT_EQ(find(question), (Ids{"1", "2", "7"}));
  ASSERT_EQ(cfg_delete_element(store, cfg_get_by_id(store, "certificates-1")), 1);
  ASSERT_EQ(cfg_map_delete_key(store, cfg_get_by_id(store, "certificates-7"), "name"), 1);
  ASSERT_TRUE(commits(store));
  EXPECT_EQ(find(question), Ids{"2"});
  ASSERT_EQ(cfg_map_set_int(store, cfg_get_by_id(store, "certificates-2"), "name", 1), 1);
  ASSERT_TRUE(commits(store));
  EXPECT_EQ(find(question), Ids{});
}

TEST_P(SearchTest, TheSameQuestionFollowsOtherHandlesCommits) {
  cfg *other = another_handle();
  Condition question = refers("node", "nodes-1");
  for (int i = 0; i < 3; ++i) EXPECT_EQ(find(question), (Ids{"1", "3"}));
  for (int round = 0; round < 10; ++round) {
    cfg_elem *entry = append_named(other, cfg_get_by_path(other, "certificates"), "new");
    ASSERT_EQ(cfg_map_set_reference(other, entry, "node", "nodes-1"), 1);
    ASSERT_TRUE(commits(other));
    Ids before = find(question);
    EXPECT_EQ(before.size(), 2U + static_cast<std::size_t>(round));
    ASSERT_EQ(cfg_refresh(store), 1);
    EXPECT_EQ(find(question).size(), 3U + static_cast<std::size_t>(round));
  }
  ASSERT_EQ(cfg_map_delete_key(other, cfg_root(other), "certificates"), 1);
  ASSERT_TRUE(commits(other));
  ASSERT_EQ(cfg_refresh(store), 1);
  EXPECT_EQ(find(question), Ids{kNothing});
  ASSERT_NE(append_named(other, make_list(other, "certificates"), "again"), nullptr);
  ASSERT_TRUE(commits(other));
  ASSERT_EQ(cfg_refresh(store), 1);
  EXPECT_EQ(find(question), Ids{});
  EXPECT_EQ(find(is("name", "again")), Ids{"17"});
}

TEST_P(SearchTest, AFreshHandleAnswersFromTheNewestRevision) {
  Condition question = is("name", "cert 1");
  EXPECT_EQ(find(question), (Ids{"1", "4"}));
  cfg *other = another_handle();
  ASSERT_EQ(cfg_map_set_string(other, cfg_get_by_id(other, "certificates-1"), "name", "x"), 1);
  ASSERT_TRUE(commits(other));
  EXPECT_EQ(find(question), (Ids{"1", "4"}));  // still the old snapshot
  EXPECT_EQ(find(other, "certificates", question), Ids{"certificates-4"});
  cfg *third = another_handle();
  EXPECT_EQ(find(third, "certificates", question), Ids{"certificates-4"});
  EXPECT_EQ(find(question), (Ids{"1", "4"}));
}

TEST_P(SearchTest, PendingEntriesAreNotFound) {
  for (int i = 0; i < 3; ++i) find(is("name", "cert 1"));
  ASSERT_NE(append_named(store, cfg_get_by_path(store, "certificates"), "cert 1"), nullptr);
  EXPECT_EQ(find(is("name", "cert 1")), (Ids{"1", "4"}));
  cfg_abandon(store);
  EXPECT_EQ(find(is("name", "cert 1")), (Ids{"1", "4"}));
}

TEST_P(SearchTest, EntriesThatThisEditDeletedAreNotFound) {
  for (int i = 0; i < 3; ++i) find(is("name", "cert 1"));
  ASSERT_EQ(cfg_delete_element(store, cfg_get_by_id(store, "certificates-1")), 1);
  EXPECT_EQ(find(is("name", "cert 1")), Ids{"4"});
  EXPECT_EQ(find(is_not("name", "cert 1")), (Ids{"2", "3", "5", "6"}));
  cfg_abandon(store);
  EXPECT_EQ(find(is("name", "cert 1")), (Ids{"1", "4"}));
}

TEST_P(SearchTest, ValuesThatThisEditSetAreUsed) {
  for (int i = 0; i < 3; ++i) find(is("name", "cert 1"));
  ASSERT_EQ(cfg_map_set_string(store, cfg_get_by_id(store, "certificates-2"), "name", "cert 1"), 1);
  EXPECT_EQ(find(is("name", "cert 1")), (Ids{"1", "2", "4"}));
  cfg_abandon(store);
  EXPECT_EQ(find(is("name", "cert 1")), (Ids{"1", "4"}));
}

TEST_P(SearchTest, SeveralResultsLiveSideBySide) {
  Condition first = is("name", "cert 1");
  Condition second = is("name", "cert 2");
  cfg_elem *one = cfg_search(store, "certificates", first.get());
  cfg_elem *two = cfg_search(store, "certificates", second.get());
  EXPECT_EQ(ids_in(one), (Ids{"certificates-1", "certificates-4"}));
  EXPECT_EQ(ids_in(two), (Ids{"certificates-2", "certificates-5"}));
  EXPECT_EQ(pending_size_of(one), 0);
  EXPECT_EQ(string_at(store, cfg_simple_get_listelem(store, one, 1), "name"), "cert 1");
  EXPECT_EQ(cfg_get_listelem(one, 2), nullptr);
  EXPECT_EQ(cfg_get_listelem(one, -1), nullptr);
  EXPECT_EQ(cfg_simple_get_listelem(store, one, 2), nullptr);
}

TEST_P(SearchTest, AResultIsNoPlaceForChanges) {
  Condition condition = is("name", "cert 1");
  std::string before = dump(store);
  cfg_elem *found = cfg_search(store, "certificates", condition.get());
  EXPECT_EQ(cfg_append_future_listelem(store, found, cfg_new_map(store)), 0);
  EXPECT_EQ(cfg_add_listelem(store, found, cfg_new_map(store)), 0);
  EXPECT_EQ(cfg_set_list(store, found), nullptr);
  EXPECT_EQ(cfg_delete_element(store, found), 0);
  EXPECT_EQ(cfg_add_mapelem(store, cfg_root(store), "found", found), 0);
  EXPECT_EQ(dump(store), before);
  EXPECT_EQ(cfg_has_changes(store), 0);
}

TEST_P(SearchTest, EntriesThatAreNoMapsHaveNoKeys) {
  cfg_elem *list = make_list(store, "words");
  ASSERT_NE(append_string(store, list, "x"), nullptr);
  ASSERT_NE(append_named(store, list, "x"), nullptr);
  ASSERT_EQ(cfg_append_future_listelem(store, list, cfg_new_list(store)), 1);
  ASSERT_TRUE(commits(store));
  EXPECT_EQ(find(store, "words", is("name", "x")), Ids{"words-2"});
  EXPECT_EQ(find(store, "words", absent("name")), (Ids{"words-1", "words-3"}));
}

TEST_P(SearchTest, AnswersAgreeWithAScanWhileThousandsOfEntriesChange) {
  cfg_elem *list = make_list(store, "many");
  for (int i = 0; i < 3000; ++i) ASSERT_NE(append_named(store, list, "g" + std::to_string(i % 50)), nullptr);
  ASSERT_TRUE(commits(store));
  unsigned state = 12345;
  auto random = [&state](unsigned below) {
    state = state * 1664525U + 1013904223U;
    return (state >> 8) % below;
  };
  for (int round = 0; round < 30; ++round) {
    list = cfg_get_by_path(store, "many");
    for (int change = 0; change < 20; ++change) {
      cfg_elem *entry = cfg_simple_get_listelem(
          store, list, static_cast<int>(random(static_cast<unsigned>(size_of(list)))));
      if (random(4) == 0) {
        ASSERT_EQ(cfg_delete_element(store, entry), 1);
      } else {
        ASSERT_EQ(cfg_map_set_string(store, entry, "name", ("g" + std::to_string(random(50))).c_str()), 1);
      }
    }
    ASSERT_NE(append_named(store, list, "g7"), nullptr);
    ASSERT_TRUE(commits(store));
    Ids expected;
    for (int i = 0; cfg_elem *entry = cfg_simple_get_listelem(store, list, i); ++i)
      if (string_at(store, entry, "name") == "g7") expected.push_back(id_of(entry));
    EXPECT_EQ(find(store, "many", is("name", "g7")), expected);
  }
}

TEST_P(SearchTest, AnElementIsJudgedAsTheSearchWouldJudgeIt) {
  const Condition cases[] = {is("name", "cert 1"),      is("ssh.port", "22"),
                             is_not("name", "cert 1"),  absent("revoke_time"),
                             refers("node", "nodes-1"), all_of(is("name", "cert 1"), is("ssh.port", "22"))};
  for (const Condition &condition : cases) {
    Ids judged;
    for (int i = 1; i <= 6; ++i) {
      const std::string id = "certificates-" + std::to_string(i);
      if (cfg_condition_holds(store, cfg_get_by_id(store, id.c_str()), condition.get()))
        judged.push_back(std::to_string(i));
    }
    EXPECT_EQ(judged, find(condition));
    EXPECT_EQ(cfg_condition_holds(store, nullptr, condition.get()), 0);
    EXPECT_EQ(cfg_condition_holds(nullptr, cfg_root(store), condition.get()), 0);
  }
  EXPECT_EQ(cfg_condition_holds(store, cfg_root(store), nullptr), 0);
}
