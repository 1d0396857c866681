// Two handles edit at once: what merges, what conflicts, and what is left after a conflict.
#include "fixture.hpp"
#include "tree.hpp"

class ConflictTest : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    cfg_elem *system = make_map(store, "system");
    ASSERT_EQ(cfg_map_set_int(store, system, "a", 1), 1);
    ASSERT_EQ(cfg_map_set_int(store, system, "b", 1), 1);
    cfg_elem *list = make_list(store, "nodes");
    for (const char *name : {"n1", "n2", "n3"}) {
      cfg_elem *entry = append_named(store, list, name);
      ASSERT_EQ(cfg_map_set_int(store, put_map(store, entry, "ssh"), "port", 22), 1);
      ASSERT_NE(append_named(store, put_list(store, entry, "ports"), "p1"), nullptr);
    }
    ASSERT_TRUE(commits(store));
    reopen();
    mine = store;
    theirs = another_handle();
    // Both read the same revision before either edits.
    ASSERT_EQ(cfg_revision(mine), cfg_revision(theirs));
  }
  static cfg_elem *at(cfg *handle, const char *id) { return cfg_get_by_id(handle, id); }

  // Their commit goes first, mine must merge; then both read the same tree, which is returned.
  std::string expect_merge() {
    EXPECT_TRUE(commits(theirs));
    EXPECT_TRUE(commits(mine));
    EXPECT_EQ(cfg_refresh(theirs), 1);
    EXPECT_EQ(dump(theirs), dump(mine));
    check_tree(mine);
    return dump(mine);
  }

  // Their commit goes first, mine must be refused naming `id`, with the edit kept and nothing changed.
  // Abandoning and refreshing then gives their tree.
  void expect_conflict(const std::string &id) {
    std::uint64_t read_at = cfg_revision(mine);
    cfg_commit_note note{"their author", "to be first", nullptr};
    ASSERT_TRUE(commits(theirs, &note));
    std::string after = dump(theirs);
    std::string edit = dump(mine);
    ASSERT_TRUE(refuses_commit(mine, CFG_E_CONFLICT));
    std::string error = cfg_error_text(mine);
    EXPECT_NE(error.find(id), std::string::npos) << error;
    EXPECT_NE(error.find("their author"), std::string::npos) << error;
    EXPECT_NE(error.find(std::to_string(read_at)), std::string::npos) << error;
    EXPECT_NE(error.find(std::to_string(cfg_revision(theirs))), std::string::npos) << error;
    EXPECT_EQ(dump(mine), edit);
    EXPECT_EQ(cfg_has_changes(mine), 1);
    EXPECT_EQ(cfg_revision(mine), read_at);
    ASSERT_TRUE(refuses_commit(mine, CFG_E_CONFLICT));
    cfg *third = another_handle();
    EXPECT_EQ(dump(third), after);
    EXPECT_EQ(cfg_revision(third), cfg_revision(theirs));
    cfg_abandon(mine);
    ASSERT_EQ(cfg_refresh(mine), 1);
    EXPECT_EQ(dump(mine), after);
    check_tree(mine);
  }

  cfg *mine = nullptr, *theirs = nullptr;
};
STORE_TEST_ON_BOTH_ENGINES(ConflictTest);

TEST_P(ConflictTest, TheSameKeyConflicts) {
  ASSERT_EQ(cfg_map_set_int(theirs, at(theirs, "system"), "a", 2), 1);
  ASSERT_EQ(cfg_map_set_int(mine, at(mine, "system"), "a", 3), 1);
  expect_conflict("system.a");
}

TEST_P(ConflictTest, DifferentKeysOfOneMapMerge) {
  ASSERT_EQ(cfg_map_set_int(theirs, at(theirs, "system"), "a", 2), 1);
  ASSERT_EQ(cfg_map_set_int(theirs, at(theirs, "system"), "c", 4), 1);
  ASSERT_EQ(cfg_map_set_int(mine, at(mine, "system"), "b", 3), 1);
  ASSERT_EQ(cfg_map_set_int(mine, at(mine, "system"), "d", 5), 1);
  expect_merge();
  EXPECT_EQ(dump(mine, at(mine, "system")), "{'a':i2,'b':i3,'c':i4,'d':i5,}");
}

