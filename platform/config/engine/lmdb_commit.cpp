#include "engine/lmdb_commit.hpp"

#include <sys/statvfs.h>

#include <cerrno>
#include <utility>

#include "engine/lmdb_error.hpp"
#include "engine/lmdb_table.hpp"
#include "engine/records.hpp"

namespace twcfg {
namespace {

class WriteTransaction {
 public:
  explicit WriteTransaction(MDB_env *env) { check(mdb_txn_begin(env, nullptr, 0, &txn_)); }
  WriteTransaction(const WriteTransaction &) = delete;
  WriteTransaction &operator=(const WriteTransaction &) = delete;
  ~WriteTransaction() {
    if (txn_) mdb_txn_abort(txn_);
  }
  MDB_txn *get() const { return txn_; }
  std::uint64_t id() const { return mdb_txn_id(txn_); }
  int commit() { return mdb_txn_commit(std::exchange(txn_, nullptr)); }

 private:
  MDB_txn *txn_ = nullptr;
};

// A write that the file system cut short for want of space is reported as an input/output error.
bool disk_is_full(const std::string &directory) {
  struct statvfs info {};
  return statvfs(directory.c_str(), &info) == 0 && info.f_bavail * info.f_frsize < (1U << 20U);
}

// LMDB writes and flushes the changed pages first, and then the meta page that makes them count. When the
// first step fails nothing has changed, whatever is on disk. When the second fails nobody can tell: the meta
// page may or may not have reached the disk. LMDB then refuses all further work, by which the second is told
// from the first.
Failure commit_failure(LmdbEnvironment &environment, int code) {
  MDB_txn *probe = nullptr;
  const int next = mdb_txn_begin(environment.raw(), nullptr, 0, &probe);
  if (next == 0) mdb_txn_abort(probe);
  const std::string &directory = environment.files().directory;
  if (next == MDB_PANIC) {
    Failure failure = lmdb_failure(code, directory, "it is not known whether the commit is on disk");
    failure.code = CFG_E_UNKNOWN;
    return failure;
  }
  if (code == EIO && disk_is_full(directory)) code = ENOSPC;
  return lmdb_failure(code, directory, "nothing was changed, the commit could not be written");
}

CommitResult failed(Failure failure) {
  CommitResult result;
  result.failure = std::move(failure);
  return result;
}

// One attempt. Throws what stops it before anything is written.
CommitResult attempt(LmdbEnvironment &environment, const Commit &commit) {
  const LmdbEnvironment::MapUse use(environment);
  WriteTransaction transaction(environment.raw());
  CommitResult result;
  {
    LmdbTable table(transaction.get());
    result = apply_commit(table, commit);
  }
  if (result.failure || result.stale || result.repeated) return result;
  const std::uint64_t id = transaction.id();
  const int code = transaction.commit();
  if (code == MDB_MAP_FULL) throw LmdbError{code};
  if (code != 0) return failed(commit_failure(environment, code));
  environment.remember(id, result.revision);
  return result;
}

}  // namespace

CommitResult commit_to(LmdbEnvironment &environment, const Commit &commit) {
  // Dead readers keep old pages in use, and it is commits that use pages: look after so many of them.
  environment.clear_dead_readers_sometimes();
  bool readers_checked = false;
  for (;;) {
    try {
      return attempt(environment, commit);
    } catch (const LmdbError &error) {
      const bool map_is_full = error.code == MDB_MAP_FULL || error.code == MDB_MAP_RESIZED;
      // Growing the map comes second: the space may only be held by the dead.
      const bool freed =
          map_is_full && !std::exchange(readers_checked, true) && environment.clear_dead_readers() > 0;
      if (!freed && !(map_is_full && environment.grow()))
        return failed(lmdb_failure(error.code, environment.files().directory, "nothing was changed"));
    }
  }
}

}  // namespace twcfg
