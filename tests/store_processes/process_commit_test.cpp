// Several processes that commit to one store at once.
#include <gtest/gtest.h>

#include <deque>
#include <set>

#include "child.hpp"
#include "ledger.hpp"
#include "opened.hpp"
#include "scratch.hpp"

using namespace trial;

namespace {

constexpr int kProcesses = 4;
constexpr int kRounds = 40;

class ProcessCommit : public testing::Test {
 protected:
  // Fills the store and closes it, so that children are forked by a process without an open store.
  void fill(const Change &change) { commit_now(open_store(path_, CFG_OPEN_CREATE).get(), change); }

  Scratch scratch_;
  const std::string path_ = scratch_.store();
};

bool add_one(cfg *store) { return set_number(store, "counter", read_number(store, "counter") + 1); }

}  // namespace

TEST_F(ProcessCommit, NoIncrementOfManyProcessesIsLost) {
  fill([](cfg *store) { return set_number(store, "counter", 0); });
  std::deque<Child> children;
  for (int i = 0; i < kProcesses; ++i)
    children.emplace_back([this](Line &) -> std::string {
      const Opened store = open_store(path_);
      for (int round = 0; round < kRounds; ++round)
        if (std::string problem = commit_with_retry(store.get(), add_one); !problem.empty()) return problem;
      return "";
    });
  for (Child &child : children) EXPECT_EQ(child.finish(), "");
  const Opened store = open_store(path_);
  EXPECT_EQ(read_number(store.get(), "counter"), kProcesses * kRounds);
  EXPECT_EQ(cfg_revision(store.get()), 1U + kProcesses * kRounds)
      << "a revision for each commit, none besides";
  EXPECT_EQ(problems(store.get()), "");
}

TEST_F(ProcessCommit, EachProcessKeepsItsOwnKeysOfASharedMapWithoutConflict) {
  fill([](cfg *store) { return set_number(store, "process 0", 0); });
  std::deque<Child> children;
  for (int i = 0; i < kProcesses; ++i)
    children.emplace_back([this, i](Line &) -> std::string {
      const Opened store = open_store(path_);
      const std::string key = "process " + std::to_string(i);
      int conflicts = 0;
      for (int round = 1; round <= kRounds; ++round) {
        std::string problem = commit_with_retry(
            store.get(), [&](cfg *edit) { return set_number(edit, key.c_str(), round); }, nullptr,
            &conflicts);
        if (!problem.empty()) return problem;
      }
      return conflicts == 0 ? "" : std::to_string(conflicts) + " conflicts";
    });
  for (Child &child : children) EXPECT_EQ(child.finish(), "");
  const Opened store = open_store(path_);
  for (int i = 0; i < kProcesses; ++i)
    EXPECT_EQ(read_number(store.get(), ("process " + std::to_string(i)).c_str()), kRounds);
}

TEST_F(ProcessCommit, EntriesAppendedByManyProcessesGetNumbersOfTheirOwnAndNeverConflict) {
  fill([](cfg *store) { return add_list(store, "nodes"); });
  std::deque<Child> children;
  for (int i = 0; i < kProcesses; ++i)
    children.emplace_back([this, i](Line &parent) -> std::string {
      const Opened store = open_store(path_);
      for (int round = 0; round < kRounds; ++round) {
        cfg_elem *entry = append_number(store.get(), "nodes", "owner", i * kRounds + round);
        if (!cfg_commit(store.get(), nullptr)) return explain(store.get());
        parent.say(id_of(entry));
      }
      return "";
    });
  std::set<std::string> ids;
  for (Child &child : children) {
    for (std::string id; child.line().hear(id);)
      EXPECT_TRUE(ids.insert(id).second) << id << " was given out twice";
    EXPECT_EQ(child.finish(), "");
  }
  EXPECT_EQ(ids.size(), static_cast<size_t>(kProcesses * kRounds));

  const Opened store = open_store(path_);
  ASSERT_EQ(list_size(store.get(), "nodes"), kProcesses * kRounds);
  std::set<int> owners;
  for (int i = 0; i < kProcesses * kRounds; ++i) {
    cfg_elem *entry = cfg_simple_get_listelem(store.get(), cfg_get_by_path(store.get(), "nodes"), i);
    EXPECT_EQ(ids.count(id_of(entry)), 1U) << id_of(entry);
    int32_t owner = -1;
    EXPECT_TRUE(cfg_map_get_int(store.get(), entry, "owner", &owner));
    owners.insert(owner);
  }
  EXPECT_EQ(owners.size(), static_cast<size_t>(kProcesses * kRounds)) << "no entry is lost or doubled";
}

