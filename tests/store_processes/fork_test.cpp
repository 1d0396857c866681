// What happens to an open store when its process forks.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <thread>
#include <vector>

#include "child.hpp"
#include "ledger.hpp"
#include "opened.hpp"
#include "scratch.hpp"

using namespace trial;

namespace {

class Fork : public testing::Test {
 protected:
  Fork() { ledger::create(store_.get()); }

  // The parent's handle reads, edits and commits as if there had been no child.
  void expect_parent_works() {
    EXPECT_EQ(ledger::check(store_.get()), "");
    EXPECT_EQ(ledger::move_and_commit(store_.get(), 11), "");
    EXPECT_EQ(ledger::check(store_.get()), "");
    EXPECT_EQ(problems(store_.get()), "");
    EXPECT_EQ(in_child([this]() -> std::string { return ledger::check(open_store(path_).get()); }), "")
        << "what another process sees";
  }

  Scratch scratch_;
  const std::string path_ = scratch_.store();
  Opened store_ = open_store(path_, CFG_OPEN_CREATE);
};

// Forks and leaves the child by exit(), as a program that knows nothing of the store does.
int exit_status_of_child(const std::function<void()> &body) {
  std::fflush(nullptr);
  const pid_t pid = fork();
  if (pid == 0) {
    body();
    std::exit(0);
  }
  int status = -1;
  return waitpid(pid, &status, 0) == pid ? status : -1;
}

int refuse_nothing(void *, const char *, size_t) { return 1; }
int ignore_change(void *, const cfg_change *) { return 1; }
int ignore_commit(void *, const cfg_commit_info *) { return 1; }

}  // namespace

TEST_F(Fork, EveryCallOnAnInheritedHandleIsRefused) {
  cfg *store = store_.get();
  cfg_elem *root = cfg_root(store);
  cfg_elem *journal = cfg_get_by_path(store, "journal");
  const std::string complaint = in_child([&]() -> std::string {
    std::string wrong;
    const auto refused = [&](const char *call, bool succeeded) {
      if (succeeded) wrong += std::string(call) + " succeeded; ";
      if (cfg_error_code(store) != CFG_E_FORKED) wrong += std::string(call) + ": " + explain(store) + "; ";
    };
    int32_t number = 0;
    uint64_t revision = 0;
    cfg_status_info status;
    refused("cfg_root", cfg_root(store) != nullptr);
    refused("cfg_get_by_path", cfg_get_by_path(store, "journal") != nullptr);
    refused("cfg_get_by_id", cfg_get_by_id(store, "journal") != nullptr);
    refused("cfg_map_get_int", cfg_map_get_int(store, root, "moves", &number) != 0);
    refused("cfg_map_set_int", cfg_map_set_int(store, root, "moves", 5) != 0);
    refused("cfg_map_delete_key", cfg_map_delete_key(store, root, "moves") != 0);
    refused("cfg_list_size", cfg_list_size(journal, &number) != 0);
    refused("cfg_new_map", cfg_new_map(store) != nullptr);
    refused("cfg_commit", cfg_commit(store, nullptr) != 0);
    refused("cfg_refresh", cfg_refresh(store) != 0);
    refused("cfg_park", cfg_park(store) != 0);
    refused("cfg_status", cfg_status(store, &status) != 0);
    refused("cfg_verify", cfg_verify(store, nullptr, nullptr) != 0);
    refused("cfg_export", cfg_export(store, refuse_nothing, nullptr) != 0);
    refused("cfg_find_commit", cfg_find_commit(store, "t", &revision) != 0);
    refused("cfg_visit_log", cfg_visit_log(store, 0, ignore_commit, nullptr) != 0);
    refused("cfg_visit_changes", cfg_visit_changes(store, ignore_change, nullptr) != 0);
    refused("cfg_compact", cfg_compact(store, (scratch_.path() + "/copy").c_str()) != 0);
    cfg_abandon(store);
    return wrong;
  });
  EXPECT_EQ(complaint, "");
  expect_parent_works();
}

TEST_F(Fork, AChildThatClosesTheInheritedHandleLeavesTheParentsWorking) {
  ASSERT_TRUE(ledger::move(store_.get(), 5));
  EXPECT_EQ(exit_status_of_child([this] { store_.reset(); }), 0);
  ASSERT_TRUE(cfg_commit(store_.get(), nullptr)) << explain(store_.get());
  expect_parent_works();
}

TEST_F(Fork, AChildThatJustExitsLeavesTheParentsHandleAndEditWorking) {
  ASSERT_TRUE(ledger::move(store_.get(), 5));
  EXPECT_EQ(exit_status_of_child([] {}), 0);
  EXPECT_TRUE(cfg_has_changes(store_.get()));
  ASSERT_TRUE(cfg_commit(store_.get(), nullptr)) << explain(store_.get());
  EXPECT_EQ(ledger::moves(store_.get()), 1);
  expect_parent_works();
}

