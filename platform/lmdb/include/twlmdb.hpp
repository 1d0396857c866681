// One LMDB file that several processes of the appliance read and write, without a server between them. Linked
// into the platform libraries that keep such a file; not installed.
//
// The file is opened at the first call that needs it and stays open. When it has been replaced or its
// directory moved since, the next call opens the new one. A child of fork() opens it anew. Any thread may
// call; calls of one process on one file take turns, which are short.
//
// Every write is synced: the file is sound after a power failure. In a directory in memory that costs
// nothing.
//
// Results are 0 or a negative errno number: -ENOENT for what is not there, -ENOSPC when the file may not grow
// further, -EBADMSG when it is damaged.
#ifndef TWLMDB_HPP
#define TWLMDB_HPP

#include <lmdb.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

namespace twlmdb {

class Environment;

// Where a file is and how large it may become.
struct Place {
  const char *variable;           // the environment variable that names the directory
  const char *default_directory;  // without that variable
  const char *file;
  std::size_t largest;  // address space that is reserved for it
};

// A code of LMDB or an errno number, as a result.
int result_of(int code) noexcept;

// What entries are stamped with: milliseconds since the epoch.
std::int64_t now_ms() noexcept;

inline MDB_val bytes_of(const void *data, std::size_t size) noexcept {
  return {size, const_cast<void *>(data)};
}

// A transaction and the only table in it.
struct Access {
  MDB_txn *txn = nullptr;
  MDB_dbi table = 0;

  int get(MDB_val key, MDB_val &value) const noexcept;
  int put(MDB_val key, MDB_val value) const noexcept;
  // Nothing to remove is no failure.
  int remove(MDB_val key) const noexcept;
  // Removes the entries whose key begins with `prefix`.
  int remove_all(MDB_val prefix) const noexcept;
  // Calls `visit` for the entries whose key begins with `prefix`, in key order, until it answers other than
  // 0, and answers that. `visit` changes nothing.
  template <class Visit>
  int scan(MDB_val prefix, Visit visit) const {
    return scan_with(
        prefix,
        [](void *context, const MDB_val &key, const MDB_val &value) {
          return (*static_cast<Visit *>(context))(key, value);
        },
        &visit);
  }

 private:
  int scan_with(MDB_val prefix, int (*visit)(void *, const MDB_val &, const MDB_val &), void *context) const;
};

// A state that stays the same however long it is looked at. It keeps old pages in use: let go of it soon.
class Snapshot {
 public:
  Snapshot() = default;
  Snapshot(const Snapshot &) = delete;
  Snapshot &operator=(const Snapshot &) = delete;
  ~Snapshot();

  // -ENOENT when the file did not exist; -EBADF in a child of the process that took the snapshot.
  int use(Access &access) const noexcept;

 private:
  friend class SharedFile;
  std::shared_ptr<Environment> environment_;
  Access access_;
};

class SharedFile {
 public:
  // Lives as long as the process.
  explicit SharedFile(const Place &place);
  SharedFile(const SharedFile &) = delete;
  SharedFile &operator=(const SharedFile &) = delete;

  // Runs `work`, which gets an Access and answers a result, on the newest state. -ENOENT without running it
  // when there is no file. What it is given lives until it returns, and it must not use this file itself.
  template <class Work>
  int read(Work work) noexcept {
    return read_with(
        [](void *context, const Access &access) { return (*static_cast<Work *>(context))(access); }, &work);
  }
  // The same for changes, all of which become visible together, on disk, or none when the result is not 0.
  // Makes the directory (for its owner alone) and the file when they are missing. `work` may run twice.
  template <class Work>
  int write(Work work) noexcept {
    return write_with(
        [](void *context, const Access &access) { return (*static_cast<Work *>(context))(access); }, &work);
  }
  // The newest state. A missing file is no failure: the snapshot is then empty.
  int take(Snapshot &snapshot) noexcept;

 private:
  using Function = int (*)(void *, const Access &);
  static int run(Function work, void *context, const Access &access) noexcept;
  int read_with(Function work, void *context) noexcept;
  int write_with(Function work, void *context) noexcept;
  int write_once(Function work, void *context) noexcept;
  int open(bool create);

  static void before_fork();
  static void after_fork_in_parent();
  static void after_fork_in_child();

  const Place place_;
  SharedFile *const next_;  // of all files of the process
  std::mutex mutex_;        // guards what follows
  std::string directory_, path_;
  std::shared_ptr<Environment> open_;
  unsigned writes_ = 0;
};

}  // namespace twlmdb

#endif
