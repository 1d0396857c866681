// The commit log: who, why, token, and what each commit changed.
#include "fixture.hpp"
#include "tree.hpp"

#include <unistd.h>

#include <algorithm>

namespace {

struct Entry {
  std::uint64_t revision;
  std::int64_t time_ms;
  std::string who, why, token;
};

std::string text(const char *given) { return given ? given : kNothing; }

int keep(void *context, const cfg_commit_info *info) {
  static_cast<std::vector<Entry> *>(context)->push_back(
      {info->revision, info->time_ms, text(info->who), text(info->why), text(info->token)});
  return 1;
}

int keep_one(void *context, const cfg_commit_info *info) {
  keep(context, info);
  return 0;
}

int keep_change(void *context, const cfg_change *change) {
  EXPECT_EQ(change->kind, CFG_NONE);
  EXPECT_EQ(change->old_text, nullptr);
  EXPECT_EQ(change->new_text, nullptr);
  static_cast<std::vector<std::string> *>(context)->push_back(std::string(1, change->op) + change->id);
  return 1;
}

}  // namespace

class LogTest : public StoreTest {
 protected:
  ::testing::AssertionResult set_and_commit(int value, const cfg_commit_note *note = nullptr) {
    cfg_map_set_int(store, cfg_root(store), "value", value);
    return commits(store, note);
  }
  std::vector<Entry> log(std::uint64_t oldest = 0) {
    std::vector<Entry> all;
    EXPECT_EQ(cfg_visit_log(store, oldest, keep, &all), 1);
    return all;
  }
  std::vector<std::string> changes(std::uint64_t revision) {
    std::vector<std::string> all;
    EXPECT_EQ(cfg_visit_commit(store, revision, keep_change, &all), 1);
    return all;
  }
};
STORE_TEST_ON_BOTH_ENGINES(LogTest);

TEST_P(LogTest, IsEmptyInAnEmptyStore) {
  EXPECT_TRUE(log().empty());
  EXPECT_EQ(cfg_visit_commit(store, 1, keep_change, nullptr), 0);
  std::uint64_t revision = 77;
  EXPECT_EQ(cfg_find_commit(store, "token", &revision), 0);
  EXPECT_EQ(revision, 77U);
}

TEST_P(LogTest, TellsWhoAndWhyFromTheNewestDown) {
  cfg_commit_note first{"alice", "because", "token-1"};
  cfg_commit_note second{"bob", nullptr, nullptr};
  ASSERT_TRUE(set_and_commit(1, &first));
  ASSERT_TRUE(set_and_commit(2, &second));
  ASSERT_TRUE(set_and_commit(3));
  reopen();
  std::vector<Entry> all = log();
  ASSERT_EQ(all.size(), 3U);
  std::uint64_t newest = cfg_revision(store);
  for (std::size_t i = 0; i < 3; ++i) EXPECT_EQ(all[i].revision, newest - i);
  EXPECT_EQ(all[2].who, "alice");
  EXPECT_EQ(all[2].why, "because");
  EXPECT_EQ(all[2].token, "token-1");
  EXPECT_EQ(all[1].who, "bob");
  EXPECT_EQ(all[0].who, "uid:" + std::to_string(getuid()));
  std::int64_t now = static_cast<std::int64_t>(time(nullptr)) * 1000;
  for (const Entry &entry : all) {
    EXPECT_GT(entry.time_ms, now - 3600 * 1000);
    EXPECT_LT(entry.time_ms, now + 3600 * 1000);
  }
  EXPECT_EQ(log(newest - 1).size(), 2U);
  EXPECT_EQ(log(newest).size(), 1U);
  EXPECT_EQ(log(newest + 1).size(), 0U);
  std::vector<Entry> one;
  EXPECT_EQ(cfg_visit_log(store, 0, keep_one, &one), 1);
  EXPECT_EQ(one.size(), 1U);
}