TEST_P(ConflictTest, DifferentKeysOfOneEntryMerge) {
  ASSERT_EQ(cfg_map_set_string(theirs, at(theirs, "nodes-2"), "name", "theirs"), 1);
  ASSERT_EQ(cfg_map_set_int(mine, at(mine, "nodes-2.ssh"), "port", 23), 1);
  ASSERT_EQ(cfg_map_set_int(mine, at(mine, "nodes-2"), "mine", 1), 1);
  expect_merge();
  EXPECT_EQ(string_at(mine, at(mine, "nodes-2"), "name"), "theirs");
  EXPECT_EQ(int_at(mine, at(mine, "nodes-2.ssh"), "port"), 23);
  EXPECT_EQ(int_at(theirs, at(theirs, "nodes-2"), "mine"), 1);
}

TEST_P(ConflictTest, TheSameKeyOfOneEntryConflicts) {
  ASSERT_EQ(cfg_map_set_string(theirs, at(theirs, "nodes-2"), "name", "theirs"), 1);
  ASSERT_EQ(cfg_map_set_string(mine, at(mine, "nodes-2"), "name", "mine"), 1);
  expect_conflict("nodes-2.name");
}

TEST_P(ConflictTest, DifferentEntriesMerge) {
  ASSERT_EQ(cfg_map_set_string(theirs, at(theirs, "nodes-1"), "name", "theirs"), 1);
  ASSERT_EQ(cfg_delete_element(theirs, at(theirs, "nodes-3")), 1);
  ASSERT_EQ(cfg_map_set_string(mine, at(mine, "nodes-2"), "name", "mine"), 1);
  expect_merge();
  EXPECT_EQ(names_in(mine, at(mine, "nodes")), (std::vector<std::string>{"theirs", "mine"}));
}

TEST_P(ConflictTest, AppendsToOneListNeverConflict) {
  for (int i = 0; i < 10; ++i) {
    ASSERT_NE(append_named(theirs, at(theirs, "nodes"), "t" + std::to_string(i)), nullptr);
    ASSERT_NE(append_named(mine, at(mine, "nodes"), "m" + std::to_string(i)), nullptr);
  }
  expect_merge();
  std::vector<std::string> names = names_in(mine, at(mine, "nodes"));
  ASSERT_EQ(names.size(), 23U);
  for (std::size_t i = 0; i < 10; ++i) {
    EXPECT_EQ(names[3 + i], "t" + std::to_string(i));
    EXPECT_EQ(names[13 + i], "m" + std::to_string(i));
  }
}

TEST_P(ConflictTest, AppendsToAnInnerListNeverConflict) {
  cfg_elem *entry = append_named(mine, at(mine, "nodes-1.ports"), "mine");
  ASSERT_NE(append_named(theirs, at(theirs, "nodes-1.ports"), "theirs"), nullptr);
  ASSERT_EQ(cfg_map_set_reference(mine, at(mine, "system"), "port", text_of(entry)), 1);
  expect_merge();
  EXPECT_EQ(names_in(mine, at(mine, "nodes-1.ports")), (std::vector<std::string>{"p1", "theirs", "mine"}));
  std::string reference = reference_at(mine, at(mine, "system"), "port");
  EXPECT_EQ(string_at(mine, at(mine, reference.c_str()), "name"), "mine");
  EXPECT_EQ(id_of(entry), reference);
}

TEST_P(ConflictTest, AddedEntriesMergeLikePendingOnes) {
  ASSERT_EQ(cfg_add_listelem(theirs, at(theirs, "nodes"), cfg_new_string(theirs, "t")), 1);
  ASSERT_EQ(cfg_add_listelem(mine, at(mine, "nodes"), cfg_new_string(mine, "m")), 1);
  ASSERT_NE(append_string(mine, at(mine, "nodes"), "m2"), nullptr);
  expect_merge();
  EXPECT_EQ(size_of(at(mine, "nodes")), 6);
}

