// Whole elements in edits that meet others: refused commits, refreshes, and kinds of maps that two handles
// bring into the store at once.
#include "twin.hpp"

namespace {

// Maps that no other part of these tests makes.
Recipe strange(const std::string &sort, int number) {
  return map_of(
      {{sort, integer(number)},
       {"of " + sort, text(sort)},
       {"inner " + sort, map_of({{sort + " below", list_of({map_of({{sort, text("x")}}), text("y")})}})},
       {"list of " + sort, list_of({map_of({{"entry of " + sort, boolean(true)}}), list_of({})})}});
}

}  // namespace

class ContentConflictTest : public TwinTest {
 protected:
  void SetUp() override {
    TwinTest::SetUp();
    other = {another_handle(), true};
    other_single = {another_handle_of(single.store), false};
  }
  // Somebody else's edit, the same in both stores; it is committed as a whole.
  void somebody_else(const Step &step) {
    for (const Filler &filler : {other, other_single}) {
      ASSERT_EQ(cfg_refresh(filler.store), 1);
      step(filler);
      ASSERT_TRUE(commits(filler.store));
    }
  }
  // Pending entries of all sorts.
  void append_some() {
    both([](const Filler &filler) {
      const std::string id = text_of(filler.append("certs", strange("certificate", 1)));
      ASSERT_NE(filler.append("nodes", strange("node", 2)), nullptr);
      ASSERT_NE(filler.append("nodes", map_of({{"name", text("refers")}, {"to", refer(id)}})), nullptr);
      ASSERT_NE(filler.append("nodes-1.ports", strange("port", 3)), nullptr);
      ASSERT_EQ(filler.put(filler.at("map"), "put", strange("put", 4)), 1);
    });
  }
  Filler other, other_single;
};
STORE_TEST_ON_BOTH_ENGINES(ContentConflictTest);

TEST_P(ContentConflictTest, ARefusedCommitLeavesEverythingForTheNext) {
  for (const bool look : {false, true}) {
    append_some();
    both([](const Filler &filler) {
      ASSERT_EQ(cfg_map_set_int(filler.store, filler.at("map"), "kept", 2), 1);
    });
    somebody_else([&](const Filler &filler) {
      ASSERT_EQ(cfg_map_set_int(filler.store, filler.at("map"), "kept", look ? 9 : 3), 1);
      ASSERT_NE(filler.append("nodes", strange("other", 1)), nullptr);
    });
    both([](const Filler &filler) { ASSERT_TRUE(refuses_commit(filler.store, CFG_E_CONFLICT)); });
    if (look) expect_alike();
    // Having seen theirs, one may take it over or write something else.
    both([&](const Filler &filler) {
      ASSERT_EQ(cfg_refresh(filler.store), 1);
      ASSERT_TRUE(refuses_commit(filler.store, CFG_E_CONFLICT));
      ASSERT_EQ(cfg_map_set_int(filler.store, filler.at("map"), "kept", look ? 5 : 3), 1);
    });
    commit_both();
    if (HasFailure()) return;
  }
}

TEST_P(ContentConflictTest, ARefusedEntryReadsAsItWasGiven) {
  cfg_elem *cert = whole.append("certs", strange("certificate", 1));
  const std::string id = text_of(cert);
  cfg_elem *entry =
      whole.append("nodes", map_of({{"name", text("n")}, {"to", refer(id)}, {"list", list_of({refer(id)})}}));
  cfg_elem *untouched = whole.append("nodes", map_of({{"name", text("m")}, {"to", refer(id)}}));
  ASSERT_EQ(cfg_map_set_int(store, whole.at("map"), "kept", 2), 1);
  somebody_else([](const Filler &filler) {
    ASSERT_EQ(cfg_map_set_int(filler.store, filler.at("map"), "kept", 3), 1);
    ASSERT_NE(filler.append("certs", named("before mine")), nullptr);
  });
  ASSERT_TRUE(refuses_commit(store, CFG_E_CONFLICT));
  EXPECT_EQ(reference_at(store, entry, "to"), id);
  EXPECT_EQ(dump(store, cfg_get_child_by_path(store, entry, "list")), "[{}:r'" + id + "',]");
  EXPECT_EQ(dump(store, cert).substr(0, 10), "{'certific");
  EXPECT_EQ(pending_size_of(whole.at("nodes")), 2);
  EXPECT_EQ(text_of(untouched), id_of(untouched));
  ASSERT_EQ(cfg_refresh(store), 1);
  ASSERT_EQ(cfg_map_set_int(store, whole.at("map"), "kept", 3), 1);
  ASSERT_TRUE(commits(store));
  EXPECT_EQ(reference_at(store, entry, "to"), "certs-2");
  EXPECT_EQ(reference_at(store, untouched, "to"), "certs-2");
  EXPECT_EQ(dump(store, whole.at("nodes-3.list")), "[nodes-3_list-1:r'certs-2',]");
}

