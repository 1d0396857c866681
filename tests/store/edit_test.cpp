// Edits: isolation, commit, abandon, refresh, park, and what a commit would write.
#include "fixture.hpp"
#include "tree.hpp"

class EditTest : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    ASSERT_EQ(cfg_map_set_int(store, make_map(store, "system"), "a", 1), 1);
    ASSERT_NE(append_named(store, make_list(store, "nodes"), "n1"), nullptr);
    ASSERT_TRUE(commits(store));
    other = another_handle();
    EXPECT_EQ(cfg_revision(other), 1U);  // a handle takes its snapshot when it first reads
  }
  static cfg_elem *system(cfg *handle) { return cfg_get_by_path(handle, "system"); }
  static cfg_elem *nodes(cfg *handle) { return cfg_get_by_path(handle, "nodes"); }
  cfg *other = nullptr;
};
STORE_TEST_ON_BOTH_ENGINES(EditTest);

TEST_P(EditTest, AnEditIsSeenByItsOwnHandleOnlyUntilCommit) {
  std::string before = dump(other);
  ASSERT_EQ(cfg_map_set_int(store, system(store), "a", 2), 1);
  ASSERT_EQ(cfg_map_set_int(store, system(store), "b", 3), 1);
  ASSERT_NE(append_named(store, nodes(store), "n2"), nullptr);
  EXPECT_EQ(int_at(store, system(store), "a"), 2);
  EXPECT_EQ(dump(other), before);
  ASSERT_EQ(cfg_refresh(other), 1);
  EXPECT_EQ(dump(other), before);
  EXPECT_EQ(dump(another_handle()), before);
}

TEST_P(EditTest, AHandleReadsItsSnapshotUntilItIsRefreshed) {
  std::string before = dump(other);
  std::uint64_t revision = cfg_revision(other);
  ASSERT_EQ(cfg_map_set_int(store, system(store), "a", 2), 1);
  ASSERT_EQ(cfg_delete_element(store, cfg_get_by_id(store, "nodes-1")), 1);
  ASSERT_TRUE(commits(store));
  EXPECT_EQ(cfg_revision(store), revision + 1);
  EXPECT_EQ(dump(other), before);
  EXPECT_EQ(cfg_revision(other), revision);
  EXPECT_NE(cfg_get_by_id(other, "nodes-1"), nullptr);
  ASSERT_EQ(cfg_refresh(other), 1);
  EXPECT_EQ(cfg_revision(other), revision + 1);
  EXPECT_EQ(dump(other), dump(store));
}

TEST_P(EditTest, ACommitIsDurable) {
  ASSERT_EQ(cfg_map_set_int(store, system(store), "a", 2), 1);
  ASSERT_TRUE(commits(store));
  std::string after = dump(store);
  std::uint64_t revision = cfg_revision(store);
  reopen();
  EXPECT_EQ(dump(store), after);
  EXPECT_EQ(cfg_revision(store), revision);
}

TEST_P(EditTest, AnUncommittedEditIsGoneWithItsHandle) {
  std::string before = dump(store);
  ASSERT_EQ(cfg_map_set_int(store, system(store), "a", 2), 1);
  ASSERT_NE(append_named(store, nodes(store), "n2"), nullptr);
  reopen();
  EXPECT_EQ(dump(store), before);
}

TEST_P(EditTest, EveryCommitWithChangesMakesOneRevision) {
  std::uint64_t revision = cfg_revision(store);
  for (int i = 10; i < 15; ++i) {
    ASSERT_EQ(cfg_map_set_int(store, system(store), "a", i), 1);
    ASSERT_TRUE(commits(store));
    EXPECT_EQ(cfg_revision(store), ++revision);
    ASSERT_TRUE(commits(store));
    EXPECT_EQ(cfg_revision(store), revision);
  }
}

TEST_P(EditTest, AbandonGoesBackToTheSnapshot) {
  std::string before = dump(store);
  ASSERT_EQ(cfg_map_set_int(store, system(store), "a", 2), 1);
  ASSERT_EQ(cfg_map_delete_key(store, cfg_root(store), "nodes"), 1);
  ASSERT_NE(put_map(store, cfg_root(store), "more"), nullptr);
  cfg_abandon(store);
  EXPECT_EQ(cfg_has_changes(store), 0);
  EXPECT_EQ(dump(store), before);
  ASSERT_TRUE(commits(store));
  EXPECT_EQ(dump(store), before);
}

TEST_P(EditTest, AbandonStaysAtTheSnapshot) {
  ASSERT_EQ(cfg_map_set_int(store, system(store), "a", 2), 1);
  ASSERT_TRUE(commits(store));
  ASSERT_EQ(cfg_map_set_int(other, system(other), "b", 5), 1);
  std::uint64_t revision = cfg_revision(other);
  cfg_abandon(other);
  EXPECT_EQ(cfg_revision(other), revision);
  EXPECT_EQ(int_at(other, system(other), "a"), 1);
}