TEST_P(ConflictTest, AppendingMergesWithDeletingAnEntry) {
  ASSERT_EQ(cfg_delete_element(theirs, at(theirs, "nodes-3")), 1);
  ASSERT_NE(append_named(mine, at(mine, "nodes"), "new"), nullptr);
  expect_merge();
  EXPECT_EQ(names_in(mine, at(mine, "nodes")), (std::vector<std::string>{"n1", "n2", "new"}));
  EXPECT_EQ(ids_in(at(mine, "nodes")).back(), "nodes-4");
}

TEST_P(ConflictTest, DeletingDifferentEntriesMerges) {
  ASSERT_EQ(cfg_delete_element(theirs, at(theirs, "nodes-1")), 1);
  ASSERT_EQ(cfg_delete_element(mine, at(mine, "nodes-3")), 1);
  expect_merge();
  EXPECT_EQ(ids_in(at(mine, "nodes")), std::vector<std::string>{"nodes-2"});
}

TEST_P(ConflictTest, SettingAKeyOfADeletedEntryConflicts) {
  ASSERT_EQ(cfg_delete_element(theirs, at(theirs, "nodes-2")), 1);
  ASSERT_EQ(cfg_map_set_string(mine, at(mine, "nodes-2"), "name", "mine"), 1);
  expect_conflict("nodes-2");
}

TEST_P(ConflictTest, AddingAKeyBelowADeletedEntryConflicts) {
  ASSERT_EQ(cfg_delete_element(theirs, at(theirs, "nodes-2")), 1);
  ASSERT_EQ(cfg_map_set_int(mine, at(mine, "nodes-2.ssh"), "new", 1), 1);
  expect_conflict("nodes-2");
}

TEST_P(ConflictTest, DeletingAnEntryWhoseKeyWasSetConflicts) {
  ASSERT_EQ(cfg_map_set_string(theirs, at(theirs, "nodes-2"), "name", "theirs"), 1);
  ASSERT_EQ(cfg_delete_element(mine, at(mine, "nodes-2")), 1);
  expect_conflict("nodes-2");
}

TEST_P(ConflictTest, DeletingTheSameEntryTwiceConflicts) {
  ASSERT_EQ(cfg_delete_element(theirs, at(theirs, "nodes-2")), 1);
  ASSERT_EQ(cfg_delete_element(mine, at(mine, "nodes-2")), 1);
  expect_conflict("nodes-2");
}

TEST_P(ConflictTest, AppendingBelowADeletedEntryConflicts) {
  ASSERT_EQ(cfg_delete_element(theirs, at(theirs, "nodes-2")), 1);
  ASSERT_NE(append_named(mine, at(mine, "nodes-2.ports"), "p2"), nullptr);
  expect_conflict("nodes-2");
}

TEST_P(ConflictTest, DeletingAnEntryThatWasAppendedToBelowConflicts) {
  ASSERT_NE(append_named(theirs, at(theirs, "nodes-2.ports"), "p2"), nullptr);
  ASSERT_EQ(cfg_delete_element(mine, at(mine, "nodes-2")), 1);
  expect_conflict("nodes-2");
}

TEST_P(ConflictTest, DeletingAnEntryWhoseInnerEntryChangedConflicts) {
  ASSERT_EQ(cfg_map_set_string(theirs, at(theirs, "nodes-2_ports-1"), "name", "changed"), 1);
  ASSERT_EQ(cfg_delete_element(mine, at(mine, "nodes-2")), 1);
  expect_conflict("nodes-2");
}

TEST_P(ConflictTest, AppendingToADeletedListConflicts) {
  ASSERT_EQ(cfg_map_delete_key(theirs, cfg_root(theirs), "nodes"), 1);
  ASSERT_NE(append_named(mine, at(mine, "nodes"), "new"), nullptr);
  expect_conflict("nodes");
}

