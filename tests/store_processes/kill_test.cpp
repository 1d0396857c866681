// Sudden death of writers and creators at any moment: nothing acknowledged is lost, nothing half done is
// seen, nobody has to clean up.
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <random>

#include "child.hpp"
#include "ledger.hpp"
#include "opened.hpp"
#include "scratch.hpp"

using namespace trial;

namespace {

using Clock = std::chrono::steady_clock;

// On a machine so slow that all rounds would take longer than this, fewer are made; but never fewer than
// that.
constexpr std::chrono::seconds kLongest{8};
constexpr int kFewest = 20;

class Kill : public testing::Test {
 protected:
  // About as long as a commit takes.
  void wait_a_moment() { usleep(static_cast<useconds_t>(random_() % 6000)); }

  // Kills a writer somewhere between its start and its fourth commit.
  int kill_at_random(Child &writer, int acknowledged) {
    std::string message;
    for (uint32_t commits = static_cast<uint32_t>(random_() % 4); commits > 0 && writer.line().hear(message);
         --commits)
      acknowledged = std::stoi(message);
    wait_a_moment();
    writer.kill_now();
    while (writer.line().hear(message)) acknowledged = std::stoi(message);
    return acknowledged;
  }

  template <typename Round>
  int repeat(int rounds, Round round) {
    const auto end = Clock::now() + kLongest;
    int done = 0;
    while (done < rounds && (done < kFewest || Clock::now() < end) && !HasFailure()) round(done++);
    return done;
  }

  Scratch scratch_;
  const std::string path_ = scratch_.store();
  std::mt19937 random_{20240229};
};

// Moves until it is killed and says after each commit how many moves the store has for sure.
std::string move_for_ever(const std::string &path, uint32_t seed, Line &parent) {
  const Opened store = open_store(path);
  for (;; seed += 13) {
    if (std::string problem = ledger::move_and_commit(store.get(), seed); !problem.empty()) return problem;
    if (!parent.say(std::to_string(ledger::moves(store.get())))) return "nobody listens";
  }
}

// Opens, reads and closes until it is killed, and says so each time.
std::string read_for_ever(const std::string &path, Line &parent) {
  for (int round = 0;; ++round) {
    const Opened store = open_store(path);
    if (std::string problem = ledger::check(store.get()); !problem.empty()) return problem;
    if (!parent.say(std::to_string(round))) return "nobody listens";
  }
}

}  // namespace

TEST_F(Kill, AKilledWriterLosesNothingAcknowledgedLeavesNothingHalfDoneAndNothingToCleanUp) {
  ledger::create(open_store(path_, CFG_OPEN_CREATE).get());
  int before = 0, cut_short = 0;
  const int rounds = repeat(200, [&](int round) {
    Child writer(
        [&](Line &parent) { return move_for_ever(path_, static_cast<uint32_t>(round) * 101, parent); });
    const int acknowledged = kill_at_random(writer, before);
    ASSERT_EQ(writer.finish(), "signal 9");

    const Opened store = open_store(path_);
    const int found = ledger::moves(store.get());
    EXPECT_GE(found, acknowledged) << "round " << round << ": an acknowledged commit is gone";
    EXPECT_LE(found, acknowledged + 1) << "round " << round;
    EXPECT_EQ(ledger::check(store.get()), "") << "round " << round;
    EXPECT_EQ(problems(store.get()), "") << "round " << round;
    ASSERT_TRUE(ledger::move(store.get(), 77)) << explain(store.get());
    EXPECT_TRUE(cfg_commit(store.get(), nullptr)) << "round " << round << ": " << explain(store.get());
    EXPECT_EQ(ledger::check(store.get()), "") << "round " << round;
    cut_short += found > acknowledged;
    before = ledger::moves(store.get());
  });
  std::printf("%d rounds, %d moves, %d commits were done but not acknowledged\n", rounds, before, cut_short);
  EXPECT_GT(before, rounds + rounds / 2) << "the killed writers got no work done: this tests nothing";
}

TEST_F(Kill, OtherProcessesGoOnWhenAWriterOrReaderIsKilled) {
  ledger::create(open_store(path_, CFG_OPEN_CREATE).get());
  Child survivor([this](Line &parent) -> std::string {
    const Opened store = open_store(path_);
    uint32_t seed = 1;
    while (parent.wait()) {  // one word from the test, one move
      if (std::string problem = ledger::move_and_commit(store.get(), seed += 17); !problem.empty())
        return problem;
      if (std::string problem = ledger::check(store.get()); !problem.empty()) return problem;
      if (!parent.say("moved")) return "nobody listens";
    }
    return "";
  });
  repeat(100, [&](int round) {
    Child victim([&](Line &parent) {
      return round % 2 ? read_for_ever(path_, parent)
                       : move_for_ever(path_, static_cast<uint32_t>(round) * 11, parent);
    });
    ASSERT_TRUE(survivor.line().say("move"));
    kill_at_random(victim, 0);
    ASSERT_TRUE(survivor.line().wait()) << "round " << round << ": " << survivor.finish();
    ASSERT_EQ(victim.finish(), "signal 9");
    ASSERT_TRUE(survivor.line().say("move"));
    ASSERT_TRUE(survivor.line().wait()) << "round " << round << ": " << survivor.finish();
  });
  shutdown(survivor.line().descriptor(), SHUT_WR);
  EXPECT_EQ(survivor.finish(), "");
  const Opened store = open_store(path_);
  EXPECT_EQ(ledger::check(store.get()), "");
  EXPECT_EQ(problems(store.get()), "");
}

