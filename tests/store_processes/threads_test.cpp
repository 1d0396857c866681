// Different handles in different threads of one process, on a file and in memory.
#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <mutex>
#include <set>
#include <thread>
#include <vector>

#include "ledger.hpp"
#include "opened.hpp"
#include "scratch.hpp"

using namespace trial;

namespace {

constexpr int kThreads = 4;
constexpr int kRounds = 40;

// Runs a body in several threads, each with its number, and expects no complaint from any.
void in_threads(int count, const std::function<std::string(int)> &body) {
  std::vector<std::string> complaints(static_cast<size_t>(count));
  std::vector<std::thread> threads;
  for (int i = 0; i < count; ++i)
    threads.emplace_back([&, i] {
      try {
        complaints[static_cast<size_t>(i)] = body(i);
      } catch (const std::exception &problem) {
        complaints[static_cast<size_t>(i)] = problem.what();
      }
    });
  for (std::thread &thread : threads) thread.join();
  for (const std::string &complaint : complaints) EXPECT_EQ(complaint, "");
}

class Threads : public testing::TestWithParam<std::string> {
 protected:
  Threads() { ledger::create(keeper_.get()); }

  Opened open() const {
    if (GetParam() == "file") return open_store(scratch_.store(), CFG_OPEN_CREATE);
    return Opened(cfg_open_memory("shared by threads", nullptr));
  }

  Scratch scratch_;
  Opened keeper_ = open();  // keeps the memory store alive, as a daemon's main thread would
};

}  // namespace

TEST_P(Threads, WritersRetryAndReadersSeeWholeCommits) {
  std::atomic<int> writers = 2;
  in_threads(kThreads, [&](int number) -> std::string {
    const Opened store = open();
    if (number < 2) {
      std::string problem;
      for (uint32_t round = 0; round < kRounds && problem.empty(); ++round)
        problem = ledger::move_and_commit(store.get(), round * 7 + static_cast<uint32_t>(number));
      --writers;
      return problem;
    }
    while (writers > 0) {
      if (!cfg_refresh(store.get())) return "refresh: " + explain(store.get());
      if (std::string problem = ledger::check(store.get()); !problem.empty()) return problem;
    }
    return "";
  });
  ASSERT_TRUE(cfg_refresh(keeper_.get()));
  EXPECT_EQ(ledger::moves(keeper_.get()), 2 * kRounds);
  EXPECT_EQ(ledger::check(keeper_.get()), "");
  EXPECT_EQ(problems(keeper_.get()), "");
}

TEST_P(Threads, EntriesAppendedByManyThreadsGetNumbersOfTheirOwn) {
  std::mutex guard;
  std::set<std::string> ids;
  in_threads(kThreads, [&](int number) -> std::string {
    const Opened store = open();
    for (int round = 0; round < kRounds; ++round) {
      cfg_elem *entry = append_number(store.get(), "accounts", "owner", number);
      if (!cfg_commit(store.get(), nullptr)) return explain(store.get());
      const std::lock_guard<std::mutex> lock(guard);
      if (!ids.insert(id_of(entry)).second) return id_of(entry) + " was given out twice";
    }
    return "";
  });
  ASSERT_TRUE(cfg_refresh(keeper_.get()));
  EXPECT_EQ(list_size(keeper_.get(), "accounts"), ledger::kAccounts + kThreads * kRounds);
}

TEST_P(Threads, HandlesAreOpenedAndClosedWhileOthersWork) {
  in_threads(kThreads, [&](int number) -> std::string {
    for (uint32_t round = 0; round < kRounds / 2; ++round) {
      const Opened store = open();
      if (std::string problem = ledger::check(store.get()); !problem.empty()) return problem;
      if (number == 0)
        if (std::string problem = ledger::move_and_commit(store.get(), round); !problem.empty())
          return problem;
    }
    return "";
  });
}

TEST_P(Threads, SearchesStatusVerifyAndExportRunBesideAWriter) {
  std::atomic<bool> writing = true;
  in_threads(kThreads, [&](int number) -> std::string {
    const Opened store = open();
    if (number == 0) {
      std::string problem;
      for (uint32_t round = 0; round < kRounds && problem.empty(); ++round)
        problem = ledger::move_and_commit(store.get(), round);
      writing = false;
      return problem;
    }
    while (writing) {
      if (!cfg_refresh(store.get())) return "refresh: " + explain(store.get());
      cfg_status_info status;
      if (number == 1 && !cfg_status(store.get(), &status)) return "status: " + explain(store.get());
      if (number == 2)
        if (std::string problem = problems(store.get()); !problem.empty()) return problem;
      if (number == 3) {
        cfg_condition *absent = cfg_new_untyped_condition("nothing", CFG_OP_ABSENT);
        int32_t found = -1;
        const bool counted = cfg_list_size(cfg_search(store.get(), "journal", absent), &found) != 0;
        cfg_free_conditions(absent);
        if (!counted || found != ledger::moves(store.get()))
          return std::to_string(found) + " found: " + explain(store.get());
        export_text(store.get());
      }
    }
    return "";
  });
}

TEST_P(Threads, AHandleMayMoveToAnotherThread) {
  Opened store = open();
  ASSERT_TRUE(ledger::move(store.get(), 1));
  in_threads(1, [&](int) -> std::string {
    if (!cfg_commit(store.get(), nullptr)) return explain(store.get());
    store.reset();
    return "";
  });
  ASSERT_TRUE(cfg_refresh(keeper_.get()));
  EXPECT_EQ(ledger::moves(keeper_.get()), 1);
}

// A memory store would be gone with its last handle.
TEST(ThreadsOnAFile, TheLastHandleIsClosedWhileAnotherThreadOpens) {
  const Scratch scratch;
  ledger::create(open_store(scratch.store(), CFG_OPEN_CREATE).get());
  in_threads(kThreads, [&](int) -> std::string {
    for (int round = 0; round < kRounds; ++round)
      if (std::string problem = ledger::check(open_store(scratch.store()).get()); !problem.empty())
        return problem;
    return "";
  });
}

INSTANTIATE_TEST_SUITE_P(Stores, Threads, testing::Values(std::string("file"), std::string("memory")),
                         [](const auto &store) { return store.param; });