TEST_P(ConflictTest, DeletingAListThatWasAppendedToConflicts) {
  ASSERT_NE(append_named(theirs, at(theirs, "nodes"), "new"), nullptr);
  ASSERT_EQ(cfg_map_delete_key(mine, cfg_root(mine), "nodes"), 1);
  expect_conflict("nodes");
}

// Appending never conflicts: an emptied list keeps what the one who emptied it could not have seen.
TEST_P(ConflictTest, EmptyingAListKeepsWhatOthersAppended) {
  ASSERT_NE(append_named(theirs, at(theirs, "nodes"), "new"), nullptr);
  ASSERT_NE(cfg_set_list(mine, at(mine, "nodes")), nullptr);
  ASSERT_NE(append_named(mine, at(mine, "nodes"), "refilled"), nullptr);
  expect_merge();
  EXPECT_EQ(names_in(mine, at(mine, "nodes")), (std::vector<std::string>{"new", "refilled"}));
}

TEST_P(ConflictTest, AppendingToAListThatWasEmptiedMerges) {
  ASSERT_NE(cfg_set_list(theirs, at(theirs, "nodes")), nullptr);
  ASSERT_NE(append_named(mine, at(mine, "nodes"), "new"), nullptr);
  expect_merge();
  EXPECT_EQ(names_in(mine, at(mine, "nodes")), std::vector<std::string>{"new"});
}

TEST_P(ConflictTest, EmptyingAListWithAChangedEntryConflicts) {
  ASSERT_EQ(cfg_map_set_string(theirs, at(theirs, "nodes-2"), "name", "theirs"), 1);
  ASSERT_NE(cfg_set_list(mine, at(mine, "nodes")), nullptr);
  expect_conflict("nodes-2");
}

TEST_P(ConflictTest, ReplacingAMapWhoseKeyChangedConflicts) {
  ASSERT_EQ(cfg_map_set_int(theirs, at(theirs, "nodes-2.ssh"), "port", 23), 1);
  ASSERT_NE(put_map(mine, at(mine, "nodes-2"), "ssh"), nullptr);
  expect_conflict("nodes-2.ssh");
}

TEST_P(ConflictTest, ChangingBelowAReplacedMapConflicts) {
  ASSERT_NE(put_map(theirs, at(theirs, "nodes-2"), "ssh"), nullptr);
  ASSERT_EQ(cfg_map_set_int(mine, at(mine, "nodes-2.ssh"), "port", 23), 1);
  expect_conflict("nodes-2.ssh");
}

TEST_P(ConflictTest, AddingBelowAReplacedMapConflicts) {
  ASSERT_EQ(cfg_map_set_int(theirs, put_map(theirs, at(theirs, "nodes-2"), "ssh"), "port", 99), 1);
  ASSERT_EQ(cfg_map_set_int(mine, at(mine, "nodes-2.ssh"), "other", 23), 1);
  expect_conflict("nodes-2.ssh");
}

TEST_P(ConflictTest, ReplacingARecordLevelMapWhoseKeyChangedConflicts) {
  ASSERT_EQ(cfg_map_set_int(theirs, at(theirs, "system"), "a", 2), 1);
  ASSERT_NE(put_map(mine, cfg_root(mine), "system"), nullptr);
  expect_conflict("system");
}

TEST_P(ConflictTest, DeletingAKeyThatChangedConflicts) {
  ASSERT_EQ(cfg_map_set_int(theirs, at(theirs, "system"), "a", 2), 1);
  ASSERT_EQ(cfg_map_delete_key(mine, at(mine, "system"), "a"), 1);
  expect_conflict("system.a");
}

TEST_P(ConflictTest, SettingAKeyThatWasDeletedConflicts) {
  ASSERT_EQ(cfg_map_delete_key(theirs, at(theirs, "system"), "a"), 1);
  ASSERT_EQ(cfg_map_set_int(mine, at(mine, "system"), "a", 2), 1);
  expect_conflict("system.a");
}

TEST_P(ConflictTest, CreatingTheSameKeyConflicts) {
  ASSERT_EQ(cfg_map_set_int(theirs, at(theirs, "system"), "new", 2), 1);
  ASSERT_EQ(cfg_map_set_int(mine, at(mine, "system"), "new", 3), 1);
  expect_conflict("system.new");
}