TEST_F(ProcessCommit, ANumberIsNotUsedAgainAfterAnotherProcessDeletedItsEntry) {
  fill([](cfg *store) { return add_list(store, "nodes"); });
  std::deque<Child> children;
  for (int i = 0; i < kProcesses; ++i)
    children.emplace_back([this](Line &parent) -> std::string {
      const Opened store = open_store(path_);
      for (int round = 0; round < kRounds / 2; ++round) {
        cfg_elem *entry = append_number(store.get(), "nodes", "round", round);
        if (!cfg_commit(store.get(), nullptr)) return "append: " + explain(store.get());
        parent.say(id_of(entry));
        if (!cfg_delete_element(store.get(), entry) || !cfg_commit(store.get(), nullptr))
          return "delete: " + explain(store.get());
      }
      return "";
    });
  std::set<std::string> ids;
  for (Child &child : children) {
    for (std::string id; child.line().hear(id);)
      EXPECT_TRUE(ids.insert(id).second) << id << " was given out twice";
    EXPECT_EQ(child.finish(), "");
  }
  const Opened store = open_store(path_);
  EXPECT_EQ(list_size(store.get(), "nodes"), 0);
  cfg_elem *entry = append_number(store.get(), "nodes", "round", 0);
  ASSERT_TRUE(cfg_commit(store.get(), nullptr)) << explain(store.get());
  EXPECT_EQ(ids.count(id_of(entry)), 0U) << id_of(entry) << " has been used before";
}

TEST_F(ProcessCommit, ReadersSeeOnlyWholeCommits) {
  ledger::create(open_store(path_, CFG_OPEN_CREATE).get());
  std::deque<Child> writers, readers;
  for (uint32_t i = 0; i < 2; ++i) {
    writers.emplace_back([this, i](Line &) -> std::string {
      const Opened store = open_store(path_);
      for (uint32_t round = 0; round < kRounds; ++round)
        if (std::string problem = ledger::move_and_commit(store.get(), i * 7919 + round * 31);
            !problem.empty())
          return problem;
      return "";
    });
    readers.emplace_back([this](Line &parent) -> std::string {
      const Opened store = open_store(path_, CFG_OPEN_READ_ONLY);
      uint64_t revision = 0;
      while (ledger::moves(store.get()) < 2 * kRounds) {
        if (!cfg_refresh(store.get())) return "refresh: " + explain(store.get());
        if (cfg_revision(store.get()) < revision) return "the store went back in time";
        revision = cfg_revision(store.get());
        if (std::string problem = ledger::check(store.get()); !problem.empty()) return problem;
      }
      parent.say("done");
      return "";
    });
  }
  for (Child &writer : writers) EXPECT_EQ(writer.finish(), "");
  for (Child &reader : readers) EXPECT_EQ(reader.finish(), "");
  EXPECT_EQ(ledger::check(open_store(path_).get()), "");
}

TEST_F(ProcessCommit, ASnapshotStaysAsItIsWhileAnotherProcessCommits) {
  ledger::create(open_store(path_, CFG_OPEN_CREATE).get());
  Child writer([this](Line &parent) -> std::string {
    const Opened store = open_store(path_);
    if (!parent.wait()) return "no word";
    for (uint32_t round = 0; round < 50; ++round)
      if (std::string problem = ledger::move_and_commit(store.get(), round); !problem.empty()) return problem;
    return "";
  });
  const Opened store = open_store(path_);
  const std::string before = export_text(store.get());
  ASSERT_TRUE(writer.line().say("go"));
  ASSERT_EQ(writer.finish(), "");
  EXPECT_EQ(ledger::moves(store.get()), 0);
  EXPECT_EQ(export_text(store.get()), before);
  ASSERT_TRUE(cfg_refresh(store.get()));
  EXPECT_EQ(ledger::moves(store.get()), 50);
  EXPECT_EQ(ledger::check(store.get()), "");
}

TEST_F(ProcessCommit, AHandleKnowsTheRevisionOfItsOwnCommitWhateverOthersCommit) {
  fill([](cfg *store) { return set_number(store, "counter", 0); });
  Child other([this](Line &parent) -> std::string {
    if (!parent.wait()) return "no word";
    commit_now(open_store(path_).get(), [](cfg *edit) { return set_number(edit, "counter", 20); });
    return "";
  });
  const Opened store = open_store(path_);
  EXPECT_EQ(cfg_committed_revision(store.get()), 0U) << "this handle has committed nothing yet";
  commit_now(store.get(), [](cfg *edit) { return set_number(edit, "counter", 10); });
  ASSERT_TRUE(other.line().say("go"));
  ASSERT_EQ(other.finish(), "");
  EXPECT_EQ(cfg_committed_revision(store.get()), 2U);
  ASSERT_TRUE(cfg_refresh(store.get()));
  EXPECT_EQ(cfg_committed_revision(store.get()), 2U);
  EXPECT_EQ(cfg_revision(store.get()), 3U);
  EXPECT_EQ(read_number(store.get(), "counter"), 20);
}

