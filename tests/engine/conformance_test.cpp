// What every engine promises, tried on each of them.
#include <atomic>
#include <map>
#include <thread>

#include "engine_fixture.hpp"

namespace twcfg::testing {
namespace {

enum class Kind { lmdb, memory };

class EngineConformance : public ::testing::TestWithParam<Kind> {
 protected:
  std::shared_ptr<Engine> open() {
    return GetParam() == Kind::lmdb ? open_store(directory_ / "store") : open_memory(directory_ / "name");
  }
  TemporaryDirectory directory_;
  std::shared_ptr<Engine> engine_ = open();
};
INSTANTIATE_TEST_SUITE_P(Engines, EngineConformance, ::testing::Values(Kind::lmdb, Kind::memory),
                         [](const auto &param) { return param.param == Kind::lmdb ? "Lmdb" : "Memory"; });

TEST_P(EngineConformance, AnEmptyStoreIsAtRevisionZeroAndHoldsNothing) {
  EXPECT_EQ(newest(*engine_), 0U);
  const auto snapshot = view(*engine_);
  EXPECT_EQ(snapshot->revision(), 0U);
  EXPECT_FALSE(snapshot->get(0));
  EXPECT_FALSE(snapshot->cursor()->seek(0));
  EXPECT_EQ(snapshot->oldest_log(), 0U);
  EXPECT_EQ(snapshot->log(1), "");
  EXPECT_EQ(snapshot->find_token("t"), 0U);
}

TEST_P(EngineConformance, ACommitGetsTheNextRevisionAndItsValuesCarryIt) {
  EXPECT_EQ(commit(*engine_, {set(1, "one"), set(2, "two")}).revision, 1U);
  const CommitResult second = commit(*engine_, {set(2, "deux", 1)});
  EXPECT_EQ(second.revision, 2U);
  EXPECT_FALSE(second.stale);
  EXPECT_FALSE(second.repeated);
  EXPECT_EQ(newest(*engine_), 2U);
  const auto snapshot = view(*engine_);
  EXPECT_EQ(snapshot->revision(), 2U);
  EXPECT_EQ(snapshot->get(1).revision, 1U);
  EXPECT_EQ(snapshot->get(1).bytes, "one");
  EXPECT_EQ(snapshot->get(2).revision, 2U);
  EXPECT_EQ(snapshot->get(2).bytes, "deux");
}

TEST_P(EngineConformance, ASnapshotDoesNotSeeLaterCommits) {
  commit(*engine_, {set(1, "old"), set(2, "kept")}, "first", "t1");
  const auto before = view(*engine_);
  commit(*engine_, {set(1, "new", 1), remove(2, 1), set(3, "added")}, "second", "t2");
  EXPECT_EQ(before->revision(), 1U);
  EXPECT_EQ(before->get(1).bytes, "old");
  EXPECT_EQ(before->get(2).bytes, "kept");
  EXPECT_FALSE(before->get(3));
  EXPECT_EQ(before->log(2), "");
  EXPECT_EQ(before->find_token("t2"), 0U);
  const auto after = view(*engine_);
  EXPECT_EQ(after->get(1).bytes, "new");
  EXPECT_FALSE(after->get(2));
  EXPECT_EQ(after->get(3).bytes, "added");
}

TEST_P(EngineConformance, BytesStayWhereTheyAreUntilTheirSnapshotEnds) {
  commit(*engine_, {set(1, "stable"), set(2, std::string(100'000, 'x'))}, "log text");
  const auto snapshot = view(*engine_);
  const std::string_view small = snapshot->get(1).bytes;
  const std::string_view large = snapshot->get(2).bytes;
  const std::string_view log = snapshot->log(1);
  std::uint64_t revision = 1;
  for (int i = 0; i < 200; i++)
    revision =
        commit(*engine_, {set(1, std::to_string(i), revision), set(2, std::string(100'000, 'y'), revision)})
            .revision;
  EXPECT_EQ(revision, 201U);
  EXPECT_EQ(small, "stable");
  EXPECT_EQ(large, std::string(100'000, 'x'));
  EXPECT_EQ(log, "log text");
  EXPECT_EQ(snapshot->get(1).bytes.data(), small.data());
}

TEST_P(EngineConformance, ASnapshotOutlivesItsEngine) {
  commit(*engine_, {set(1, "value")});
  const auto snapshot = view(*engine_);
  engine_.reset();
  EXPECT_EQ(snapshot->get(1).bytes, "value");
}

TEST_P(EngineConformance, AWrongExpectationChangesNothing) {
  commit(*engine_, {set(1, "one"), set(2, "two")}, "first");
  const std::vector<std::vector<Write>> stale = {
      {set(1, "x")},                            // must be absent, is there
      {set(1, "x", 7)},                         // another revision
      {set(9, "x", 1)},                         // must be there, is absent
      {remove(9, 1)},                           //
      {remove(1, 0)},                           //
      {set(1, "x", 1), set(2, "x", 9)},         // one of two is wrong
      {set(0, "x"), remove(1, 1), set(2, "x")}  // the last of three is wrong
  };
  for (const auto &writes : stale) {
    const CommitResult result = commit(*engine_, writes, "never", "token");
    EXPECT_TRUE(result.stale);
    EXPECT_FALSE(result.repeated);
    EXPECT_EQ(result.failure.code, CFG_OK);
  }
  const auto snapshot = view(*engine_);
  EXPECT_EQ(snapshot->revision(), 1U);
  EXPECT_FALSE(snapshot->get(0));
  EXPECT_EQ(snapshot->get(1).bytes, "one");
  EXPECT_EQ(snapshot->get(2).bytes, "two");
  EXPECT_EQ(snapshot->log(2), "");
  EXPECT_EQ(snapshot->find_token("token"), 0U);
}

TEST_P(EngineConformance, ARemovedKeyIsAbsentAndCanBeWrittenAgain) {
  commit(*engine_, {set(1, "one")});
  EXPECT_EQ(commit(*engine_, {remove(1, 1)}).revision, 2U);
  EXPECT_FALSE(view(*engine_)->get(1));
  EXPECT_TRUE(commit(*engine_, {set(1, "x", 1)}).stale);
  EXPECT_EQ(commit(*engine_, {set(1, "again")}).revision, 3U);
  EXPECT_EQ(view(*engine_)->get(1).revision, 3U);
}

TEST_P(EngineConformance, RemovingAnAbsentKeyThatIsExpectedToBeAbsentIsACommit) {
  const CommitResult result = commit(*engine_, {remove(1, 0)});
  EXPECT_FALSE(result.stale);
  EXPECT_EQ(result.revision, 1U);
  EXPECT_FALSE(view(*engine_)->get(1));
}

TEST_P(EngineConformance, EmptyValuesArePresent) {
  commit(*engine_, {set(1, "")});
  const auto snapshot = view(*engine_);
  EXPECT_TRUE(snapshot->get(1));
  EXPECT_EQ(snapshot->get(1).bytes, "");
  const auto cursor = snapshot->cursor();
  ASSERT_TRUE(cursor->seek(0));
  EXPECT_EQ(cursor->value().revision, 1U);
  EXPECT_EQ(cursor->value().bytes, "");
}

TEST_P(EngineConformance, ValuesOfAllSizesComeBackAsTheyWere) {
  std::map<Key, std::string> values;
  for (const std::size_t size : {1U, 7U, 8U, 1999U, 2014U, 2015U, 4096U, 65'536U, 1U << 20U})
    values[size] = std::string(size, static_cast<char>('a' + size % 26)) + '\0' + "end";
  std::vector<Write> writes;
  for (const auto &[key, bytes] : values) writes.push_back(set(key, bytes));
  EXPECT_EQ(commit(*engine_, writes).revision, 1U);
  const auto snapshot = view(*engine_);
  for (const auto &[key, bytes] : values) EXPECT_EQ(snapshot->get(key).bytes, bytes) << key;
}

TEST_P(EngineConformance, ACursorWalksKeysUpwardsAndSeesValuesOnly) {
  const Key highest = kKeyLimit - 1;
  commit(*engine_, {set(0, "a"), set(5, "b"), set(1000, "c"), set(highest, "d")}, "log", "token");
  const auto snapshot = view(*engine_);
  const auto cursor = snapshot->cursor();
  std::vector<std::pair<Key, std::string>> seen;
  for (bool more = cursor->seek(0); more; more = cursor->next())
    seen.emplace_back(cursor->key(), cursor->value().bytes);
  const std::vector<std::pair<Key, std::string>> expected = {{0, "a"}, {5, "b"}, {1000, "c"}, {highest, "d"}};
  EXPECT_EQ(seen, expected);
  EXPECT_FALSE(cursor->next());
}

TEST_P(EngineConformance, SeekFindsTheFirstKeyAtOrAbove) {
  commit(*engine_, {set(5, "b"), set(1000, "c")});
  const auto snapshot = view(*engine_);
  const auto cursor = snapshot->cursor();
  ASSERT_TRUE(cursor->seek(5));
  EXPECT_EQ(cursor->key(), 5U);
  ASSERT_TRUE(cursor->seek(6));
  EXPECT_EQ(cursor->key(), 1000U);
  EXPECT_EQ(cursor->value().bytes, "c");
  EXPECT_FALSE(cursor->seek(1001));
  EXPECT_FALSE(cursor->seek(kKeyLimit));
  EXPECT_FALSE(cursor->seek(UINT64_MAX));
  ASSERT_TRUE(cursor->seek(0));
  EXPECT_EQ(cursor->key(), 5U);
}

TEST_P(EngineConformance, CursorBytesOutliveTheNextStep) {
  commit(*engine_, {set(1, "first"), set(2, "second")});
  const auto snapshot = view(*engine_);
  const auto cursor = snapshot->cursor();
  ASSERT_TRUE(cursor->seek(0));
  const std::string_view first = cursor->value().bytes;
  ASSERT_TRUE(cursor->next());
  EXPECT_EQ(first, "first");
}

TEST_P(EngineConformance, KeysAboveTheLimitAreRefusedAndAbsent) {
  EXPECT_EQ(commit(*engine_, {set(kKeyLimit, "x")}).failure.code, CFG_E_LIMIT);
  EXPECT_EQ(commit(*engine_, {set(UINT64_MAX, "x")}).failure.code, CFG_E_LIMIT);
  EXPECT_EQ(newest(*engine_), 0U);
  commit(*engine_, {set(1, "x")}, "log");
  const auto snapshot = view(*engine_);
  EXPECT_FALSE(snapshot->get(kKeyLimit));
  EXPECT_FALSE(snapshot->get(3 * kKeyLimit + 1));
}

TEST_P(EngineConformance, UnsortedOrDoubledKeysAreRefused) {
  EXPECT_EQ(commit(*engine_, {set(2, "x"), set(1, "x")}).failure.code, CFG_E_ARGUMENT);
  EXPECT_EQ(commit(*engine_, {set(1, "x"), set(1, "y")}).failure.code, CFG_E_ARGUMENT);
  EXPECT_EQ(newest(*engine_), 0U);
}

TEST_P(EngineConformance, ARepeatedTokenIsRecognisedAndChangesNothing) {
  EXPECT_EQ(commit(*engine_, {set(1, "one")}, "log", "token").revision, 1U);
  commit(*engine_, {set(2, "two")}, "log", "other");
  // The expectation no longer holds: the token is looked at first.
  const CommitResult again = commit(*engine_, {set(1, "one")}, "log", "token");
  EXPECT_TRUE(again.repeated);
  EXPECT_FALSE(again.stale);
  EXPECT_EQ(again.revision, 1U);
  EXPECT_EQ(newest(*engine_), 2U);
  const auto snapshot = view(*engine_);
  EXPECT_EQ(snapshot->find_token("token"), 1U);
  EXPECT_EQ(snapshot->find_token("other"), 2U);
  EXPECT_EQ(snapshot->find_token("none"), 0U);
  EXPECT_EQ(snapshot->find_token(""), 0U);
}

TEST_P(EngineConformance, CommitsWithoutATokenAreNeverRepeated) {
  EXPECT_EQ(commit(*engine_, {set(1, "one")}).revision, 1U);
  EXPECT_EQ(commit(*engine_, {set(2, "two")}).revision, 2U);
}

TEST_P(EngineConformance, TooLongATokenIsRefused) {
  EXPECT_EQ(commit(*engine_, {}, "", std::string(kTokenLimit + 1, 't')).failure.code, CFG_E_LIMIT);
  EXPECT_EQ(commit(*engine_, {}, "", std::string(kTokenLimit, 't')).revision, 1U);
}

TEST_P(EngineConformance, TheLogTellsWhatEachCommitLeft) {
  commit(*engine_, {set(1, "one")}, "first", "t");
  commit(*engine_, {set(2, "two")}, std::string(10'000, 'l'));
  const auto snapshot = view(*engine_);
  EXPECT_EQ(snapshot->oldest_log(), 1U);
  EXPECT_EQ(snapshot->log(1), "first");
  EXPECT_EQ(snapshot->log(2), std::string(10'000, 'l'));
  EXPECT_EQ(snapshot->log(0), "");
  EXPECT_EQ(snapshot->log(3), "");
  EXPECT_EQ(snapshot->log(UINT64_MAX), "");
}

TEST_P(EngineConformance, TheLogKeepsWhatItPromisesAndForgetsTheRestWithItsTokens) {
  const std::uint64_t commits = kLogKept + 1000;
  for (std::uint64_t i = 1; i <= commits; i++)
    ASSERT_EQ(commit(*engine_, {}, "log " + std::to_string(i), "token " + std::to_string(i)).revision, i);
  const auto snapshot = view(*engine_);
  const std::uint64_t oldest = snapshot->oldest_log();
  EXPECT_GT(oldest, 1U);
  EXPECT_LE(oldest, commits - kLogKept + 1);
  EXPECT_EQ(snapshot->log(oldest - 1), "");
  EXPECT_EQ(snapshot->find_token("token " + std::to_string(oldest - 1)), 0U);
  for (std::uint64_t i = oldest; i <= commits; i++) {
    ASSERT_EQ(snapshot->log(i), "log " + std::to_string(i));
    ASSERT_EQ(snapshot->find_token("token " + std::to_string(i)), i);
  }
  EXPECT_EQ(problems(*engine_), std::vector<std::string>());
  EXPECT_EQ(commit(*engine_, {}, "", "token 1").revision, commits + 1);
}

TEST_P(EngineConformance, EveryThreadsIncrementsCount) {
  constexpr int kThreads = 4, kIncrements = 50;
  commit(*engine_, {set(1, "0")});
  std::atomic<int> conflicts{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; t++)
    threads.emplace_back([&] {
      for (int done = 0; done < kIncrements;) {
        const auto snapshot = view(*engine_);
        const Stored old = snapshot->get(1);
        const std::string value = std::to_string(std::stoi(std::string(old.bytes)) + 1);
        const CommitResult result = commit(*engine_, {set(1, value, old.revision)});
        ASSERT_EQ(result.failure.code, CFG_OK) << result.failure.text;
        if (result.stale)
          conflicts++;
        else
          done++;
      }
    });
  for (auto &thread : threads) thread.join();
  EXPECT_EQ(view(*engine_)->get(1).bytes, std::to_string(kThreads * kIncrements));
  EXPECT_EQ(newest(*engine_), 1U + kThreads * kIncrements);
}

TEST_P(EngineConformance, ReadersSeeWholeCommitsWhileOthersWrite) {
  commit(*engine_, {set(1, "0"), set(2, "0")});
  std::atomic<bool> done{false};
  std::vector<std::thread> readers;
  for (int t = 0; t < 3; t++)
    readers.emplace_back([&] {
      std::uint64_t last = 0;
      while (!done) {
        const auto snapshot = view(*engine_);
        ASSERT_EQ(snapshot->get(1).bytes, snapshot->get(2).bytes);
        ASSERT_EQ(snapshot->get(1).revision, snapshot->revision());
        ASSERT_GE(snapshot->revision(), last);
        ASSERT_GE(newest(*engine_), snapshot->revision());
        last = snapshot->revision();
      }
    });
  std::uint64_t revision = 1;
  for (int i = 0; i < 200; i++) {
    const std::string value = std::to_string(i);
    revision = commit(*engine_, {set(1, value, revision), set(2, value, revision)}).revision;
  }
  done = true;
  for (auto &thread : readers) thread.join();
  EXPECT_EQ(revision, 201U);
}

TEST_P(EngineConformance, AskingTwiceGivesTheSameEngine) { EXPECT_EQ(open(), engine_); }

TEST_P(EngineConformance, StatusCountsValuesAndNamesReaders) {
  commit(*engine_, {set(1, "a"), set(2, "b"), set(3, "c")}, "log", "token");
  const auto reader = view(*engine_);
  commit(*engine_, {remove(2, 1)}, "log", "other");
  cfg_status_info info;
  ASSERT_EQ(engine_->status(info).code, CFG_OK);
  EXPECT_STREQ(info.engine, GetParam() == Kind::lmdb ? "lmdb" : "memory");
  EXPECT_EQ(info.revision, 2U);
  EXPECT_EQ(info.records, 2U);
  EXPECT_EQ(info.oldest_log, 1U);
  EXPECT_GT(info.used_bytes, 0U);
  ASSERT_EQ(info.reader_count, 1U);
  EXPECT_EQ(info.readers[0].pid, getpid());
  EXPECT_EQ(info.readers[0].revision, 1U);
  EXPECT_GE(info.readers[0].age_ms, 0);
}

TEST_P(EngineConformance, ASoundStoreHasNoProblems) {
  for (int i = 0; i < 300; i++)
    commit(*engine_, {set(static_cast<Key>(i), std::string(static_cast<std::size_t>(i) * 40, 'v'))}, "log",
           "token " + std::to_string(i));
  for (int i = 0; i < 300; i += 3)
    commit(*engine_, {remove(static_cast<Key>(i), static_cast<std::uint64_t>(i) + 1)});
  EXPECT_EQ(problems(*engine_), std::vector<std::string>());
}

TEST_P(EngineConformance, FiftyThousandValuesComeBackInOrderAfterManyChanges) {
  std::map<Key, std::pair<std::uint64_t, std::string>> model;
  std::vector<std::string> texts;
  std::vector<Write> writes;
  texts.reserve(50'000);
  for (Key key = 0; key < 50'000; key++) {
    texts.push_back("value " + std::to_string(key));
    writes.push_back(set(key * 3, texts.back()));
    model[key * 3] = {1, texts.back()};
  }
  ASSERT_EQ(commit(*engine_, writes).revision, 1U);
  for (Key key = 0; key < 150'000; key += 1000) {
    const auto old = model.find(key);
    const std::uint64_t expected = old == model.end() ? 0 : old->second.first;
    const bool take_away = expected != 0 && key % 2000 == 0;
    const auto result = commit(*engine_, {take_away ? remove(key, expected) : set(key, "changed", expected)});
    ASSERT_FALSE(result.stale);
    if (take_away)
      model.erase(key);
    else
      model[key] = {result.revision, "changed"};
  }
  const auto snapshot = view(*engine_);
  const auto cursor = snapshot->cursor();
  bool more = cursor->seek(0);
  for (const auto &[key, stored] : model) {
    ASSERT_TRUE(more);
    ASSERT_EQ(cursor->key(), key);
    ASSERT_EQ(cursor->value().revision, stored.first);
    ASSERT_EQ(cursor->value().bytes, stored.second);
    more = cursor->next();
  }
  EXPECT_FALSE(more);
  cfg_status_info info;
  ASSERT_EQ(engine_->status(info).code, CFG_OK);
  EXPECT_EQ(info.records, model.size());
}

TEST_P(EngineConformance, AChildOfForkIsRefusedAndDisturbsNobody) {
  commit(*engine_, {set(1, "one")});
  auto snapshot = view(*engine_);
  expect_child_succeeds([&] {
    Failure failure;
    if (engine_->snapshot(failure) || failure.code != CFG_E_FORKED) return 1;
    if (engine_->newest(failure) != 0 || failure.code != CFG_E_FORKED) return 2;
    if (commit(*engine_, {set(2, "child")}).failure.code != CFG_E_FORKED) return 3;
    cfg_status_info info;
    if (engine_->status(info).code != CFG_E_FORKED) return 4;
    if (engine_->verify([](const std::string &, const std::string &) {}).code != CFG_E_FORKED) return 5;
    if (engine_->compact(directory_ / "copy").code != CFG_E_FORKED) return 6;
    engine_->clear_dead_readers();
    snapshot.reset();
    engine_.reset();
    return 0;
  });
  // The child has not given the parent's snapshot away: what it reads is not written over.
  const std::string_view bytes = snapshot->get(1).bytes;
  for (std::uint64_t revision = 1; revision <= 50; revision++)
    ASSERT_EQ(commit(*engine_, {set(1, std::to_string(revision), revision)}).revision, revision + 1);
  EXPECT_EQ(bytes, "one");
  EXPECT_EQ(snapshot->get(1).bytes, "one");
}

TEST(MemoryEngine, StoresWithoutANameAreNeverShared) { EXPECT_NE(open_memory(""), open_memory("")); }

TEST(MemoryEngine, AStoreIsGoneWhenItsLastUserIs) {
  auto engine = open_memory("gone");
  commit(*engine, {set(1, "one")});
  engine.reset();
  EXPECT_EQ(newest(*open_memory("gone")), 0U);
}

TEST(MemoryEngine, HasNoFilesToCompact) {
  const TemporaryDirectory directory;
  EXPECT_EQ(open_memory("")->compact(directory / "copy").code, CFG_E_ARGUMENT);
}

}  // namespace
}  // namespace twcfg::testing
