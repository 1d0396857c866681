// What a store's directory and files must be like, and what opening them does to them.
#include <fcntl.h>
#include <lmdb.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <fstream>

#include "engine/lmdb_format.hpp"
#include "engine/lmdb_table.hpp"
#include "engine_fixture.hpp"

namespace twcfg::testing {
namespace {

namespace fs = std::filesystem;

unsigned mode_of(const std::string &path) {
  struct stat info {};
  EXPECT_EQ(lstat(path.c_str(), &info), 0) << path;
  return info.st_mode & 07777U;
}

class LmdbFiles : public ::testing::Test {
 protected:
  // A store with one value in it, closed.
  void make_store() { commit(*open_store(path_), {set(1, "one")}, "log", "token"); }
  std::string data() const { return path_ + "/data.mdb"; }
  std::string lock() const { return path_ + "/lock.mdb"; }

  TemporaryDirectory directory_;
  const std::string path_ = directory_ / "store";
};

TEST_F(LmdbFiles, ANewStoreIsItsOwnersAlone) {
  const mode_t old = umask(0);
  const auto engine = open_store(path_);
  umask(old);
  EXPECT_EQ(mode_of(path_), 0700U);
  EXPECT_EQ(mode_of(data()), 0600U);
  EXPECT_EQ(mode_of(lock()), 0600U);
}

TEST_F(LmdbFiles, NothingIsCreatedUnasked) {
  EXPECT_EQ(refused_open(path_).code, CFG_E_NOT_FOUND);
  EXPECT_EQ(refused_open(path_, CFG_OPEN_READ_ONLY).code, CFG_E_NOT_FOUND);
  EXPECT_FALSE(fs::exists(path_));
  ASSERT_EQ(mkdir(path_.c_str(), 0700), 0);
  EXPECT_EQ(refused_open(path_).code, CFG_E_NOT_FOUND);
  EXPECT_TRUE(fs::is_empty(path_));
}

TEST_F(LmdbFiles, AMissingParentDirectoryIsNotFound) {
  EXPECT_EQ(refused_open(directory_ / "missing/store", CFG_OPEN_CREATE).code, CFG_E_NOT_FOUND);
}

TEST_F(LmdbFiles, APathThatIsNoDirectoryIsRefused) {
  std::ofstream(path_) << "text";
  EXPECT_EQ(refused_open(path_, CFG_OPEN_CREATE).code, CFG_E_NOT_FOUND);
}

TEST_F(LmdbFiles, WhatWasCommittedIsThereWhenTheStoreIsOpenedAgain) {
  make_store();
  const auto engine = open_store(path_, 0);
  const auto snapshot = view(*engine);
  EXPECT_EQ(snapshot->revision(), 1U);
  EXPECT_EQ(snapshot->get(1).bytes, "one");
  EXPECT_EQ(snapshot->find_token("token"), 1U);
}

TEST_F(LmdbFiles, OtherNamesOfTheSameFilesGiveTheSameEngine) {
  const auto engine = open_store(path_);
  fs::create_directory_symlink(path_, directory_ / "link");
  EXPECT_EQ(open_store(directory_ / "link", 0), engine);
  EXPECT_EQ(open_store(path_ + "/../store/", CFG_OPEN_READ_ONLY), engine);
}

TEST_F(LmdbFiles, AccessOfOthersIsRefused) {
  make_store();
  for (const std::string &path : {path_, data(), lock()})
    for (const unsigned bit : {040U, 020U, 010U, 04U, 02U, 01U}) {
      const unsigned mode = mode_of(path);
      ASSERT_EQ(chmod(path.c_str(), mode | bit), 0);
      const Failure failure = refused_open(path_);
      EXPECT_EQ(failure.code, CFG_E_PERMISSION) << path;
      EXPECT_NE(failure.text.find(path), std::string::npos) << failure.text;
      ASSERT_EQ(chmod(path.c_str(), mode), 0);
    }
  EXPECT_TRUE(open_store(path_, 0));
}

TEST_F(LmdbFiles, FilesOfAnotherUserAreRefused) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can give files away";
  make_store();
  for (const std::string &path : {path_, data(), lock()}) {
    ASSERT_EQ(chown(path.c_str(), 65534, 65534), 0);
    EXPECT_EQ(refused_open(path_).code, CFG_E_PERMISSION) << path;
    ASSERT_EQ(chown(path.c_str(), 0, 0), 0);
  }
  EXPECT_TRUE(open_store(path_, 0));
}

TEST_F(LmdbFiles, LinksInPlaceOfTheFilesAreRefused) {
  make_store();
  for (const std::string &path : {data(), lock()}) {
    fs::rename(path, directory_ / "elsewhere");
    fs::create_symlink(directory_ / "elsewhere", path);
    EXPECT_EQ(refused_open(path_, CFG_OPEN_CREATE).code, CFG_E_CORRUPT) << path;
    fs::remove(path);
    fs::rename(directory_ / "elsewhere", path);
  }
  EXPECT_TRUE(open_store(path_, 0));
}

TEST_F(LmdbFiles, ADanglingLinkInPlaceOfTheDataIsNotFollowed) {
  ASSERT_EQ(mkdir(path_.c_str(), 0700), 0);
  fs::create_symlink(directory_ / "target", data());
  EXPECT_EQ(refused_open(path_, CFG_OPEN_CREATE).code, CFG_E_CORRUPT);
  EXPECT_FALSE(fs::exists(directory_ / "target"));
}

TEST_F(LmdbFiles, FilesThatAreNoFilesAreRefused) {
  ASSERT_EQ(mkdir(path_.c_str(), 0700), 0);
  ASSERT_EQ(mkfifo(data().c_str(), 0600), 0);
  EXPECT_EQ(refused_open(path_, CFG_OPEN_CREATE).code, CFG_E_CORRUPT);
}

TEST_F(LmdbFiles, ATruncatedFileIsCorrupt) {
  make_store();
  const std::uintmax_t whole = fs::file_size(data());
  ASSERT_GT(whole, 8192U);
  for (const std::uintmax_t size : {whole - 1, whole - 4096, std::uintmax_t{8192}, std::uintmax_t{5000},
                                    std::uintmax_t{4096}, std::uintmax_t{100}, std::uintmax_t{0}}) {
    fs::resize_file(data(), size);
    EXPECT_EQ(refused_open(path_, CFG_OPEN_CREATE).code, CFG_E_CORRUPT) << size;
  }
}

TEST_F(LmdbFiles, AFileThatIsTruncatedWhileItIsOpenIsNoticedAtTheNextSnapshot) {
  const auto engine = open_store(path_);
  commit(*engine, {set(1, std::string(100'000, 'x'))});
  fs::resize_file(data(), 8192);
  Failure failure;
  EXPECT_FALSE(engine->snapshot(failure));
  EXPECT_EQ(failure.code, CFG_E_CORRUPT);
}

TEST_F(LmdbFiles, GarbageIsCorrupt) {
  make_store();
  const std::uintmax_t size = fs::file_size(data());
  std::ofstream(data(), std::ios::trunc) << std::string(size, 'g');
  EXPECT_EQ(refused_open(path_, CFG_OPEN_CREATE).code, CFG_E_CORRUPT);
}

// Changes a closed store behind the engine's back.
void with_raw_store(const std::string &path, unsigned tree_flags,
                    const std::function<void(MDB_txn *, MDB_dbi)> &change) {
  MDB_env *env = nullptr;
  ASSERT_EQ(mdb_env_create(&env), 0);
  ASSERT_EQ(mdb_env_open(env, path.c_str(), MDB_NOTLS, 0600), 0);
  MDB_txn *txn = nullptr;
  ASSERT_EQ(mdb_txn_begin(env, nullptr, 0, &txn), 0);
  MDB_dbi tree = 0;
  ASSERT_EQ(mdb_dbi_open(txn, nullptr, tree_flags, &tree), 0);
  change(txn, tree);
  ASSERT_EQ(mdb_txn_commit(txn), 0);
  mdb_env_close(env);
}

TEST_F(LmdbFiles, ANewerFormatIsRefusedAsSuch) {
  make_store();
  with_raw_store(path_, kTreeFlags, [](MDB_txn *txn, MDB_dbi) {
    LmdbTable table(txn);
    write_format(table, kFormatVersion + 1);
  });
  const Failure failure = refused_open(path_);
  EXPECT_EQ(failure.code, CFG_E_VERSION);
  EXPECT_NE(failure.text.find("format 2"), std::string::npos) << failure.text;
}

TEST_F(LmdbFiles, DataFilesOfOthersAreRefused) {
  ASSERT_EQ(mkdir(path_.c_str(), 0700), 0);
  with_raw_store(path_, kTreeFlags, [](MDB_txn *, MDB_dbi) {});
  EXPECT_EQ(refused_open(path_, CFG_OPEN_CREATE).code, CFG_E_CORRUPT) << "no format record";
  with_raw_store(path_, kTreeFlags, [](MDB_txn *txn, MDB_dbi) { LmdbTable(txn).put(1, {"foreign"}); });
  EXPECT_EQ(refused_open(path_, CFG_OPEN_CREATE).code, CFG_E_CORRUPT) << "records of another kind";
}

TEST_F(LmdbFiles, DataFilesWithTextKeysAreRefused) {
  ASSERT_EQ(mkdir(path_.c_str(), 0700), 0);
  with_raw_store(path_, 0, [](MDB_txn *txn, MDB_dbi tree) {
    char text[] = "key";
    MDB_val key{3, text}, value{3, text};
    ASSERT_EQ(mdb_put(txn, tree, &key, &value, 0), 0);
  });
  EXPECT_EQ(refused_open(path_, CFG_OPEN_CREATE).code, CFG_E_CORRUPT);
}

TEST_F(LmdbFiles, ACreationThatWasLeftHalfwayIsFinished) {
  ASSERT_EQ(mkdir(path_.c_str(), 0700), 0);
  std::ofstream(path_ + "/data.new") << "half";
  const auto engine = open_store(path_);
  EXPECT_EQ(commit(*engine, {set(1, "one")}).revision, 1U);
  EXPECT_FALSE(fs::exists(path_ + "/data.new"));
}

TEST_F(LmdbFiles, NoProgramInheritsTheFiles) {
  const auto engine = open_store(path_);
  commit(*engine, {set(1, "one")});
  int found = 0;
  for (const auto &entry : fs::directory_iterator("/proc/self/fd")) {
    std::error_code gone;
    const std::string target = fs::read_symlink(entry.path(), gone);
    if (!target.starts_with(fs::canonical(path_).string())) continue;
    found++;
    EXPECT_EQ(fcntl(std::stoi(entry.path().filename()), F_GETFD), FD_CLOEXEC) << target;
  }
  EXPECT_EQ(found, 3) << "data, data for synchronous writes, lock";
}

TEST_F(LmdbFiles, ClosingTheLastHandleClosesTheFiles) {
  auto engine = open_store(path_);
  auto snapshot = view(*engine);
  engine.reset();
  snapshot.reset();
  for (const auto &entry : fs::directory_iterator("/proc/self/fd")) {
    std::error_code gone;
    EXPECT_FALSE(fs::read_symlink(entry.path(), gone).string().starts_with(fs::canonical(path_).string()));
  }
}

TEST_F(LmdbFiles, AReadOnlyHandleSharesTheEngineOfAWritingOne) {
  make_store();
  const auto reader = open_store(path_, CFG_OPEN_READ_ONLY);
  const auto writer = open_store(path_, 0);
  EXPECT_EQ(reader, writer);
  EXPECT_EQ(commit(*writer, {set(2, "two")}).revision, 2U);
  EXPECT_EQ(view(*reader)->get(2).bytes, "two");
}

// Runs as a user for whom file modes mean something.
void expect_succeeds_as_nobody(const std::string &path, const std::function<int()> &body) {
  for (const auto &entry : fs::directory_iterator(path))
    ASSERT_EQ(chown(entry.path().c_str(), 65534, 65534), 0);
  ASSERT_EQ(chown(path.c_str(), 65534, 65534), 0);
  ASSERT_EQ(chmod(fs::path(path).parent_path().c_str(), 0755), 0);
  expect_child_succeeds([&] { return setresuid(65534, 65534, 65534) == 0 ? body() : 100; });
}

TEST_F(LmdbFiles, AStoreThatCannotBeWrittenCanBeRead) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can become another user";
  make_store();
  ASSERT_EQ(chmod(data().c_str(), 0400), 0);
  ASSERT_EQ(chmod(path_.c_str(), 0500), 0);
  expect_succeeds_as_nobody(path_, [&] {
    Failure failure;
    if (open_lmdb(path_, 0, failure) || failure.code != CFG_E_PERMISSION) return 1;
    const auto engine = open_lmdb(path_, CFG_OPEN_READ_ONLY, failure);
    if (!engine) return 2;
    const auto snapshot = engine->snapshot(failure);
    if (!snapshot || snapshot->get(1).bytes != "one") return 3;
    if (commit(*engine, {set(2, "two")}).failure.code != CFG_E_READ_ONLY) return 4;
    return 0;
  });
}

TEST_F(LmdbFiles, WithoutALockFileAWritableFileSystemIsNotReadUnlocked) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can become another user";
  make_store();
  fs::remove(lock());
  ASSERT_EQ(chmod(path_.c_str(), 0500), 0);
  expect_succeeds_as_nobody(path_, [&] {
    Failure failure;
    if (open_lmdb(path_, CFG_OPEN_READ_ONLY, failure)) return 1;
    return failure.code == CFG_E_PERMISSION && !failure.text.empty() ? 0 : 2;
  });
}

TEST_F(LmdbFiles, AStoreOnAReadOnlyFileSystemCanBeReadWithoutALockFile) {
  const std::string mounted = directory_ / "mounted";
  ASSERT_EQ(mkdir(mounted.c_str(), 0700), 0);
  if (mount("none", mounted.c_str(), "tmpfs", 0, "size=4m,mode=0700") != 0)
    GTEST_SKIP() << "mounting is not allowed here: " << std::strerror(errno);
  commit(*open_store(mounted + "/store"), {set(1, "one")});
  fs::remove(mounted + "/store/lock.mdb");
  ASSERT_EQ(mount("none", mounted.c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr), 0);
  {
    EXPECT_EQ(refused_open(mounted + "/store").code, CFG_E_READ_ONLY);
    const auto engine = open_store(mounted + "/store", CFG_OPEN_READ_ONLY);
    EXPECT_EQ(view(*engine)->get(1).bytes, "one");
    EXPECT_EQ(commit(*engine, {set(2, "two")}).failure.code, CFG_E_READ_ONLY);
    cfg_status_info info;
    EXPECT_EQ(engine->status(info).code, CFG_OK);
    EXPECT_EQ(problems(*engine), std::vector<std::string>());
  }
  EXPECT_EQ(umount(mounted.c_str()), 0);
}

TEST_F(LmdbFiles, CompactionDropsDeletedSecretsAndKeepsTheRest) {
  const auto engine = open_store(path_);
  const std::string secret = "the deleted secret";
  std::vector<Write> writes;
  std::vector<std::string> texts;
  texts.reserve(1000);
  for (Key key = 0; key < 1000; key++) {
    texts.push_back(secret + std::string(key * 7, key % 2 == 0 ? 'x' : 'y'));
    writes.push_back(set(key, texts.back()));
  }
  commit(*engine, writes, "log of the first", "first");
  for (Write &write : writes) {
    write.expected = 1;
    write.remove = write.key % 3 != 0;
    if (!write.remove) write.bytes = write.bytes.substr(secret.size());
  }
  ASSERT_EQ(commit(*engine, writes, "log of the second", "second").revision, 2U);
  ASSERT_NE(contents_of(data()).find(secret), std::string::npos) << "the store itself still holds it";

  const std::string copy = directory_ / "copy";
  const Failure failure = engine->compact(copy);
  ASSERT_EQ(failure.code, CFG_OK) << failure.text;
  EXPECT_EQ(mode_of(copy), 0700U);
  EXPECT_EQ(mode_of(copy + "/data.mdb"), 0600U);
  EXPECT_EQ(contents_of(copy + "/data.mdb").find(secret), std::string::npos);
  EXPECT_LT(fs::file_size(copy + "/data.mdb"), fs::file_size(data()));

  const auto opened = open_store(copy, 0);
  const auto snapshot = view(*opened);
  EXPECT_EQ(snapshot->revision(), 2U);
  for (const Write &write : writes)
    ASSERT_EQ(snapshot->get(write.key).bytes, write.remove ? std::string_view() : write.bytes) << write.key;
  EXPECT_EQ(snapshot->find_token("first"), 1U);
  EXPECT_EQ(snapshot->log(2), "log of the second");
  EXPECT_EQ(problems(*opened), std::vector<std::string>());
  EXPECT_EQ(commit(*opened, {set(0, "next", 2)}).revision, 3U);
  EXPECT_EQ(newest(*engine), 2U);
}

TEST_F(LmdbFiles, AnEmptyStoreCanBeCompacted) {
  const auto engine = open_store(path_);
  ASSERT_EQ(engine->compact(directory_ / "copy").code, CFG_OK);
  EXPECT_EQ(newest(*open_store(directory_ / "copy", 0)), 0U);
}

TEST_F(LmdbFiles, CompactionReplacesNothing) {
  const auto engine = open_store(path_);
  const std::string copy = directory_ / "copy";
  ASSERT_EQ(mkdir(copy.c_str(), 0700), 0);
  EXPECT_EQ(engine->compact(copy).code, CFG_E_EXISTS);
  EXPECT_TRUE(fs::is_empty(copy));
  EXPECT_EQ(engine->compact(path_).code, CFG_E_EXISTS);
  EXPECT_EQ(engine->compact(directory_ / "missing/copy").code, CFG_E_NOT_FOUND);
}

}  // namespace
}  // namespace twcfg::testing