TEST_F(ProcessCommit, AConflictNamesTheElementTheRevisionsAndTheOtherProcessesAuthor) {
  fill([](cfg *store) { return set_number(store, "contested", 1); });
  Child other([this](Line &parent) -> std::string {
    if (!parent.wait()) return "no word";
    const Opened store = open_store(path_);
    const cfg_commit_note note = {"the other operator", "faster", nullptr};
    commit_now(
        store.get(), [](cfg *edit) { return set_number(edit, "contested", 2); }, &note);
    return "";
  });
  const Opened store = open_store(path_);
  ASSERT_TRUE(set_number(store.get(), "contested", 3));
  const std::string element = cfg_get_mapelem(cfg_root(store.get()), "contested");
  ASSERT_TRUE(other.line().say("go"));
  ASSERT_EQ(other.finish(), "");

  EXPECT_FALSE(cfg_commit(store.get(), nullptr));
  EXPECT_EQ(cfg_error_code(store.get()), CFG_E_CONFLICT);
  EXPECT_EQ(cfg_code_advice(cfg_error_code(store.get())), CFG_ADVICE_RETRY);
  const std::string text = cfg_error_text(store.get());
  EXPECT_NE(text.find(element), std::string::npos) << text;
  EXPECT_NE(text.find("1"), std::string::npos) << text << ": the revision that was read";
  EXPECT_NE(text.find("2"), std::string::npos) << text << ": the revision that changed it";
  EXPECT_NE(text.find("the other operator"), std::string::npos) << text;
  EXPECT_TRUE(cfg_has_changes(store.get())) << "the edit is kept";
  EXPECT_EQ(read_number(store.get(), "contested"), 3);

  cfg_abandon(store.get());
  ASSERT_TRUE(cfg_refresh(store.get()));
  EXPECT_EQ(read_number(store.get(), "contested"), 2) << "the refused commit changed nothing";
}

TEST_F(ProcessCommit, ATokenCommittedByAnotherProcessIsRecognised) {
  fill([](cfg *store) { return add_list(store, "jobs"); });
  Child other([this](Line &parent) -> std::string {
    if (!parent.wait()) return "no word";
    const Opened store = open_store(path_);
    const cfg_commit_note note = {"other", "first try", "job-7"};
    commit_now(
        store.get(), [](cfg *edit) { return append_number(edit, "jobs", "n", 1) != nullptr; }, &note);
    parent.say(std::to_string(cfg_committed_revision(store.get())));
    return "";
  });
  const Opened store = open_store(path_);
  uint64_t revision = 0;
  EXPECT_FALSE(cfg_find_commit(store.get(), "job-7", &revision));
  ASSERT_TRUE(append_number(store.get(), "jobs", "n", 2));
  ASSERT_TRUE(other.line().say("go"));
  std::string committed;
  ASSERT_TRUE(other.line().hear(committed));
  ASSERT_EQ(other.finish(), "");

  const cfg_commit_note note = {"self", "second try", "job-7"};
  EXPECT_TRUE(cfg_commit(store.get(), &note)) << explain(store.get());
  EXPECT_FALSE(cfg_has_changes(store.get())) << "the edit is dropped";
  ASSERT_TRUE(cfg_refresh(store.get()));
  EXPECT_EQ(list_size(store.get(), "jobs"), 1) << "the job was entered once";
  ASSERT_TRUE(cfg_find_commit(store.get(), "job-7", &revision)) << explain(store.get());
  EXPECT_EQ(std::to_string(revision), committed);
}

TEST_F(ProcessCommit, OfManyProcessesWithOneTokenExactlyOneMakesTheChange) {
  fill([](cfg *store) { return add_list(store, "jobs"); });
  std::deque<Child> children;
  for (int i = 0; i < kProcesses; ++i)
    children.emplace_back([this](Line &parent) -> std::string {
      const Opened store = open_store(path_);
      parent.say("ready");
      if (!parent.wait()) return "no word";
      for (int job = 0; job < 10; ++job) {
        const std::string token = "job-" + std::to_string(job);
        const cfg_commit_note note = {nullptr, nullptr, token.c_str()};
        std::string problem = commit_with_retry(
            store.get(), [job](cfg *edit) { return append_number(edit, "jobs", "n", job) != nullptr; },
            &note);
        if (!problem.empty()) return problem;
      }
      return "";
    });
  for (Child &child : children) ASSERT_TRUE(child.line().wait());
  for (Child &child : children) ASSERT_TRUE(child.line().say("go"));
  for (Child &child : children) EXPECT_EQ(child.finish(), "");
  const Opened store = open_store(path_);
  EXPECT_EQ(list_size(store.get(), "jobs"), 10);
  EXPECT_EQ(cfg_revision(store.get()), 11U);
}