TEST_P(LogTest, KeepsTheIdsThatACommitChanged) {
  ASSERT_NE(make_list(store, "nodes"), nullptr);
  ASSERT_TRUE(commits(store));
  cfg_elem *list = cfg_get_by_path(store, "nodes");
  ASSERT_NE(append_named(store, list, "a"), nullptr);
  ASSERT_NE(append_named(store, list, "b"), nullptr);
  ASSERT_TRUE(set_and_commit(1));
  std::uint64_t first = cfg_revision(store);
  ASSERT_EQ(cfg_map_set_string(store, cfg_get_by_id(store, "nodes-1"), "name", "changed"), 1);
  ASSERT_EQ(cfg_map_set_int(store, cfg_get_by_id(store, "nodes-1"), "new", 1), 1);
  ASSERT_EQ(cfg_delete_element(store, cfg_get_by_id(store, "nodes-2")), 1);
  ASSERT_TRUE(set_and_commit(2));
  std::uint64_t second = cfg_revision(store);
  reopen();
  std::vector<std::string> made = changes(first);
  std::sort(made.begin(), made.end());
  EXPECT_EQ(made, (std::vector<std::string>{"+nodes-1", "+nodes-2", "+value"}));
  std::vector<std::string> changed = changes(second);
  std::sort(changed.begin(), changed.end());
  EXPECT_EQ(changed, (std::vector<std::string>{"+nodes-1.new", "-nodes-2", "=nodes-1.name", "=value"}));
  EXPECT_EQ(cfg_visit_commit(store, second + 1, keep_change, nullptr), 0);
  EXPECT_EQ(cfg_visit_commit(store, 0, keep_change, nullptr), 0);
}

TEST_P(LogTest, ARepeatedTokenDropsTheEditAndSucceeds) {
  cfg_commit_note note{"alice", "because", "once"};
  ASSERT_TRUE(set_and_commit(1, &note));
  std::uint64_t revision = cfg_revision(store);
  ASSERT_TRUE(set_and_commit(2, &note));
  EXPECT_EQ(cfg_revision(store), revision);
  EXPECT_EQ(cfg_has_changes(store), 0);
  EXPECT_EQ(int_at(store, cfg_root(store), "value"), 1);
  EXPECT_EQ(log().size(), 1U);
  std::uint64_t found = 0;
  EXPECT_EQ(cfg_find_commit(store, "once", &found), 1);
  EXPECT_EQ(found, revision);
  EXPECT_EQ(cfg_find_commit(store, "never", &found), 0);
  EXPECT_EQ(found, revision);
}

TEST_P(LogTest, ATokenIsKnownToOtherHandlesAndLater) {
  cfg_commit_note note{nullptr, nullptr, "once"};
  cfg *other = another_handle();
  ASSERT_EQ(cfg_map_set_int(other, cfg_root(other), "value", 9), 1);
  ASSERT_TRUE(set_and_commit(1, &note));
  ASSERT_TRUE(set_and_commit(2));
  // The other handle repeats it from an older snapshot: no conflict, nothing changed.
  ASSERT_TRUE(commits(other, &note));
  EXPECT_EQ(cfg_has_changes(other), 0);
  ASSERT_EQ(cfg_refresh(other), 1);
  EXPECT_EQ(int_at(other, cfg_root(other), "value"), 2);
  reopen();
  ASSERT_TRUE(set_and_commit(3, &note));
  EXPECT_EQ(int_at(store, cfg_root(store), "value"), 2);
  std::uint64_t found = 0;
  EXPECT_EQ(cfg_find_commit(store, "once", &found), 1);
  EXPECT_EQ(found, 1U);
}

TEST_P(LogTest, ARefusedCommitDoesNotUseItsToken) {
  cfg_commit_note note{nullptr, nullptr, "mine"};
  cfg *other = another_handle();
  ASSERT_EQ(cfg_map_set_int(other, cfg_root(other), "value", 9), 1);
  ASSERT_TRUE(set_and_commit(1));
  EXPECT_EQ(cfg_commit(other, &note), 0);
  std::uint64_t found = 0;
  EXPECT_EQ(cfg_find_commit(other, "mine", &found), 0);
  cfg_abandon(other);
  ASSERT_EQ(cfg_refresh(other), 1);
  EXPECT_EQ(cfg_find_commit(other, "mine", &found), 0);
  ASSERT_EQ(cfg_map_set_int(other, cfg_root(other), "value", 10), 1);
  ASSERT_TRUE(commits(other, &note));
  EXPECT_EQ(int_at(other, cfg_root(other), "value"), 10);
  EXPECT_EQ(cfg_find_commit(other, "mine", &found), 1);
}