TEST_F(Kill, AStoreWhoseCreatorWasKilledCanBeCreatedAgain) {
  int nothing = 0, empty = 0, filled = 0;
  const int rounds = repeat(150, [&](int round) {
    std::filesystem::remove_all(path_);
    Child creator([this](Line &parent) -> std::string {
      const Opened store = open_store(path_, CFG_OPEN_CREATE);
      parent.say("opened");
      ledger::create(store.get());
      parent.say("filled");
      for (;;) pause();
    });
    for (int stage = round % 3; stage > 0; --stage) ASSERT_TRUE(creator.line().wait());
    if (round % 3 != 2) wait_a_moment();
    creator.kill_now();
    ASSERT_EQ(creator.finish(), "signal 9");
    nothing += !std::filesystem::exists(path_);

    const Opened store = open_store(path_, CFG_OPEN_CREATE);
    EXPECT_EQ(problems(store.get()), "") << "round " << round;
    if (cfg_revision(store.get()) == 0) {
      ++empty;
      ledger::create(store.get());
    } else {
      ++filled;
    }
    EXPECT_EQ(ledger::check(store.get()), "") << "round " << round;
    EXPECT_EQ(ledger::move_and_commit(store.get(), 5), "") << "round " << round;
  });
  EXPECT_GE(filled, rounds / 3);
  std::printf("%d rounds: %d without directory, %d empty in all, %d filled\n", rounds, nothing, empty,
              filled);
}

TEST_F(Kill, AKilledCopyingLeavesTheStoreAsItWasAndNoHalfCopyThatOpens) {
  const std::string text(1000000, 't');
  const auto holds_text = [&](cfg *store) {
    char *found = nullptr;
    const bool held = cfg_map_get_string(store, cfg_root(store), "text", &found) && text == found;
    free(found);
    return held;
  };
  commit_now(open_store(path_, CFG_OPEN_CREATE).get(),
             [&](cfg *edit) { return cfg_map_set_string(edit, cfg_root(edit), "text", text.c_str()) != 0; });
  int none = 0, refused = 0, whole = 0;
  const int rounds = repeat(60, [&](int round) {
    const std::string copy = scratch_.path() + "/copy" + std::to_string(round);
    Child copier([&](Line &parent) -> std::string {
      const Opened store = open_store(path_);
      parent.say("opened");
      if (!cfg_compact(store.get(), copy.c_str())) return explain(store.get());
      parent.say("copied");
      for (;;) pause();
    });
    for (int stage = round % 4 == 3 ? 2 : 1; stage > 0; --stage) ASSERT_TRUE(copier.line().wait());
    if (round % 4 != 3) wait_a_moment();
    copier.kill_now();
    ASSERT_EQ(copier.finish(), "signal 9");
    cfg_failure failure{};
    const Opened opened(cfg_open(copy.c_str(), 0, &failure));
    if (opened) {
      EXPECT_TRUE(holds_text(opened.get())) << "round " << round;
      EXPECT_EQ(problems(opened.get()), "") << "round " << round;
    }
    none += !opened && failure.code == CFG_E_NOT_FOUND;
    refused += !opened && failure.code != CFG_E_NOT_FOUND;
    whole += opened != nullptr;
  });
  std::printf("%d rounds: %d without a copy, %d refused, %d whole\n", rounds, none, refused, whole);
  EXPECT_GE(whole, rounds / 4);
  const Opened store = open_store(path_);
  EXPECT_TRUE(holds_text(store.get()));
  EXPECT_EQ(problems(store.get()), "");
}

// The check that all of this rests on must fail when one of the writes of a move is missing or alone.
TEST_F(Kill, TheLedgersCheckDetectsHalfAMove) {
  const auto entry = [](cfg *edit, const char *list, int index) {
    return cfg_simple_get_listelem(edit, cfg_get_by_path(edit, list), index);
  };
  const Change halves[] = {
      [](cfg *edit) { return set_number(edit, "moves", ledger::moves(edit) + 1); },
      [&](cfg *edit) { return cfg_map_set_int(edit, entry(edit, "accounts", 2), "balance", 1) != 0; },
      [](cfg *edit) { return append_number(edit, "journal", "number", ledger::moves(edit) + 1) != nullptr; },
      [&](cfg *edit) { return cfg_delete_element(edit, entry(edit, "journal", 0)) != 0; },
      [&](cfg *edit) { return cfg_delete_element(edit, entry(edit, "accounts", 7)) != 0; },
  };
  int number = 0;
  for (const Change &half : halves) {
    const Opened store = open_store(path_ + std::to_string(++number), CFG_OPEN_CREATE);
    ledger::create(store.get());
    ASSERT_EQ(ledger::move_and_commit(store.get(), 42), "");
    ASSERT_EQ(ledger::check(store.get()), "");
    commit_now(store.get(), half);
    EXPECT_NE(ledger::check(store.get()), "") << "half " << number;
  }
}
