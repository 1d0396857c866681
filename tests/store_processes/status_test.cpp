// What cfg_status() tells about the store and about those who read it.
#include <gtest/gtest.h>
#include <unistd.h>

#include <string>

#include "child.hpp"
#include "ledger.hpp"
#include "opened.hpp"
#include "scratch.hpp"

using namespace trial;

namespace {

class Status : public testing::Test {
 protected:
  static cfg_status_info status_of(cfg *store) {
    cfg_status_info status{};
    EXPECT_TRUE(cfg_status(store, &status)) << explain(store);
    return status;
  }

  // The entry of a process, or NULL.
  static const cfg_reader_info *reader(const cfg_status_info &status, pid_t pid) {
    for (uint32_t i = 0; i < status.reader_count; ++i)
      if (status.readers[i].pid == pid) return &status.readers[i];
    return nullptr;
  }

  Scratch scratch_;
  const std::string path_ = scratch_.store();
};

}  // namespace

TEST_F(Status, AReaderOfAnotherProcessIsShownWithPidRevisionAndAgeAndGoneWhenItIs) {
  Child child([this](Line &parent) -> std::string {
    if (!parent.wait()) return "no word";
    Opened store = open_store(path_);
    parent.say(std::to_string(cfg_revision(store.get())));
    if (!parent.wait()) return "no word";
    if (!cfg_park(store.get())) return explain(store.get());
    parent.say("parked");
    return parent.wait() ? "" : "no word";
  });
  const Opened store = open_store(path_, CFG_OPEN_CREATE);
  ledger::create(store.get());
  std::string revision;
  ASSERT_TRUE(child.line().say("go") && child.line().hear(revision));
  for (uint32_t i = 0; i < 5; ++i) ASSERT_EQ(ledger::move_and_commit(store.get(), i), "");
  usleep(30000);

  cfg_status_info status = status_of(store.get());
  EXPECT_STREQ(status.engine, "lmdb");
  EXPECT_EQ(status.revision, 6U);
  const cfg_reader_info *shown = reader(status, child.pid());
  ASSERT_TRUE(shown);
  EXPECT_EQ(std::to_string(shown->revision), revision) << "the snapshot that it holds";
  if (shown->age_ms != -1) {  // -1: not known
    EXPECT_GE(shown->age_ms, 20) << "30 ms less what a coarse clock may miss";
    EXPECT_LT(shown->age_ms, 120000);
  }
  ASSERT_TRUE(child.line().say("park") && child.line().wait());
  status = status_of(store.get());
  EXPECT_FALSE(reader(status, child.pid())) << "a parked handle holds no snapshot";
  ASSERT_TRUE(child.line().say("end"));
  EXPECT_EQ(child.finish(), "");
}

TEST_F(Status, TheAgeOfThisProcessesOwnSnapshotIsKnown) {
  const Opened writer = open_store(path_, CFG_OPEN_CREATE);
  ledger::create(writer.get());
  const Opened holder = open_store(path_);
  ASSERT_EQ(cfg_revision(holder.get()), 1U);
  usleep(30000);
  const cfg_status_info status = status_of(writer.get());
  const cfg_reader_info *shown = reader(status, getpid());
  ASSERT_TRUE(shown);
  EXPECT_GE(shown->age_ms, 20) << "30 ms less what a coarse clock may miss";
  EXPECT_LT(shown->age_ms, 120000);
}

TEST_F(Status, AKilledReaderIsNotShownForEver) {
  Child child([this](Line &parent) -> std::string {
    if (!parent.wait()) return "no word";
    const Opened store = open_store(path_);
    parent.say(std::to_string(cfg_revision(store.get())));
    for (;;) pause();
  });
  ledger::create(open_store(path_, CFG_OPEN_CREATE).get());
  ASSERT_TRUE(child.line().say("go") && child.line().wait());
  const pid_t pid = child.pid();
  child.kill_now();
  ASSERT_EQ(child.finish(), "signal 9");
  const Opened store = open_store(path_);  // opening clears away the dead
  const cfg_status_info status = status_of(store.get());
  EXPECT_FALSE(reader(status, pid));
}

TEST_F(Status, SizesAreThoseOfTheFile) {
  const Opened store = open_store(path_, CFG_OPEN_CREATE);
  ledger::create(store.get());
  const cfg_status_info status = status_of(store.get());
  EXPECT_EQ(status.file_bytes, read_file(data_file(path_)).size());
  EXPECT_GT(status.used_bytes, 0U);
  EXPECT_LE(status.used_bytes, status.file_bytes);
  EXPECT_GE(status.map_bytes, status.file_bytes);
  EXPECT_EQ(status.oldest_log, 1U);
  EXPECT_GE(status.records, 1U + ledger::kAccounts);
}