TEST_P(ConflictTest, CreatingTheSameMapConflicts) {
  ASSERT_EQ(cfg_map_set_int(theirs, put_map(theirs, cfg_root(theirs), "new"), "x", 1), 1);
  ASSERT_EQ(cfg_map_set_int(mine, put_map(mine, cfg_root(mine), "new"), "y", 1), 1);
  expect_conflict("new");
}

TEST_P(ConflictTest, CreatingTheSameListConflicts) {
  ASSERT_NE(append_named(theirs, put_list(theirs, cfg_root(theirs), "new"), "t"), nullptr);
  ASSERT_NE(append_named(mine, put_list(mine, cfg_root(mine), "new"), "m"), nullptr);
  expect_conflict("new");
}

TEST_P(ConflictTest, TheWinnerMayComeSeveralCommitsBefore) {
  ASSERT_EQ(cfg_map_set_int(mine, at(mine, "system"), "a", 3), 1);
  ASSERT_EQ(cfg_map_set_int(theirs, at(theirs, "system"), "a", 2), 1);
  cfg_commit_note note{"the culprit", nullptr, nullptr};
  ASSERT_TRUE(commits(theirs, &note));
  std::uint64_t revision = cfg_revision(theirs);
  for (int i = 0; i < 20; ++i) {
    cfg_commit_note innocent{"someone else", nullptr, nullptr};
    ASSERT_EQ(cfg_map_set_int(theirs, at(theirs, "system"), "b", i), 1);
    ASSERT_TRUE(commits(theirs, &innocent));
  }
  ASSERT_TRUE(refuses_commit(mine, CFG_E_CONFLICT));
  std::string error = cfg_error_text(mine);
  EXPECT_NE(error.find("the culprit"), std::string::npos) << error;
  EXPECT_NE(error.find(std::to_string(revision)), std::string::npos) << error;
  EXPECT_EQ(error.find("someone else"), std::string::npos) << error;
  EXPECT_EQ(cfg_code_advice(cfg_error_code(mine)), CFG_ADVICE_RETRY);
}

TEST_P(ConflictTest, AbandonRefreshAndRedoCommits) {
  ASSERT_EQ(cfg_map_set_int(theirs, at(theirs, "system"), "a", 2), 1);
  ASSERT_EQ(cfg_map_set_int(mine, at(mine, "system"), "a", 3), 1);
  expect_conflict("system.a");
  ASSERT_EQ(cfg_map_set_int(mine, at(mine, "system"), "a", 3), 1);
  ASSERT_TRUE(commits(mine));
  ASSERT_EQ(cfg_refresh(theirs), 1);
  EXPECT_EQ(int_at(theirs, at(theirs, "system"), "a"), 3);
}

TEST_P(ConflictTest, RefreshAloneDoesNotHideAConflict) {
  ASSERT_EQ(cfg_map_set_int(mine, at(mine, "system"), "a", 3), 1);
  ASSERT_EQ(cfg_map_set_int(theirs, at(theirs, "system"), "a", 2), 1);
  ASSERT_TRUE(commits(theirs));
  ASSERT_EQ(cfg_refresh(mine), 1);
  EXPECT_EQ(int_at(mine, at(mine, "system"), "a"), 3);
  EXPECT_TRUE(refuses_commit(mine, CFG_E_CONFLICT));
}

TEST_P(ConflictTest, RefreshAndSettingAgainCommits) {
  ASSERT_EQ(cfg_map_set_int(mine, at(mine, "system"), "a", 3), 1);
  ASSERT_EQ(cfg_map_set_int(mine, at(mine, "nodes-1"), "kept", 7), 1);
  ASSERT_EQ(cfg_map_set_int(theirs, at(theirs, "system"), "a", 2), 1);
  ASSERT_TRUE(commits(theirs));
  EXPECT_TRUE(refuses_commit(mine, CFG_E_CONFLICT));
  ASSERT_EQ(cfg_refresh(mine), 1);
  ASSERT_EQ(cfg_map_set_int(mine, at(mine, "system"), "a", 4), 1);
  ASSERT_TRUE(commits(mine));
  ASSERT_EQ(cfg_refresh(theirs), 1);
  EXPECT_EQ(int_at(theirs, at(theirs, "system"), "a"), 4);
  EXPECT_EQ(int_at(theirs, at(theirs, "nodes-1"), "kept"), 7);
}