// The commit fails when everything has been prepared already; the numbers that were foreseen go to others.
TEST_P(ContentConflictTest, ACommitThatFailsLateMayBeMadeAgainAfterOthersHaveCommitted) {
  append_some();
  both([](const Filler &filler) {
    ASSERT_EQ(filler.put(filler.at("map"), "clash",
                         map_of({{"a.b", list_of({text("x")})}, {"a_b", list_of({text("y")})}})),
              1);
    ASSERT_TRUE(refuses_commit(filler.store, CFG_E_ARGUMENT));
  });
  somebody_else([](const Filler &filler) {
    ASSERT_NE(filler.append("certs", strange("other", 1)), nullptr);
    ASSERT_NE(filler.append("nodes", strange("another", 2)), nullptr);
  });
  both([](const Filler &filler) {
    ASSERT_TRUE(refuses_commit(filler.store, CFG_E_ARGUMENT));
    ASSERT_NE(filler.append("nodes", strange("node", 5)), nullptr);
    ASSERT_NE(filler.append("nodes", strange("late", 6)), nullptr);
    ASSERT_EQ(cfg_map_delete_key(filler.store, filler.at("map"), "clash"), 1);
  });
  commit_both();
}

TEST_P(ContentConflictTest, ARefusedEntryOfAListIsMendedAndCommitted) {
  // The clash is in an entry behind sealed ones, which the refused commit may have planned already.
  both([](const Filler &filler) {
    const std::string id = text_of(filler.append("nodes", strange("first", 1)));
    ASSERT_NE(filler.append("certs", map_of({{"to", refer(id)}, {"new key", integer(1)}})), nullptr);
    ASSERT_NE(filler.append("certs", map_of({{"a.b", list_of({text("x")})}, {"a_b", list_of({text("y")})}})),
              nullptr);
    ASSERT_TRUE(refuses_commit(filler.store, CFG_E_ARGUMENT));
  });
  somebody_else(
      [](const Filler &filler) { ASSERT_NE(filler.append("nodes", strange("theirs", 1)), nullptr); });
  both([](const Filler &filler) {
    ASSERT_TRUE(refuses_commit(filler.store, CFG_E_ARGUMENT));
    ASSERT_EQ(cfg_delete_element(filler.store, cfg_get_future_listelem(filler.at("certs"), 1)), 1);
  });
  commit_both();
  EXPECT_EQ(reference_at(store, whole.at("certs-1"), "to"), "nodes-4");
}

TEST_P(ContentConflictTest, TwoHandlesBringNewKindsOfMaps) {
  for (int round = 0; round < 4; ++round) {
    SCOPED_TRACE(round);
    const std::string tag = std::to_string(round);
    // Written by both before either commits; the two bring some of the same kinds, in another order.
    both([&](const Filler &filler) {
      ASSERT_NE(filler.append("nodes", strange("mine " + tag, 1)), nullptr);
      ASSERT_NE(filler.append("nodes", strange("shared " + tag, 1)), nullptr);
      ASSERT_NE(filler.append("certs", strange("mine " + tag, 2)), nullptr);
    });
    for (const Filler &filler : {other, other_single}) {
      ASSERT_NE(filler.append("nodes", strange("shared " + tag, 3)), nullptr);
      ASSERT_NE(filler.append("nodes", strange("theirs " + tag, 4)), nullptr);
    }
    if (round % 2) {
      for (const Filler &filler : {other, other_single}) ASSERT_TRUE(commits(filler.store));
      commit_both();
    } else {
      both([](const Filler &filler) { ASSERT_TRUE(commits(filler.store)); });
      for (const Filler &filler : {other, other_single}) ASSERT_TRUE(commits(filler.store));
      both([](const Filler &filler) { ASSERT_EQ(cfg_refresh(filler.store), 1); });
      ASSERT_EQ(cfg_verify(store, nullptr, nullptr), 1);
      expect_alike();
    }
    check_tree(store);
    if (HasFailure()) return;
  }
  reopen();
  EXPECT_EQ(dump(store, cfg_get_by_path(store, "nodes")), dump(store, cfg_get_by_path(store, "nodes")));
  check_tree(store);
}

