#include "environment.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>

namespace twlmdb {
namespace {

// Who may read and write is decided by the directory and the umask.
constexpr mode_t kMode = 0660;
// A cache line for each reader of all processes together.
constexpr off_t kLockFileSize = 64 * 1024;

// LMDB maps its lock file before it has disk space: on a full disk the first touch would end the process.
int prepare_lock_file(const std::string &path) {
  const int file = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, kMode);
  if (file < 0) return -errno;
  struct stat info {};
  int code = fstat(file, &info) == 0 ? 0 : errno;
  if (code == 0 && info.st_size < kLockFileSize) code = posix_fallocate(file, 0, kLockFileSize);
  close(file);
  return -code;
}

}  // namespace

int result_of(int code) noexcept {
  switch (code) {
    case 0:
      return 0;
    case MDB_NOTFOUND:
      return -ENOENT;
    case MDB_MAP_FULL:
      return -ENOSPC;
    case MDB_READERS_FULL:
      return -EAGAIN;
    case MDB_BAD_VALSIZE:
      return -EINVAL;
    case MDB_CORRUPTED:
    case MDB_INVALID:
    case MDB_PAGE_NOTFOUND:
    case MDB_PANIC:
    case MDB_VERSION_MISMATCH:
      return -EBADMSG;
    default:
      return code > 0 ? -code : -EIO;
  }
}

std::int64_t now_ms() noexcept {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
}

int Access::get(MDB_val key, MDB_val &value) const noexcept {
  return result_of(mdb_get(txn, table, &key, &value));
}

int Access::put(MDB_val key, MDB_val value) const noexcept {
  return result_of(mdb_put(txn, table, &key, &value, 0));
}

int Access::remove(MDB_val key) const noexcept {
  const int result = result_of(mdb_del(txn, table, &key, nullptr));
  return result == -ENOENT ? 0 : result;
}

namespace {

bool begins_with(const MDB_val &key, const MDB_val &prefix) {
  return key.mv_size >= prefix.mv_size && std::memcmp(key.mv_data, prefix.mv_data, prefix.mv_size) == 0;
}

// Calls `step` with a cursor on each entry whose key begins with `prefix`, until it answers other than 0.
template <class Step>
int walk(const Access &access, const MDB_val &prefix, Step step) {
  MDB_cursor *cursor = nullptr;
  if (const int code = mdb_cursor_open(access.txn, access.table, &cursor)) return result_of(code);
  const std::unique_ptr<MDB_cursor, decltype(&mdb_cursor_close)> closer(cursor, mdb_cursor_close);
  MDB_val key = prefix, value{};
  int code = mdb_cursor_get(cursor, &key, &value, prefix.mv_size ? MDB_SET_RANGE : MDB_FIRST);
  for (; code == 0 && begins_with(key, prefix); code = mdb_cursor_get(cursor, &key, &value, MDB_NEXT))
    if (const int result = step(cursor, key, value)) return result;
  return code == MDB_NOTFOUND ? 0 : result_of(code);
}

}  // namespace

int Access::remove_all(MDB_val prefix) const noexcept {
  return walk(*this, prefix, [](MDB_cursor *cursor, const MDB_val &, const MDB_val &) {
    return result_of(mdb_cursor_del(cursor, 0));
  });
}

int Access::scan_with(MDB_val prefix, int (*visit)(void *, const MDB_val &, const MDB_val &),
                      void *context) const {
  return walk(*this, prefix, [=](MDB_cursor *, const MDB_val &key, const MDB_val &value) {
    return visit(context, key, value);
  });
}

int Environment::open(const std::string &path, std::size_t largest, std::shared_ptr<Environment> &out) {
  if (const int result = prepare_lock_file(path + "-lock")) return result;
  auto made = std::make_shared<Environment>();
  if (const int code = made->prepare(path, largest)) return result_of(code);
  out = std::move(made);
  return 0;
}

int Environment::prepare(const std::string &path, std::size_t largest) {
  if (const int code = mdb_env_create(&env_)) return code;
  if (const int code = mdb_env_set_mapsize(env_, largest)) return code;
  // Transactions belong to whoever holds them, not to threads. Pages need not be zeroed: nothing here is
  // secret.
  if (const int code = mdb_env_open(env_, path.c_str(), MDB_NOSUBDIR | MDB_NOTLS | MDB_NOMEMINIT, kMode))
    return code;
  int file = -1;
  struct stat info {};
  if (mdb_env_get_fd(env_, &file) != 0 || fstat(file, &info) != 0) return EIO;
  // LMDB leaves this one open to the programs that this process starts.
  if (fcntl(file, F_SETFD, FD_CLOEXEC) != 0) return errno;
  MDB_stat sizes{};
  mdb_env_stat(env_, &sizes);
  device_ = info.st_dev;
  inode_ = info.st_ino;
  page_size_ = sizes.ms_psize;
  forget_dead_readers();
  return 0;
}

Environment::~Environment() {
  if (inherited || !env_) return;
  if (reader_) mdb_txn_abort(reader_);
  mdb_env_close(env_);
}

bool Environment::whole(const struct stat &seen) const {
  MDB_envinfo info{};
  mdb_env_info(env_, &info);
  const std::size_t needed = (info.me_last_pgno + 1) * page_size_;
  if (static_cast<std::size_t>(seen.st_size) >= needed) return true;
  // Another process may have made it larger since it was seen.
  int file = -1;
  struct stat now {};
  return mdb_env_get_fd(env_, &file) == 0 && fstat(file, &now) == 0 &&
         static_cast<std::size_t>(now.st_size) >= needed;
}

int Environment::begin(unsigned flags, MDB_txn *&txn) {
  int code = mdb_txn_begin(env_, nullptr, flags, &txn);
  if (code == MDB_READERS_FULL) {
    forget_dead_readers();
    code = mdb_txn_begin(env_, nullptr, flags, &txn);
  }
  return code;
}

namespace {

// The table without a name is always there: asking a good transaction for it costs nothing and does not fail.
void open_table(Access &access) { mdb_dbi_open(access.txn, nullptr, 0, &access.table); }

}  // namespace

int Environment::begin_reading(Access &access) {
  const int code = reader_ ? mdb_txn_renew(reader_) : begin(MDB_RDONLY, reader_);
  if (code != 0) return result_of(code);
  access.txn = reader_;
  open_table(access);
  return 0;
}

void Environment::end_reading() { mdb_txn_reset(reader_); }

int Environment::begin_snapshot(Access &access) {
  if (const int code = begin(MDB_RDONLY, access.txn)) return result_of(code);
  open_table(access);
  return 0;
}

int Environment::begin_writing(Access &access) {
  if (const int code = begin(0, access.txn)) return result_of(code);
  open_table(access);
  return 0;
}

}  // namespace twlmdb