TEST_P(ConflictTest, SettingWhatTheyDidNotChangeFromAnOldSnapshotMerges) {
  for (int i = 0; i < 10; ++i) {
    ASSERT_EQ(cfg_map_set_int(theirs, at(theirs, "nodes-1.ssh"), "port", i), 1);
    ASSERT_NE(append_named(theirs, at(theirs, "nodes-1.ports"), "x"), nullptr);
    ASSERT_TRUE(commits(theirs));
  }
  ASSERT_EQ(cfg_map_set_string(mine, at(mine, "nodes-1"), "name", "mine"), 1);
  expect_merge();
  EXPECT_EQ(int_at(mine, at(mine, "nodes-1.ssh"), "port"), 9);
}

TEST_P(ConflictTest, AnEditWithoutWritesReadsButNeverConflicts) {
  ASSERT_EQ(cfg_map_set_int(theirs, at(theirs, "system"), "a", 2), 1);
  ASSERT_TRUE(commits(theirs));
  ASSERT_EQ(cfg_map_set_int(mine, at(mine, "system"), "a", 1), 1);  // as it was read: no change
  ASSERT_TRUE(commits(mine));
  ASSERT_EQ(cfg_refresh(mine), 1);
  EXPECT_EQ(int_at(mine, at(mine, "system"), "a"), 2);
}

// A list that grows far enough is stored in another way; edits prepared before must still merge or conflict.
class GrownListConflictTest : public ConflictTest {
 protected:
  void grow() {
    for (int i = 0; i < 400; ++i)
      ASSERT_NE(append_named(theirs, at(theirs, "nodes-1.ports"), std::string(500, 'g')), nullptr);
  }
};
STORE_TEST_ON_BOTH_ENGINES(GrownListConflictTest);

TEST_P(GrownListConflictTest, AnAppendMerges) {
  ASSERT_NE(append_named(mine, at(mine, "nodes-1.ports"), "mine"), nullptr);
  grow();
  expect_merge();
  EXPECT_EQ(size_of(at(mine, "nodes-1.ports")), 402);
  EXPECT_EQ(names_in(mine, at(mine, "nodes-1.ports")).back(), "mine");
}

TEST_P(GrownListConflictTest, AChangeOfAnotherEntryMerges) {
  ASSERT_EQ(cfg_map_set_string(mine, at(mine, "nodes-1_ports-1"), "name", "mine"), 1);
  grow();
  expect_merge();
  EXPECT_EQ(string_at(mine, at(mine, "nodes-1_ports-1"), "name"), "mine");
}

TEST_P(GrownListConflictTest, AChangeOfTheSameEntryConflicts) {
  ASSERT_EQ(cfg_map_set_string(mine, at(mine, "nodes-1_ports-1"), "name", "mine"), 1);
  ASSERT_EQ(cfg_map_set_string(theirs, at(theirs, "nodes-1_ports-1"), "name", "theirs"), 1);
  grow();
  expect_conflict("nodes-1_ports-1.name");
}

TEST_P(GrownListConflictTest, DeletingTheSameEntryConflicts) {
  ASSERT_EQ(cfg_delete_element(mine, at(mine, "nodes-1_ports-1")), 1);
  ASSERT_EQ(cfg_delete_element(theirs, at(theirs, "nodes-1_ports-1")), 1);
  grow();
  expect_conflict("nodes-1_ports-1");
}

TEST_P(GrownListConflictTest, DeletingAnotherEntryMerges) {
  ASSERT_EQ(cfg_delete_element(mine, at(mine, "nodes-1_ports-1")), 1);
  grow();
  expect_merge();
  EXPECT_EQ(size_of(at(mine, "nodes-1.ports")), 400);
  EXPECT_EQ(at(mine, "nodes-1_ports-1"), nullptr);
}