TEST_P(LogTest, ANoteHasLimits) {
  std::string who(255, 'w'), why(1023, 'y'), token(127, 't');
  cfg_commit_note good{who.c_str(), why.c_str(), token.c_str()};
  ASSERT_TRUE(set_and_commit(1, &good));
  ASSERT_EQ(log().size(), 1U);
  EXPECT_EQ(log()[0].who, who);
  EXPECT_EQ(log()[0].why, why);
  EXPECT_EQ(log()[0].token, token);
  std::string long_who(256, 'w'), long_why(1024, 'y'), long_token(128, 't');
  for (cfg_commit_note bad : {cfg_commit_note{long_who.c_str(), nullptr, nullptr},
                              cfg_commit_note{nullptr, long_why.c_str(), nullptr},
                              cfg_commit_note{nullptr, nullptr, long_token.c_str()}}) {
    ASSERT_EQ(cfg_map_set_int(store, cfg_root(store), "value", 2), 1);
    EXPECT_TRUE(failed_with(store, cfg_commit(store, &bad), CFG_E_LIMIT));
    EXPECT_EQ(cfg_has_changes(store), 1);
  }
  EXPECT_EQ(log().size(), 1U);
}

TEST_P(LogTest, ANoteMayHoldAnyText) {
  cfg_commit_note note{"\"al\\ice\"\n\x01\xc3\xa4", "\t{}[],:\x7f", "to ken/\"1\""};
  ASSERT_TRUE(set_and_commit(1, &note));
  ASSERT_EQ(log().size(), 1U);
  EXPECT_EQ(log()[0].who, note.who);
  EXPECT_EQ(log()[0].why, note.why);
  EXPECT_EQ(log()[0].token, note.token);
  std::uint64_t found = 0;
  EXPECT_EQ(cfg_find_commit(store, note.token, &found), 1);
}

TEST_P(LogTest, ACommitWithoutChangesIsNotLogged) {
  cfg_commit_note note{"alice", nullptr, "nothing"};
  ASSERT_TRUE(commits(store, &note));
  EXPECT_TRUE(log().empty());
  std::uint64_t found = 0;
  EXPECT_EQ(cfg_find_commit(store, "nothing", &found), 0);
}

TEST_P(LogTest, KeepsAtLeastTheLastThousandCommits) {
  for (int i = 1; i <= 1000; ++i) {
    std::string token = "t" + std::to_string(i);
    cfg_commit_note note{nullptr, nullptr, token.c_str()};
    ASSERT_TRUE(set_and_commit(i, &note));
  }
  EXPECT_EQ(log().size(), 1000U);
  std::uint64_t found = 0;
  EXPECT_EQ(cfg_find_commit(store, "t1", &found), 1);
  EXPECT_EQ(found, 1U);
  EXPECT_EQ(cfg_find_commit(store, "t1000", &found), 1);
  EXPECT_EQ(found, 1000U);
}

TEST_P(LogTest, NullArgumentsFail) {
  ASSERT_TRUE(set_and_commit(1));
  std::uint64_t found = 0;
  EXPECT_EQ(cfg_visit_log(nullptr, 0, keep, nullptr), 0);
  EXPECT_EQ(cfg_visit_log(store, 0, nullptr, nullptr), 0);
  EXPECT_EQ(cfg_visit_commit(nullptr, 1, keep_change, nullptr), 0);
  EXPECT_EQ(cfg_visit_commit(store, 1, nullptr, nullptr), 0);
  EXPECT_EQ(cfg_find_commit(nullptr, "x", &found), 0);
  EXPECT_EQ(cfg_find_commit(store, nullptr, &found), 0);
}