TEST_P(ContentConflictTest, ThreeHandlesCommitInARow) {
  std::vector<cfg *> handles = {store, other.store, another_handle(), another_handle()};
  std::vector<cfg *> singles = {single.store, other_single.store, another_handle_of(single.store),
                                another_handle_of(single.store)};
  for (int round = 0; round < 3; ++round) {
    for (std::size_t i = 0; i < handles.size(); ++i) {
      for (const Filler &filler : {Filler{handles[i], true}, Filler{singles[i], false}}) {
        const std::string sort = std::to_string(round) + " of " + std::to_string(i);
        const std::string id = text_of(filler.append("certs", strange(sort, 1)));
        ASSERT_NE(filler.append("nodes", map_of({{sort, refer(id)}, {"round", integer(round)}})), nullptr);
        ASSERT_NE(filler.append("nodes", strange("all " + std::to_string(round), 2)), nullptr);
      }
    }
    for (std::size_t i = handles.size(); i-- > 0;) {
      ASSERT_TRUE(commits(handles[i]));
      ASSERT_TRUE(commits(singles[i]));
    }
    expect_alike();
    ASSERT_EQ(cfg_verify(handles[0], nullptr, nullptr), 1);
    if (HasFailure()) return;
  }
  cfg *fresh = another_handle();
  EXPECT_TRUE(same_text(dump(fresh), dump(another_handle_of(single.store))));
  check_tree(fresh);
}

TEST_P(ContentConflictTest, PendingEntriesOutliveARefresh) {
  for (const bool look : {false, true}) {
    append_some();
    for (int round = 0; round < 3; ++round) {
      somebody_else([&](const Filler &filler) {
        const std::string sort = std::to_string(round) + (look ? " looked" : " blind");
        ASSERT_NE(filler.append("nodes", strange(sort, round)), nullptr);
        ASSERT_NE(filler.append("nodes-1.ports", strange(sort, round)), nullptr);
        ASSERT_EQ(cfg_map_set_int(filler.store, filler.at("map"), sort.c_str(), round), 1);
        ASSERT_EQ(cfg_map_set_string(filler.store, filler.at("nodes-2"), "name", sort.c_str()), 1);
      });
      both([&](const Filler &filler) {
        cfg_elem *pending = cfg_get_future_listelem(filler.at("nodes"), 0);
        const std::string id = text_of(pending);
        ASSERT_EQ(cfg_refresh(filler.store), 1);
        EXPECT_EQ(filler.at(id.c_str()), pending);
        EXPECT_EQ(pending_size_of(filler.at("nodes")), 2 + round);
        ASSERT_NE(filler.append("nodes", strange("after refresh " + std::to_string(round), 7)), nullptr);
      });
      if (look) expect_alike();
    }
    commit_both();
    if (HasFailure()) return;
  }
}

TEST_P(ContentConflictTest, PendingEntriesOfAListThatSomebodyRemovesConflict) {
  both([](const Filler &filler) {
    ASSERT_NE(filler.append("certs", strange("certificate", 1)), nullptr);
    ASSERT_NE(filler.append("nodes", strange("node", 1)), nullptr);
  });
  somebody_else(
      [](const Filler &filler) { ASSERT_EQ(cfg_delete_element(filler.store, filler.at("certs")), 1); });
  both([](const Filler &filler) { ASSERT_TRUE(refuses_commit(filler.store, CFG_E_CONFLICT)); });
  both([](const Filler &filler) {
    ASSERT_EQ(cfg_refresh(filler.store), 1);
    EXPECT_EQ(cfg_commit(filler.store, nullptr), 0);
    EXPECT_EQ(cfg_error_code(filler.store), CFG_E_CONFLICT);
    cfg_abandon(filler.store);
    ASSERT_NE(filler.append("nodes", strange("node", 2)), nullptr);
  });
  commit_both();
}

TEST_P(ContentConflictTest, ATokenThatIsInTheLogDropsTheEdit) {
  const cfg_commit_note note{"me", "once", "a token"};
  both([&](const Filler &filler) {
    ASSERT_NE(filler.append("nodes", strange("node", 1)), nullptr);
    ASSERT_TRUE(commits(filler.store, &note));
    cfg_elem *again = filler.append("nodes", strange("node", 2));
    ASSERT_TRUE(commits(filler.store, &note));
    EXPECT_EQ(cfg_elem_kind(again), CFG_NONE);
    EXPECT_EQ(size_of(filler.at("nodes")), 3);
    ASSERT_NE(filler.append("nodes", strange("node", 3)), nullptr);
  });
  commit_both();
}