TEST_P(GrownListConflictTest, SettingAKeyBesideTheListMerges) {
  ASSERT_EQ(cfg_map_set_string(mine, at(mine, "nodes-1"), "name", "mine"), 1);
  grow();
  expect_merge();
  EXPECT_EQ(string_at(mine, at(mine, "nodes-1"), "name"), "mine");
}

TEST_P(GrownListConflictTest, DeletingTheEntryAboveConflicts) {
  ASSERT_EQ(cfg_delete_element(mine, at(mine, "nodes-1")), 1);
  grow();
  expect_conflict("nodes-1");
}

TEST_P(GrownListConflictTest, EmptyingItKeepsWhatOthersAppended) {
  ASSERT_NE(cfg_set_list(mine, at(mine, "nodes-1.ports")), nullptr);
  grow();
  expect_merge();
  EXPECT_EQ(size_of(at(mine, "nodes-1.ports")), 400);
  EXPECT_EQ(at(mine, "nodes-1_ports-1"), nullptr);
}

TEST_P(GrownListConflictTest, AnEditOfAGrownListMergesWithOneThatShrinksIt) {
  grow();
  ASSERT_TRUE(commits(theirs));
  ASSERT_EQ(cfg_refresh(mine), 1);
  ASSERT_EQ(cfg_map_set_string(mine, at(mine, "nodes-1_ports-1"), "name", "mine"), 1);
  ASSERT_NE(append_named(mine, at(mine, "nodes-1.ports"), "appended"), nullptr);
  for (const std::string &id : ids_in(at(theirs, "nodes-1.ports")))
    if (id != "nodes-1_ports-1") {
      ASSERT_EQ(cfg_delete_element(theirs, at(theirs, id.c_str())), 1);
    }
  expect_merge();
  EXPECT_EQ(names_in(mine, at(mine, "nodes-1.ports")), (std::vector<std::string>{"mine", "appended"}));
  EXPECT_EQ(ids_in(at(mine, "nodes-1.ports")).back(), "nodes-1_ports-402");
}

// The list was grown before either edit began.
class GrownBeforeConflictTest : public GrownListConflictTest {
 protected:
  void SetUp() override {
    ConflictTest::SetUp();
    grow();
    ASSERT_TRUE(commits(theirs));
    ASSERT_EQ(cfg_refresh(mine), 1);
    ASSERT_EQ(cfg_revision(mine), cfg_revision(theirs));
  }
};
STORE_TEST_ON_BOTH_ENGINES(GrownBeforeConflictTest);

TEST_P(GrownBeforeConflictTest, AppendsMerge) {
  ASSERT_NE(append_named(mine, at(mine, "nodes-1.ports"), "mine"), nullptr);
  ASSERT_NE(append_named(theirs, at(theirs, "nodes-1.ports"), "theirs"), nullptr);
  expect_merge();
  EXPECT_EQ(size_of(at(mine, "nodes-1.ports")), 403);
}

TEST_P(GrownBeforeConflictTest, DeletingTheEntryAboveAnAppendConflicts) {
  ASSERT_NE(append_named(theirs, at(theirs, "nodes-1.ports"), "theirs"), nullptr);
  ASSERT_EQ(cfg_delete_element(mine, at(mine, "nodes-1")), 1);
  expect_conflict("nodes-1");
}

TEST_P(GrownBeforeConflictTest, AppendingBelowADeletedEntryConflicts) {
  ASSERT_EQ(cfg_delete_element(theirs, at(theirs, "nodes-1")), 1);
  ASSERT_NE(append_named(mine, at(mine, "nodes-1.ports"), "mine"), nullptr);
  expect_conflict("nodes-1");
}

TEST_P(GrownBeforeConflictTest, ChangingAnInnerEntryOfADeletedEntryConflicts) {
  ASSERT_EQ(cfg_delete_element(theirs, at(theirs, "nodes-1")), 1);
  ASSERT_EQ(cfg_map_set_string(mine, at(mine, "nodes-1_ports-200"), "name", "mine"), 1);
  expect_conflict("nodes-1");
}