TEST_F(Fork, AChildThatClosesItsHandleKeepsTheParentsSnapshotFromBeingReused) {
  const std::string before = export_text(store_.get());
  EXPECT_EQ(exit_status_of_child([this] { store_.reset(); }), 0);
  EXPECT_EQ(in_child([this]() -> std::string {
              const Opened own = open_store(path_);
              for (uint32_t i = 0; i < 100; ++i)
                if (std::string problem = ledger::move_and_commit(own.get(), i); !problem.empty())
                  return problem;
              return "";
            }),
            "");
  EXPECT_EQ(export_text(store_.get()), before) << "pages of a held snapshot were overwritten";
  ASSERT_TRUE(cfg_refresh(store_.get()));
  EXPECT_EQ(ledger::moves(store_.get()), 100);
}

TEST_F(Fork, AChildCanOpenTheStoreForItself) {
  ASSERT_EQ(ledger::moves(store_.get()), 0);
  EXPECT_EQ(in_child([this]() -> std::string {
              const Opened own = open_store(path_);
              if (std::string problem = ledger::move_and_commit(own.get(), 3); !problem.empty())
                return problem;
              store_.reset();
              return ledger::check(own.get());
            }),
            "");
  EXPECT_EQ(ledger::moves(store_.get()), 0) << "the parent's snapshot";
  ASSERT_TRUE(cfg_refresh(store_.get())) << explain(store_.get());
  EXPECT_EQ(ledger::moves(store_.get()), 1);
  expect_parent_works();
}

TEST_F(Fork, AGrandchildIsRefusedToo) {
  EXPECT_EQ(in_child([this]() -> std::string {
              const Opened own = open_store(path_);
              return in_child([&]() -> std::string {
                if (cfg_root(own.get()) || cfg_error_code(own.get()) != CFG_E_FORKED)
                  return "own: " + explain(own.get());
                if (cfg_root(store_.get())) return "the first process's handle works";
                return "";
              });
            }),
            "");
  expect_parent_works();
}

TEST_F(Fork, AnInMemoryHandleIsRefusedInAChildToo) {
  const Opened memory(cfg_open_memory(nullptr, nullptr));
  ASSERT_TRUE(memory);
  EXPECT_EQ(in_child([&]() -> std::string {
              if (cfg_root(memory.get())) return "the root was given out";
              return cfg_error_code(memory.get()) == CFG_E_FORKED ? "" : explain(memory.get());
            }),
            "");
  EXPECT_TRUE(cfg_root(memory.get()));
}

TEST_F(Fork, AChildForkedWhileThreadsWorkIsRefusedTheirHandlesAndHasItsOwn) {
  std::atomic<bool> working = true;
  std::vector<std::thread> threads;
  for (uint32_t number = 0; number < 2; ++number)
    threads.emplace_back([this, number, &working] {
      for (uint32_t round = 0; working; ++round) {
        const Opened store = open_store(path_);
        ledger::move_and_commit(store.get(), round * 2 + number);
      }
    });
  for (int round = 0; round < 40 && !HasFailure(); ++round)
    EXPECT_EQ(in_child([this]() -> std::string {
                if (cfg_root(store_.get()) || cfg_error_code(store_.get()) != CFG_E_FORKED)
                  return "inherited: " + explain(store_.get());
                return ledger::check(open_store(path_).get());
              }),
              "")
        << "round " << round;
  working = false;
  for (std::thread &thread : threads) thread.join();
  ASSERT_TRUE(cfg_refresh(store_.get()));
  expect_parent_works();
}

TEST_F(Fork, AnExecutedProgramInheritsNoFileOfTheStore) {
  const auto files_seen_by_ls = [this]() -> std::string {
    int out[2];
    if (pipe(out) != 0) return "no pipe";
    std::fflush(nullptr);
    const pid_t pid = fork();
    if (pid == 0) {
      dup2(out[1], STDOUT_FILENO);
      execl("/bin/ls", "ls", "-l", "/proc/self/fd", nullptr);
      _exit(127);
    }
    close(out[1]);
    std::string listing;
    char buffer[4096];
    for (ssize_t got; (got = read(out[0], buffer, sizeof buffer)) > 0;)
      listing.append(buffer, static_cast<size_t>(got));
    close(out[0]);
    waitpid(pid, nullptr, 0);
    EXPECT_NE(listing.find("pipe:"), std::string::npos) << "ls did not run";
    return listing.find(scratch_.path()) == std::string::npos ? "" : listing;
  };
  EXPECT_EQ(files_seen_by_ls(), "");
  // The look-out itself works: a file opened without close-on-exec is seen.
  FILE *leaky = std::fopen((scratch_.path() + "/leaky").c_str(), "w");
  ASSERT_TRUE(leaky);
  EXPECT_NE(files_seen_by_ls(), "");
  std::fclose(leaky);
}
