// Readers that die while they hold a snapshot.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>

#include "child.hpp"
#include "opened.hpp"
#include "scratch.hpp"

using namespace trial;

namespace {

constexpr int kCommits = 800;
constexpr uint64_t kMiB = 1024 * 1024;

class DeadReader : public testing::Test {
 protected:
  // Rewrites 24 kB of text, so that pages kept for a reader add up quickly.
  static bool rewrite(cfg *edit, int round) {
    const std::string text(1500, static_cast<char>('a' + round % 26));
    for (int i = 0; i < 16; ++i)
      if (!cfg_map_set_string(edit, cfg_root(edit), ("text " + std::to_string(i)).c_str(), text.c_str()))
        return false;
    return true;
  }

  // Commits many times through a handle that has been open since before the reader went away.
  static uint64_t file_bytes_after_commits(cfg *store) {
    for (int round = 1; round <= kCommits; ++round)
      commit_now(store, [=](cfg *edit) { return rewrite(edit, round); });
    cfg_status_info status{};
    EXPECT_TRUE(cfg_status(store, &status)) << explain(store);
    return status.file_bytes;
  }

  // Waits for the store to be there and holds a snapshot of it until the end.
  std::string read_and_hold(Line &parent) {
    if (!parent.wait()) return "no word";
    const Opened store = open_store(path_, CFG_OPEN_READ_ONLY);
    if (cfg_revision(store.get()) == 0) return "no snapshot";
    parent.say("holding");
    for (;;) pause();
  }

  Scratch scratch_;
  const std::string path_ = scratch_.store();
};

}  // namespace

TEST_F(DeadReader, AReaderThatWasKilledDoesNotMakeTheFileGrow) {
  Child reader([this](Line &parent) { return read_and_hold(parent); });
  const Opened store = open_store(path_, CFG_OPEN_CREATE);
  commit_now(store.get(), [](cfg *edit) { return rewrite(edit, 0); });
  ASSERT_TRUE(reader.line().say("go") && reader.line().wait()) << reader.finish();
  reader.kill_now();
  ASSERT_EQ(reader.finish(), "signal 9");
  const uint64_t size = file_bytes_after_commits(store.get());
  std::printf("%d commits after the reader's death: %lu kB\n", kCommits,
              static_cast<unsigned long>(size / 1024));
  EXPECT_LT(size, 6 * kMiB);
}

// What the test above would see if the dead were never noticed: the living hold their pages.
TEST_F(DeadReader, AReaderThatLivesKeepsItsSnapshotAndSoTheFileGrows) {
  Child reader([this](Line &parent) { return read_and_hold(parent); });
  const Opened store = open_store(path_, CFG_OPEN_CREATE);
  commit_now(store.get(), [](cfg *edit) { return rewrite(edit, 0); });
  ASSERT_TRUE(reader.line().say("go") && reader.line().wait()) << reader.finish();
  EXPECT_GT(file_bytes_after_commits(store.get()), 12 * kMiB);
}

TEST_F(DeadReader, ReadersKilledOneAfterTheOtherNeverFillTheTableOfReaders) {
  commit_now(open_store(path_, CFG_OPEN_CREATE).get(), [](cfg *edit) { return rewrite(edit, 0); });
  for (int round = 0; round < 300; ++round) {
    Child reader([this](Line &parent) { return read_and_hold(parent); });
    ASSERT_TRUE(reader.line().say("go") && reader.line().wait())
        << "round " << round << ": " << reader.finish();
    reader.kill_now();
    ASSERT_EQ(reader.finish(), "signal 9");
  }
  const Opened store = open_store(path_);
  commit_now(store.get(), [](cfg *edit) { return rewrite(edit, 1); });
  EXPECT_EQ(problems(store.get()), "");
}
