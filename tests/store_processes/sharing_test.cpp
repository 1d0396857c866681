// Several handles of one process on one store, whatever name they use for it.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "child.hpp"
#include "ledger.hpp"
#include "opened.hpp"
#include "scratch.hpp"

using namespace trial;

namespace {

class Sharing : public testing::Test {
 protected:
  Sharing() { ledger::create(open_store(path_, CFG_OPEN_CREATE).get()); }

  // How many of this process's descriptors stand for the store's data.
  int open_data_files() {
    const std::string data = data_file(path_);
    int count = 0;
    for (const auto &entry : std::filesystem::directory_iterator("/proc/self/fd")) {
      std::error_code gone;
      count += std::filesystem::read_symlink(entry.path(), gone) == data;
    }
    return count;
  }

  int mappings_of_data() {
    const std::string data = data_file(path_);
    std::ifstream maps("/proc/self/maps");
    int count = 0;
    for (std::string line; std::getline(maps, line);) count += line.find(data) != std::string::npos;
    return count;
  }

  // Another process commits so often that pages which it believes unused are written over.
  std::string commit_elsewhere(int times) {
    return in_child([&]() -> std::string {
      const Opened store = open_store(path_);
      for (int i = 0; i < times; ++i)
        if (std::string problem = ledger::move_and_commit(store.get(), static_cast<uint32_t>(i));
            !problem.empty())
          return problem;
      return "";
    });
  }

  Scratch scratch_;
  const std::string path_ = std::filesystem::canonical(scratch_.path()).string() + "/store";
};

}  // namespace

TEST_F(Sharing, HandlesOfOneProcessShareOneEnvironment) {
  const Opened first = open_store(path_);
  const int files = open_data_files(), mappings = mappings_of_data();
  EXPECT_GT(files, 0);
  EXPECT_EQ(mappings, 1);
  std::filesystem::create_directory_symlink(path_, scratch_.path() + "/link");
  const Opened second = open_store(path_), third = open_store(scratch_.path() + "/./store/../store/"),
               fourth = open_store(scratch_.path() + "/link");
  EXPECT_EQ(open_data_files(), files);
  EXPECT_EQ(mappings_of_data(), mappings);
  EXPECT_EQ(ledger::move_and_commit(second.get(), 1), "");
  EXPECT_EQ(ledger::move_and_commit(third.get(), 2), "");
  EXPECT_EQ(ledger::move_and_commit(fourth.get(), 3), "");
  ASSERT_TRUE(cfg_refresh(first.get()));
  EXPECT_EQ(ledger::moves(first.get()), 3);
}

TEST_F(Sharing, HandlesOfOneProcessConflictLikeThoseOfTwo) {
  const Opened first = open_store(path_), second = open_store(path_);
  ASSERT_TRUE(ledger::move(first.get(), 1));
  ASSERT_TRUE(ledger::move(second.get(), 1));
  ASSERT_TRUE(cfg_commit(first.get(), nullptr)) << explain(first.get());
  EXPECT_FALSE(cfg_commit(second.get(), nullptr));
  EXPECT_EQ(cfg_error_code(second.get()), CFG_E_CONFLICT);
  cfg_abandon(second.get());
  EXPECT_EQ(ledger::check(second.get()), "");
}

TEST_F(Sharing, ClosingOneHandleLeavesTheOthersTheirSnapshots) {
  const Opened keeper = open_store(path_);
  const std::string before = export_text(keeper.get());
  for (int i = 0; i < 3; ++i) {
    Opened passing = open_store(path_);
    EXPECT_EQ(ledger::check(passing.get()), "");
    passing.reset();
    cfg_failure failure{};
    EXPECT_FALSE(cfg_open(path_.c_str(), 1U << 30, &failure)) << "an open that fails";
    // The other process clears away dead readers when it opens: it must still see that this one lives.
    EXPECT_EQ(commit_elsewhere(60), "");
    EXPECT_EQ(export_text(keeper.get()), before) << "pages of a held snapshot were overwritten";
  }
  ASSERT_TRUE(cfg_refresh(keeper.get()));
  EXPECT_EQ(ledger::moves(keeper.get()), 180);
  EXPECT_EQ(ledger::check(keeper.get()), "");
}

TEST_F(Sharing, ClosingTheLastHandleReleasesFilesAndMapping) {
  { const Opened first = open_store(path_), second = open_store(path_); }
  EXPECT_EQ(open_data_files(), 0);
  EXPECT_EQ(mappings_of_data(), 0);
  EXPECT_EQ(ledger::check(open_store(path_).get()), "");
}

TEST_F(Sharing, AStoreThatWasReplacedUnderneathIsAnotherStore) {
  const Opened old = open_store(path_);
  std::filesystem::rename(path_, path_ + ".old");
  const Opened fresh = open_store(path_, CFG_OPEN_CREATE);
  EXPECT_EQ(cfg_revision(fresh.get()), 0U);
  EXPECT_EQ(ledger::check(old.get()), "");
  EXPECT_EQ(ledger::move_and_commit(old.get(), 1), "");
  EXPECT_EQ(cfg_revision(fresh.get()), 0U);
  ledger::create(fresh.get());
  EXPECT_EQ(ledger::moves(fresh.get()), 0);
  EXPECT_EQ(ledger::moves(old.get()), 1);
}
