// A store that outgrows the address space reserved for it, or its disk.
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cstring>
#include <fstream>
#include <thread>

#include "engine/lmdb.hpp"
#include "engine_fixture.hpp"

namespace twcfg::testing {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kMegabyte = std::size_t{1} << 20U;

class LmdbSpace : public ::testing::Test {
 protected:
  std::shared_ptr<Engine> open_within(std::size_t largest_map) {
    Failure failure;
    auto engine = open_lmdb_within(path_, CFG_OPEN_CREATE, largest_map, failure);
    EXPECT_TRUE(engine) << failure.text;
    return engine;
  }
  static std::uint64_t map_bytes(Engine &engine) {
    cfg_status_info info;
    EXPECT_EQ(engine.status(info).code, CFG_OK);
    return info.map_bytes;
  }
  TemporaryDirectory directory_;
  const std::string path_ = directory_ / "store";
};

TEST_F(LmdbSpace, PlentyIsReserved) { EXPECT_GE(map_bytes(*open_store(path_)), 64 * kMegabyte); }

TEST_F(LmdbSpace, TheMapGrowsWhenNobodyReads) {
  const auto engine = open_within(kMegabyte);
  EXPECT_EQ(map_bytes(*engine), kMegabyte);
  const std::string value(300'000, 'v');
  for (Key key = 1; key <= 20; key++) ASSERT_EQ(commit(*engine, {set(key, value)}).revision, key);
  EXPECT_GT(map_bytes(*engine), 6 * kMegabyte);
  const auto snapshot = view(*engine);
  for (Key key = 1; key <= 20; key++) ASSERT_EQ(snapshot->get(key).bytes, value);
}

TEST_F(LmdbSpace, OneCommitMayBeLargerThanTheMap) {
  const auto engine = open_within(kMegabyte);
  const std::string value(20 * kMegabyte, 'v');
  EXPECT_EQ(commit(*engine, {set(1, value)}).revision, 1U);
  EXPECT_EQ(view(*engine)->get(1).bytes, value);
}

TEST_F(LmdbSpace, AFullMapUnderASnapshotIsACleanErrorAndGrowsLater) {
  const auto engine = open_within(kMegabyte);
  const std::string value(300'000, 'v');
  ASSERT_EQ(commit(*engine, {set(1, value)}).revision, 1U);
  auto snapshot = view(*engine);
  const std::string_view bytes = snapshot->get(1).bytes;
  CommitResult result;
  Key key = 2;
  while (!(result = commit(*engine, {set(key, value)})).failure) ASSERT_LT(key++, 10U);
  EXPECT_EQ(result.failure.code, CFG_E_NO_SPACE);
  EXPECT_NE(result.failure.text.find("park"), std::string::npos) << result.failure.text;
  EXPECT_EQ(newest(*engine), key - 1);
  EXPECT_EQ(bytes, value);
  snapshot.reset();
  snapshot = view(*engine);
  EXPECT_EQ(commit(*engine, {set(key, value)}).revision, key) << "the new snapshot came with a larger map";
}

TEST_F(LmdbSpace, TheMapGrowsBetweenTheSnapshotsAndCommitsOfManyThreads) {
  const auto engine = open_within(kMegabyte);
  const std::string value(100'000, 'v');
  commit(*engine, {set(0, value)});
  std::atomic<bool> done{false};
  std::vector<std::thread> readers;
  for (int i = 0; i < 2; i++)
    readers.emplace_back([&] {
      while (!done) {
        Failure failure;
        const auto snapshot = engine->snapshot(failure);
        // A map that is too small for now cannot move while the other thread reads.
        if (snapshot)
          ASSERT_EQ(snapshot->get(0).bytes, value);
        else
          ASSERT_EQ(failure.code, CFG_E_NO_SPACE) << failure.text;
      }
    });
  for (Key key = 1; key <= 200;) {
    const CommitResult result = commit(*engine, {set(key, value)});
    if (!result.failure)
      key++;
    else if (result.failure.code != CFG_E_NO_SPACE)
      break;
  }
  done = true;
  for (auto &reader : readers) reader.join();
  EXPECT_EQ(newest(*engine), 201U);
  EXPECT_EQ(problems(*engine), std::vector<std::string>());
}

TEST_F(LmdbSpace, AStoreThatAnotherProcessMadeLargerIsFollowed) {
  const auto engine = open_within(kMegabyte);
  commit(*engine, {set(1, "one")});
  auto old = view(*engine);
  expect_child_succeeds([&] {
    Failure failure;
    const auto own = open_lmdb(path_, 0, failure);
    return own && commit(*own, {set(2, std::string(10 * kMegabyte, 'v'))}).revision == 2 ? 0 : 1;
  });
  EXPECT_EQ(old->get(1).bytes, "one");
  Failure failure;
  EXPECT_FALSE(engine->snapshot(failure)) << "the map cannot move under a snapshot";
  EXPECT_EQ(failure.code, CFG_E_NO_SPACE);
  EXPECT_EQ(commit(*engine, {set(3, "three")}).failure.code, CFG_E_NO_SPACE);
  old.reset();
  EXPECT_EQ(view(*engine)->get(2).bytes, std::string(10 * kMegabyte, 'v'));
  EXPECT_EQ(commit(*engine, {set(3, "three")}).revision, 3U);
}

TEST_F(LmdbSpace, LittleAddressSpaceMakesASmallerMap) {
  if (kSanitized) GTEST_SKIP() << "sanitizers do not run in little address space";
  expect_child_succeeds([&] {
    const rlimit limit{512 * kMegabyte, 512 * kMegabyte};
    if (setrlimit(RLIMIT_AS, &limit) != 0) return 1;
    Failure failure;
    const auto engine = open_lmdb(path_, CFG_OPEN_CREATE, failure);
    if (!engine) return 2;
    if (commit(*engine, {set(1, std::string(kMegabyte, 'v'))}).revision != 1) return 3;
    cfg_status_info info;
    if (engine->status(info).code != CFG_OK) return 4;
    return info.map_bytes >= 64 * kMegabyte && info.map_bytes < 512 * kMegabyte ? 0 : 5;
  });
}

TEST_F(LmdbSpace, AFullDiskIsACleanErrorAndLosesNothing) {
  const std::string mounted = directory_ / "mounted";
  ASSERT_EQ(mkdir(mounted.c_str(), 0700), 0);
  if (mount("none", mounted.c_str(), "tmpfs", 0, "size=3m,mode=0700") != 0)
    GTEST_SKIP() << "mounting is not allowed here: " << std::strerror(errno);
  std::ofstream(mounted + "/filler") << std::string(2 * kMegabyte, 'f');
  {
    const auto engine = open_store(mounted + "/store");
    const std::string value(10'000, 'v');
    Key key = 1;
    CommitResult result;
    while (!(result = commit(*engine, {set(key, value)}, "log", "token " + std::to_string(key))).failure)
      ASSERT_LT(key++, 200U);
    EXPECT_EQ(result.failure.code, CFG_E_NO_SPACE) << result.failure.text;
    for (int again = 0; again < 3; again++)
      EXPECT_EQ(commit(*engine, {set(key, std::string(2 * kMegabyte, 'v'))}).failure.code, CFG_E_NO_SPACE);
    {
      const auto snapshot = view(*engine);
      EXPECT_EQ(snapshot->revision(), key - 1);
      for (Key kept = 1; kept < key; kept++) ASSERT_EQ(snapshot->get(kept).bytes, value);
      EXPECT_FALSE(snapshot->get(key));
    }
    EXPECT_EQ(problems(*engine), std::vector<std::string>());
    EXPECT_EQ(engine->compact(mounted + "/copy").code, CFG_E_NO_SPACE);
    EXPECT_FALSE(fs::exists(mounted + "/copy"));
    fs::remove(mounted + "/filler");
    EXPECT_EQ(commit(*engine, {set(key, value)}).revision, key);
  }
  EXPECT_EQ(umount(mounted.c_str()), 0);
}

}  // namespace
}  // namespace twcfg::testing