TEST_P(GrownBeforeConflictTest, DeletingAnEntryWhoseInnerEntryChangedConflicts) {
  ASSERT_EQ(cfg_map_set_string(theirs, at(theirs, "nodes-1_ports-200"), "name", "theirs"), 1);
  ASSERT_EQ(cfg_delete_element(mine, at(mine, "nodes-1")), 1);
  expect_conflict("nodes-1");
}

TEST_P(GrownBeforeConflictTest, DeletingAnEntryWhoseInnerEntryWasDeletedConflicts) {
  ASSERT_EQ(cfg_delete_element(theirs, at(theirs, "nodes-1_ports-200")), 1);
  ASSERT_EQ(cfg_delete_element(mine, at(mine, "nodes-1")), 1);
  expect_conflict("nodes-1");
}

TEST_P(GrownBeforeConflictTest, DeletingAnInnerEntryOfADeletedEntryConflicts) {
  ASSERT_EQ(cfg_delete_element(theirs, at(theirs, "nodes-1")), 1);
  ASSERT_EQ(cfg_delete_element(mine, at(mine, "nodes-1_ports-200")), 1);
  expect_conflict("nodes-1");
}

TEST_P(GrownBeforeConflictTest, DeletingTheListThatWasAppendedToConflicts) {
  ASSERT_NE(append_named(theirs, at(theirs, "nodes-1.ports"), "theirs"), nullptr);
  ASSERT_EQ(cfg_map_delete_key(mine, at(mine, "nodes-1"), "ports"), 1);
  expect_conflict("nodes-1.ports");
}

TEST_P(GrownBeforeConflictTest, AppendingToADeletedListConflicts) {
  ASSERT_EQ(cfg_map_delete_key(theirs, at(theirs, "nodes-1"), "ports"), 1);
  ASSERT_NE(append_named(mine, at(mine, "nodes-1.ports"), "mine"), nullptr);
  expect_conflict("nodes-1.ports");
}

TEST_P(GrownBeforeConflictTest, ReplacingTheMapAboveAnAppendConflicts) {
  ASSERT_NE(append_named(theirs, at(theirs, "nodes-1.ports"), "theirs"), nullptr);
  ASSERT_NE(put_list(mine, at(mine, "nodes-1"), "ports"), nullptr);
  expect_conflict("nodes-1.ports");
}

TEST_P(GrownBeforeConflictTest, EmptyingTheOuterListAboveAnAppendConflicts) {
  ASSERT_NE(append_named(theirs, at(theirs, "nodes-1.ports"), "theirs"), nullptr);
  ASSERT_NE(cfg_set_list(mine, at(mine, "nodes")), nullptr);
  expect_conflict("nodes-1");
}

TEST_P(GrownBeforeConflictTest, DeletingTheOuterListAboveAnAppendConflicts) {
  ASSERT_NE(append_named(theirs, at(theirs, "nodes-1.ports"), "theirs"), nullptr);
  ASSERT_EQ(cfg_map_delete_key(mine, cfg_root(mine), "nodes"), 1);
  expect_conflict("nodes");
}

TEST_P(GrownBeforeConflictTest, AppendingBelowADeletedOuterListConflicts) {
  ASSERT_EQ(cfg_map_delete_key(theirs, cfg_root(theirs), "nodes"), 1);
  ASSERT_NE(append_named(mine, at(mine, "nodes-1.ports"), "mine"), nullptr);
  expect_conflict("nodes");
}

TEST_P(GrownBeforeConflictTest, EmptyingItKeepsWhatOthersAppended) {
  ASSERT_NE(append_named(theirs, at(theirs, "nodes-1.ports"), "theirs"), nullptr);
  ASSERT_NE(cfg_set_list(mine, at(mine, "nodes-1.ports")), nullptr);
  expect_merge();
  EXPECT_EQ(names_in(mine, at(mine, "nodes-1.ports")), std::vector<std::string>{"theirs"});
}