TEST_P(EditTest, RefreshKeepsTheEdit) {
  ASSERT_EQ(cfg_map_set_int(other, system(other), "mine", 5), 1);
  ASSERT_NE(append_named(other, nodes(other), "mine"), nullptr);
  ASSERT_EQ(cfg_map_set_int(store, system(store), "theirs", 6), 1);
  ASSERT_NE(append_named(store, nodes(store), "theirs"), nullptr);
  ASSERT_TRUE(commits(store));
  ASSERT_EQ(cfg_refresh(other), 1);
  EXPECT_EQ(int_at(other, system(other), "mine"), 5);
  EXPECT_EQ(int_at(other, system(other), "theirs"), 6);
  EXPECT_EQ(names_in(other, nodes(other)), (std::vector<std::string>{"n1", "theirs"}));
  EXPECT_EQ(pending_size_of(nodes(other)), 1);
  EXPECT_EQ(cfg_has_changes(other), 1);
  ASSERT_TRUE(commits(other));
  EXPECT_EQ(names_in(other, nodes(other)), (std::vector<std::string>{"n1", "theirs", "mine"}));
  ASSERT_EQ(cfg_refresh(store), 1);
  EXPECT_EQ(dump(store), dump(other));
}

TEST_P(EditTest, CommitMovesTheHandleToARevisionWithWhatOthersCommitted) {
  EXPECT_EQ(cfg_committed_revision(other), 0U);
  ASSERT_EQ(cfg_map_set_int(store, system(store), "b", 2), 1);
  ASSERT_TRUE(commits(store));
  ASSERT_EQ(cfg_map_set_int(other, system(other), "c", 3), 1);
  ASSERT_TRUE(commits(other));
  EXPECT_EQ(cfg_committed_revision(store), 2U);
  EXPECT_EQ(cfg_committed_revision(other), 3U);
  EXPECT_EQ(cfg_revision(other), 3U);
  EXPECT_EQ(int_at(other, system(other), "b"), 2);
  EXPECT_EQ(int_at(other, system(other), "c"), 3);
}

TEST_P(EditTest, OnlyASuccessfulCommitCountsAsCommitted) {
  EXPECT_EQ(cfg_committed_revision(store), 1U);
  ASSERT_TRUE(commits(store));  // nothing to commit
  EXPECT_EQ(cfg_committed_revision(store), 1U);
  ASSERT_EQ(cfg_map_set_int(other, system(other), "a", 2), 1);
  EXPECT_EQ(cfg_revision(store), 1U);
  ASSERT_EQ(cfg_map_set_int(store, system(store), "a", 3), 1);
  ASSERT_TRUE(commits(other));
  EXPECT_TRUE(refuses_commit(store, CFG_E_CONFLICT));
  EXPECT_EQ(cfg_committed_revision(store), 1U);
  EXPECT_EQ(cfg_committed_revision(nullptr), 0U);
}

TEST_P(EditTest, ParkReadsTheNewestRevisionNext) {
  ASSERT_EQ(cfg_map_set_int(store, system(store), "a", 2), 1);
  ASSERT_TRUE(commits(store));
  EXPECT_EQ(int_at(other, system(other), "a"), 1);
  ASSERT_EQ(cfg_park(other), 1);
  EXPECT_EQ(int_at(other, system(other), "a"), 2);
  EXPECT_EQ(cfg_revision(other), cfg_revision(store));
}

TEST_P(EditTest, ParkReadsACommitMadeWhileParked) {
  cfg_elem *held = system(other);
  ASSERT_EQ(cfg_park(other), 1);
  ASSERT_EQ(cfg_map_set_int(store, system(store), "a", 2), 1);
  ASSERT_TRUE(commits(store));
  EXPECT_EQ(int_at(other, held, "a"), 2);
}

TEST_P(EditTest, ParkFailsWhileThereIsAnEdit) {
  ASSERT_EQ(cfg_map_set_int(store, system(store), "a", 2), 1);
  EXPECT_EQ(cfg_park(store), 0);
  EXPECT_NE(cfg_error_code(store), CFG_OK);
  EXPECT_EQ(int_at(store, system(store), "a"), 2);
  cfg_abandon(store);
  EXPECT_EQ(cfg_park(store), 1);
  EXPECT_EQ(cfg_park(store), 1);
}

TEST_P(EditTest, OnlyARealChangeCounts) {
  EXPECT_EQ(cfg_has_changes(store), 0);
  ASSERT_EQ(cfg_map_set_int(store, system(store), "a", 1), 1);
  EXPECT_EQ(cfg_has_changes(store), 0);
  ASSERT_EQ(cfg_map_set_int(store, system(store), "a", 2), 1);
  EXPECT_EQ(cfg_has_changes(store), 1);
  cfg_abandon(store);
  EXPECT_EQ(cfg_has_changes(store), 0);
  ASSERT_NE(append_named(store, nodes(store), "x"), nullptr);
  EXPECT_EQ(cfg_has_changes(store), 1);
  cfg_abandon(store);
  ASSERT_EQ(cfg_delete_element(store, cfg_get_by_id(store, "nodes-1")), 1);
  EXPECT_EQ(cfg_has_changes(store), 1);
  ASSERT_TRUE(commits(store));
  EXPECT_EQ(cfg_has_changes(store), 0);
}

