// Several processes on one store, some of which die.
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>

#include "engine_fixture.hpp"

namespace twcfg::testing {
namespace {

namespace fs = std::filesystem;

// A child that runs until it returns or is killed, and that can be heard.
class Child {
 public:
  // `body` gets the descriptor to report to.
  explicit Child(const std::function<int(int)> &body) {
    EXPECT_EQ(pipe(pipe_.data()), 0);
    std::fflush(nullptr);
    pid_ = fork();
    if (pid_ == 0) _exit(body(pipe_[1]));
    close(pipe_[1]);
  }
  Child(const Child &) = delete;
  Child &operator=(const Child &) = delete;
  ~Child() {
    if (pid_ > 0) kill_and_wait();
    close(pipe_[0]);
  }
  pid_t pid() const { return pid_; }
  // The next number that the child reports; 0 when it has ended.
  std::uint64_t hear() const {
    std::uint64_t number = 0;
    return read(pipe_[0], &number, sizeof number) == sizeof number ? number : 0;
  }
  int wait() {
    int status = -1;
    EXPECT_EQ(waitpid(std::exchange(pid_, 0), &status, 0) > 0, true);
    return status;
  }
  void kill_and_wait() {
    kill(pid_, SIGKILL);
    wait();
  }

 private:
  std::array<int, 2> pipe_{};
  pid_t pid_ = 0;
};

void tell(int descriptor, std::uint64_t number) {
  if (write(descriptor, &number, sizeof number) != sizeof number) _exit(99);
}

class LmdbProcesses : public ::testing::Test {
 protected:
  TemporaryDirectory directory_;
  const std::string path_ = directory_ / "store";
};

// Adds 1 to the counter under key 1, `times` times. 0 when it could.
int increment(const std::string &path, unsigned options, int times) {
  Failure failure;
  const auto engine = open_lmdb(path, options, failure);
  if (!engine) return 1;
  while (times > 0) {
    const auto snapshot = engine->snapshot(failure);
    if (!snapshot) return 2;
    const Stored old = snapshot->get(1);
    const int count = old ? std::stoi(std::string(old.bytes)) : 0;
    const CommitResult result = commit(*engine, {set(1, std::to_string(count + 1), old.revision)});
    if (result.failure) return 3;
    if (!result.stale) times--;
  }
  return 0;
}

TEST_F(LmdbProcesses, ThatCreateTheStoreAtOnceShareIt) {
  for (int round = 0; round < 10; round++) {
    const std::string path = directory_ / ("store" + std::to_string(round));
    {
      std::vector<std::unique_ptr<Child>> children;
      for (int i = 0; i < 4; i++)
        children.push_back(std::make_unique<Child>([&](int) { return increment(path, CFG_OPEN_CREATE, 5); }));
      for (auto &child : children) EXPECT_EQ(child->wait(), 0);
    }
    EXPECT_EQ(view(*open_store(path, 0))->get(1).bytes, "20");
  }
}

TEST_F(LmdbProcesses, LoseNoIncrement) {
  const auto engine = open_store(path_);
  Child first([&](int) { return increment(path_, 0, 100); });
  Child second([&](int) { return increment(path_, 0, 100); });
  EXPECT_EQ(increment(path_, 0, 100), 0);
  EXPECT_EQ(first.wait(), 0);
  EXPECT_EQ(second.wait(), 0);
  EXPECT_EQ(view(*engine)->get(1).bytes, "300");
  EXPECT_EQ(newest(*engine), 300U);
  EXPECT_EQ(problems(*engine), std::vector<std::string>());
}

TEST_F(LmdbProcesses, ThatAreKilledWhileCreatingLeaveAStoreThatCanBeCreated) {
  for (unsigned i = 0; i < 40; i++) {
    const std::string path = directory_ / ("store" + std::to_string(i));
    {
      Child child([&](int) { return increment(path, CFG_OPEN_CREATE, 1); });
      usleep(i * 50);
      child.kill_and_wait();
    }
    EXPECT_EQ(increment(path, CFG_OPEN_CREATE, 1), 0);
    EXPECT_FALSE(fs::exists(path + "/data.new"));
  }
}

TEST_F(LmdbProcesses, ThatAreKilledWhileCommittingLeaveWholeCommits) {
  const auto engine = open_store(path_);
  commit(*engine, {set(1, "start"), set(2, "start")});
  for (int round = 0; round < 15; round++) {
    std::uint64_t acknowledged = 0;
    {
      Child child([&](int report) {
        Failure failure;
        const auto own = open_lmdb(path_, 0, failure);
        if (!own) return 1;
        for (;;) {
          const auto snapshot = own->snapshot(failure);
          const std::uint64_t expected = snapshot->get(1).revision;
          const std::string value(3000, static_cast<char>('a' + snapshot->revision() % 26));
          tell(report, commit(*own, {set(1, value, expected), set(2, value, expected)}).revision);
        }
      });
      for (int i = 0; i < 10 + round; i++) acknowledged = child.hear();
      child.kill_and_wait();
      while (const std::uint64_t more = child.hear()) acknowledged = more;
    }
    ASSERT_GT(acknowledged, 0U);
    const auto snapshot = view(*engine);
    ASSERT_GE(snapshot->revision(), acknowledged);
    ASSERT_EQ(snapshot->get(1).bytes, snapshot->get(2).bytes);
    ASSERT_EQ(snapshot->get(1).revision, snapshot->revision());
    // A child that dies while its last commit is being flushed has not told readers of it: only the next
    // commit comes upon it, and counts on from there.
    const std::uint64_t next = commit(*engine, {set(3, "x", snapshot->get(3).revision)}).revision;
    ASSERT_GE(next, snapshot->revision() + 1);
    ASSERT_LE(next, snapshot->revision() + 2);
  }
  EXPECT_EQ(problems(*engine), std::vector<std::string>());
}

// A child that holds the newest snapshot until it is killed.
int hold_snapshot(const std::string &path, int report) {
  Failure failure;
  const auto engine = open_lmdb(path, 0, failure);
  const auto snapshot = engine ? engine->snapshot(failure) : nullptr;
  if (!snapshot) return 1;
  tell(report, snapshot->revision());
  for (;;) pause();
}

TEST_F(LmdbProcesses, ThatDieWithASnapshotDoNotMakeTheFileGrow) {
  const auto engine = open_store(path_);
  const std::string value(20'000, 'v');
  std::uint64_t revision = commit(*engine, {set(1, value)}).revision;
  const auto grown_by = [&](int commits) {
    const auto before = fs::file_size(path_ + "/data.mdb");
    for (int i = 0; i < commits; i++) revision = commit(*engine, {set(1, value, revision)}).revision;
    return fs::file_size(path_ + "/data.mdb") - before;
  };
  Child reader([&](int report) { return hold_snapshot(path_, report); });
  ASSERT_EQ(reader.hear(), revision);
  EXPECT_GT(grown_by(300), 5'000'000U) << "a living reader keeps the old pages";
  reader.kill_and_wait();
  grown_by(64);  // until the dead are looked after
  EXPECT_LT(grown_by(300), 200'000U);
}

TEST_F(LmdbProcesses, ThatDieWithASnapshotAreClearedOnRequest) {
  const auto engine = open_store(path_);
  commit(*engine, {set(1, "one")});
  Child reader([&](int report) { return hold_snapshot(path_, report); });
  ASSERT_EQ(reader.hear(), 1U);
  commit(*engine, {set(1, "two", 1)});
  commit(*engine, {set(1, "three", 2)});
  cfg_status_info info;
  ASSERT_EQ(engine->status(info).code, CFG_OK);
  ASSERT_EQ(info.reader_count, 1U);
  EXPECT_EQ(info.readers[0].pid, reader.pid());
  EXPECT_EQ(info.readers[0].revision, 1U);
  EXPECT_EQ(info.readers[0].age_ms, -1);
  reader.kill_and_wait();
  engine->clear_dead_readers();
  ASSERT_EQ(engine->status(info).code, CFG_OK);
  EXPECT_EQ(info.reader_count, 0U);
}

TEST_F(LmdbProcesses, ThatLiveAreNotClearedAsDead) {
  const auto engine = open_store(path_);
  commit(*engine, {set(1, "one")});
  Child reader([&](int report) { return hold_snapshot(path_, report); });
  ASSERT_EQ(reader.hear(), 1U);
  // Closing and opening again must not cost this process or the other its locks.
  const auto own = view(*engine);
  Child checker([&](int) {
    Failure failure;
    const auto other = open_lmdb(path_, 0, failure);
    other->clear_dead_readers();
    cfg_status_info info;
    return other->status(info).code == CFG_OK && info.reader_count == 2 ? 0 : 1;
  });
  EXPECT_EQ(checker.wait(), 0);
}

TEST_F(LmdbProcesses, MoreReadersThanLmdbHasByDefault) {
  const auto engine = open_store(path_);
  std::vector<std::unique_ptr<Snapshot>> snapshots;
  for (int i = 0; i < 1000; i++) {
    snapshots.push_back(view(*engine));
    ASSERT_TRUE(snapshots.back());
  }
  Failure failure;
  while (auto more = engine->snapshot(failure)) snapshots.push_back(std::move(more));
  EXPECT_EQ(failure.code, CFG_E_LIMIT);
  EXPECT_EQ(snapshots.size(), 1022U);
  snapshots.clear();
  EXPECT_TRUE(view(*engine));
}

TEST_F(LmdbProcesses, AChildOpensItsParentsStoreAnew) {
  auto engine = open_store(path_);
  commit(*engine, {set(1, "one")});
  const auto snapshot = view(*engine);
  expect_child_succeeds([&] {
    if (snapshot->get(1) || snapshot->failure().code != CFG_E_FORKED) return 1;
    if (snapshot->cursor()->seek(0)) return 2;
    Failure failure;
    const auto own = open_lmdb(path_, 0, failure);
    if (!own || own == engine) return 3;
    engine.reset();
    if (commit(*own, {set(2, "child")}).revision != 2) return 4;
    return own->snapshot(failure)->get(2).bytes == "child" ? 0 : 5;
  });
  EXPECT_EQ(view(*engine)->get(2).bytes, "child");
  EXPECT_EQ(snapshot->get(1).bytes, "one");
  EXPECT_EQ(snapshot->failure().code, CFG_OK);
}

}  // namespace
}  // namespace twcfg::testing