TEST_P(EditTest, AReplacementThatIsEqualMayBeCommitted) {
  std::string before = dump(store);
  ASSERT_EQ(cfg_map_set_int(store, put_map(store, cfg_root(store), "system"), "a", 1), 1);
  EXPECT_EQ(dump(store), before);
  ASSERT_TRUE(commits(store));
  EXPECT_EQ(dump(store), before);
}

namespace {

struct Change {
  char op;
  std::string id;
  cfg_kind kind;
  std::string old_text, new_text;
};

int keep(void *context, const cfg_change *change) {
  static_cast<std::vector<Change> *>(context)->push_back(
      {change->op, change->id ? change->id : "", change->kind, change->old_text ? change->old_text : kNothing,
       change->new_text ? change->new_text : kNothing});
  return 1;
}

int keep_one(void *context, const cfg_change *change) {
  keep(context, change);
  return 0;
}

const Change *find(const std::vector<Change> &changes, const std::string &id) {
  for (const Change &change : changes)
    if (change.id == id) return &change;
  return nullptr;
}

}  // namespace

TEST_P(EditTest, TheChangesOfAnEditAreTold) {
  std::vector<Change> changes;
  ASSERT_EQ(cfg_visit_changes(store, keep, &changes), 1);
  EXPECT_TRUE(changes.empty());
  ASSERT_EQ(cfg_map_set_string(store, system(store), "name", "new name"), 1);
  ASSERT_EQ(cfg_map_set_int(store, system(store), "a", 2), 1);
  ASSERT_EQ(cfg_delete_element(store, cfg_get_by_id(store, "nodes-1")), 1);
  cfg_elem *fresh = append_named(store, nodes(store), "n2");
  ASSERT_EQ(cfg_visit_changes(store, keep, &changes), 1);
  const Change *set = find(changes, "system.a");
  ASSERT_NE(set, nullptr);
  EXPECT_EQ(set->op, '=');
  EXPECT_EQ(set->kind, CFG_INT);
  EXPECT_EQ(set->old_text, "1");
  EXPECT_EQ(set->new_text, "2");
  const Change *added = find(changes, "system.name");
  ASSERT_NE(added, nullptr);
  EXPECT_EQ(added->op, '+');
  EXPECT_EQ(added->kind, CFG_STRING);
  EXPECT_EQ(added->old_text, kNothing);
  EXPECT_NE(added->new_text.find("new name"), std::string::npos);
  const Change *removed = find(changes, "nodes-1");
  ASSERT_NE(removed, nullptr);
  EXPECT_EQ(removed->op, '-');
  EXPECT_EQ(removed->kind, CFG_MAP);
  EXPECT_EQ(removed->new_text, kNothing);
  const Change *appended = find(changes, id_of(fresh));
  ASSERT_NE(appended, nullptr);
  EXPECT_EQ(appended->op, '+');
  EXPECT_EQ(appended->kind, CFG_MAP);
  changes.clear();
  EXPECT_EQ(cfg_visit_changes(store, keep_one, &changes), 1);
  EXPECT_EQ(changes.size(), 1U);
  EXPECT_EQ(cfg_visit_changes(store, nullptr, nullptr), 0);
  EXPECT_EQ(cfg_visit_changes(nullptr, keep, &changes), 0);
}

TEST_P(EditTest, AnEditCanGoOnAfterItsCommit) {
  for (int i = 0; i < 30; ++i) {
    cfg_elem *entry = append_named(store, nodes(store), "e" + std::to_string(i));
    ASSERT_TRUE(commits(store));
    ASSERT_EQ(cfg_map_set_int(store, entry, "i", i), 1);
    ASSERT_TRUE(commits(store));
    if (i % 3 == 0) {
      ASSERT_EQ(cfg_delete_element(store, entry), 1);
      ASSERT_TRUE(commits(store));
    }
  }
  EXPECT_EQ(size_of(nodes(store)), 21);
  std::string before = dump(store);
  check_tree(store);
  reopen();
  EXPECT_EQ(dump(store), before);
}

TEST_P(EditTest, MemoryStoresOfAnotherNameAreOtherStores) {
  cfg *elsewhere = another_store();
  EXPECT_EQ(dump(elsewhere), "{}");
  ASSERT_EQ(cfg_map_set_int(elsewhere, cfg_root(elsewhere), "x", 1), 1);
  ASSERT_TRUE(commits(elsewhere));
  ASSERT_EQ(cfg_refresh(store), 1);
  EXPECT_EQ(cfg_map_has(cfg_root(store), "x"), 0);
}
