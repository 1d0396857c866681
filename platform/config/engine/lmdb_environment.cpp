#include "engine/lmdb_environment.hpp"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "engine/clock.hpp"
#include "engine/lmdb_error.hpp"
#include "engine/lmdb_format.hpp"
#include "engine/lmdb_pages.hpp"
#include "engine/lmdb_table.hpp"
#include "engine/records.hpp"

namespace twcfg {
namespace {

// Idle read transactions kept for the next snapshots; each keeps a place in the table of readers.
constexpr std::size_t kIdleReaders = 16;

Failure check_data_file(const StoreFiles &files) {
  const File data(::open(files.data().c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
  if (!data) return lmdb_failure(errno, files.data(), "cannot be opened");
  MetaPage newest;
  return check_meta_pages(data.get(), files.data(), newest);
}

// LMDB opens the files by name. They must be the ones that were found safe, and no program that this process
// starts may inherit them.
Failure check_descriptor(int descriptor, const StoreFiles &files) {
  struct stat info {};
  if (fstat(descriptor, &info) != 0) return lmdb_failure(errno, files.data(), "cannot be looked up");
  if (FileId{info.st_dev, info.st_ino} != files.id)
    return {CFG_E_PERMISSION, files.data() + ": was replaced while it was being opened"};
  const int flags = fcntl(descriptor, F_GETFD);
  if (flags < 0 || fcntl(descriptor, F_SETFD, flags | FD_CLOEXEC) != 0)
    return lmdb_failure(errno, files.data(), "cannot be closed to other programs");
  return {};
}

// A moved map that then cannot be had would leave the environment without any: ask first.
bool address_space_for(std::size_t size) {
  void *probe = mmap(nullptr, size, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (probe == MAP_FAILED) return false;
  munmap(probe, size);
  return true;
}

}  // namespace

std::unique_ptr<LmdbEnvironment> LmdbEnvironment::open(const StoreFiles &files, unsigned options,
                                                       std::size_t largest_map, Failure &failure) {
  if ((failure = check_data_file(files))) return nullptr;
  // LMDB maps its lock file before it has disk space: on a full disk the first touch would end the process.
  if ((failure = prepare_file(files.lock(), kLockFileSize))) return nullptr;
  EnvironmentPointer env;
  bool read_only = false;
  int code = open_environment(files.directory, MDB_NOTLS, largest_map, env);
  if ((options & CFG_OPEN_READ_ONLY) != 0 && (code == EACCES || code == EPERM || code == EROFS)) {
    // Without a lock file only on a file system that nobody can write to; LMDB itself sees to that.
    code = open_environment(files.directory, MDB_NOTLS | MDB_RDONLY, largest_map, env);
    read_only = true;
  }
  if (code != 0) {
    failure = lmdb_failure(code, files.directory, "cannot be opened");
    return nullptr;
  }
  std::unique_ptr<LmdbEnvironment> made(new LmdbEnvironment(files, std::move(env), read_only));
  if ((failure = made->prepare())) return nullptr;
  return made;
}

LmdbEnvironment::LmdbEnvironment(StoreFiles files, EnvironmentPointer env, bool read_only)
    : files_(std::move(files)), env_(std::move(env)), read_only_(read_only) {}

Failure LmdbEnvironment::prepare() {
  if (Failure failure = check_descriptor(data_file(), files_)) return failure;
  clear_dead_readers();
  MDB_stat info{};
  mdb_env_stat(raw(), &info);
  page_size_ = info.ms_psize;
  MDB_txn *txn = nullptr;
  const int code = mdb_txn_begin(raw(), nullptr, MDB_RDONLY, &txn);
  if (code != 0) return lmdb_failure(code, files_.data(), "cannot be read");
  const TransactionPointer ending(txn);
  try {
    MDB_dbi tree = 0;
    check(mdb_dbi_open(txn, nullptr, kTreeFlags, &tree));
    LmdbTable table(txn);
    return check_format(table, files_.data());
  } catch (const LmdbError &error) {
    return lmdb_failure(error.code, files_.data(), "cannot be read");
  }
}

LmdbEnvironment::~LmdbEnvironment() {
  if (forked()) {
    // Closing it here would take the parent's readers out of the lock file.
    abandon_after_fork(env_.release());
    for (const Reader &reader : readers_) abandon_after_fork(reader.txn);
    return;
  }
  for (const Reader &reader : readers_) mdb_txn_abort(reader.txn);
}

Failure LmdbEnvironment::refused() const {
  if (!forked()) return {};
  return {CFG_E_FORKED, files_.directory + ": was opened by the parent process; the child opens it anew"};
}

int LmdbEnvironment::data_file() const {
  int descriptor = -1;
  mdb_env_get_fd(raw(), &descriptor);
  return descriptor;
}

int LmdbEnvironment::start(Reader &reader) {
  if (reader.txn) return mdb_txn_renew(reader.txn);
  return mdb_txn_begin(raw(), nullptr, MDB_RDONLY, &reader.txn);
}

LmdbEnvironment::Reader *LmdbEnvironment::take_idle() {
  if (idle_.empty()) {
    idle_.reserve(readers_.size() + 1);
    return &readers_.emplace_back();
  }
  Reader *reader = idle_.back();
  idle_.pop_back();
  return reader;
}

void LmdbEnvironment::drop(Reader *reader) {
  if (reader->txn) mdb_txn_abort(reader->txn);
  readers_.remove_if([reader](const Reader &other) { return &other == reader; });
}

// Reading a page that a truncated file no longer has would end the process.
bool LmdbEnvironment::file_is_whole() const {
  MDB_envinfo info{};
  mdb_env_info(raw(), &info);
  struct stat file {};
  return fstat(data_file(), &file) == 0 &&
         static_cast<std::uint64_t>(file.st_size) >= (info.me_last_pgno + 1) * page_size_;
}

LmdbEnvironment::Reader *LmdbEnvironment::begin(Failure &failure) {
  if ((failure = refused())) return nullptr;
  const std::lock_guard guard(mutex_);
  if (wants_to_grow_ && open_ == 0) grow_now();
  Reader *reader = take_idle();
  int code = start(*reader);
  if (code == MDB_READERS_FULL) {
    mdb_reader_check(raw(), nullptr);
    code = start(*reader);
  }
  if (code == MDB_MAP_RESIZED) {
    wants_to_grow_ = true;
    if (open_ == 0 && grow_now()) code = start(*reader);
  }
  if (code == 0 && !file_is_whole()) {
    drop(reader);
    failure = {CFG_E_CORRUPT, files_.data() + ": was truncated while it was open"};
    return nullptr;
  }
  try {
    check(code);
    const std::uint64_t id = mdb_txn_id(reader->txn);
    if (id != known_txn_) {
      LmdbTable table(reader->txn);
      known_revision_ = newest_revision(table);
      known_txn_ = id;
    }
  } catch (const LmdbError &error) {
    drop(reader);
    failure = lmdb_failure(error.code, files_.data(), "cannot be read");
    return nullptr;
  } catch (...) {
    drop(reader);
    throw;
  }
  reader->revision = known_revision_;
  reader->since_ms = steady_ms();
  reader->open = true;
  open_++;
  return reader;
}

void LmdbEnvironment::end(Reader *reader) {
  if (forked()) return;
  const std::lock_guard guard(mutex_);
  open_--;
  reader->open = false;
  if (idle_.size() >= kIdleReaders) return drop(reader);
  mdb_txn_reset(reader->txn);
  idle_.push_back(reader);
}

std::uint64_t LmdbEnvironment::newest(Failure &failure) {
  if ((failure = refused())) return 0;
  {
    const std::lock_guard guard(mutex_);
    MDB_envinfo info{};
    mdb_env_info(raw(), &info);
    if (info.me_last_txnid == known_txn_ && known_txn_ != 0) return known_revision_;
  }
  Reader *reader = begin(failure);
  if (!reader) return 0;
  const std::uint64_t revision = reader->revision;
  end(reader);
  return revision;
}

void LmdbEnvironment::remember(std::uint64_t txn_id, std::uint64_t revision) {
  const std::lock_guard guard(mutex_);
  if (txn_id < known_txn_) return;
  known_txn_ = txn_id;
  known_revision_ = revision;
}

bool LmdbEnvironment::grow() {
  const std::lock_guard guard(mutex_);
  wants_to_grow_ = true;
  return open_ == 0 && grow_now();
}

bool LmdbEnvironment::grow_now() {
  MDB_envinfo info{};
  mdb_env_info(raw(), &info);
  const std::size_t needed = (info.me_last_pgno + 1) * page_size_;
  const std::size_t size = 2 * std::max(info.me_mapsize, needed);
  if (!address_space_for(size)) return false;
  if (mdb_env_set_mapsize(raw(), size) != 0) {
    mdb_env_set_mapsize(raw(), info.me_mapsize);
    return false;
  }
  wants_to_grow_ = false;
  return true;
}

// Nothing is read through LMDB here, not even the newest revision: it trusts its pages.
Failure LmdbEnvironment::check_pages(const Engine::Problem &problem) {
  if (Failure failure = refused()) return failure;
  const MapUse use(*this);
  for (bool done = false; !done;) {
    MDB_txn *txn = nullptr;
    if (const int code = mdb_txn_begin(raw(), nullptr, MDB_RDONLY, &txn))
      return lmdb_failure(code, files_.data(), "cannot be read");
    const TransactionPointer ending(txn);
    done = check_all_pages(data_file(), mdb_txn_id(txn), problem);
  }
  return {};
}

int LmdbEnvironment::clear_dead_readers() {
  int dead = 0;
  if (!forked()) mdb_reader_check(raw(), &dead);
  return dead;
}

void LmdbEnvironment::clear_dead_readers_sometimes() {
  constexpr unsigned kInterval = 64;
  if (calls_.fetch_add(1, std::memory_order_relaxed) % kInterval == kInterval - 1) clear_dead_readers();
}

LmdbEnvironment::MapUse::MapUse(LmdbEnvironment &environment) : environment_(environment) {
  const std::lock_guard guard(environment_.mutex_);
  environment_.open_++;
}

LmdbEnvironment::MapUse::~MapUse() {
  const std::lock_guard guard(environment_.mutex_);
  environment_.open_--;
}

namespace {

struct ReaderReport {
  cfg_status_info &out;
  const std::uint64_t newest_txn;
  const std::uint64_t newest_revision;

  void add(std::int64_t pid, std::uint64_t revision, std::int64_t age_ms) {
    if (out.reader_count < std::size(out.readers)) out.readers[out.reader_count++] = {pid, revision, age_ms};
  }
};

// One line of LMDB's list of readers: pid, thread, and the transaction or "-". This process's own are left
// out: more is known about them.
int add_foreign_reader(const char *line, void *context) {
  auto &report = *static_cast<ReaderReport *>(context);
  char *rest = nullptr;
  const std::int64_t pid = std::strtoll(line, &rest, 10);
  if (rest == line || pid == getpid()) return 0;
  const char *thread = rest + std::strspn(rest, " ");
  const char *transaction = thread + std::strcspn(thread, " ");
  const std::uint64_t txn = std::strtoull(transaction, &rest, 10);
  if (rest == transaction) return 0;
  const std::uint64_t behind = report.newest_txn - std::min(txn, report.newest_txn);
  report.add(pid, report.newest_revision - std::min(behind, report.newest_revision), -1);
  return 0;
}

}  // namespace

Failure LmdbEnvironment::status(const Reader &reader, cfg_status_info &out) {
  const std::lock_guard guard(mutex_);
  MDB_envinfo info{};
  mdb_env_info(raw(), &info);
  struct stat file {};
  if (fstat(data_file(), &file) != 0) return lmdb_failure(errno, files_.data(), "cannot be looked up");
  out.file_bytes = static_cast<std::uint64_t>(file.st_size);
  out.map_bytes = info.me_mapsize;
  ReaderReport report{out, mdb_txn_id(reader.txn), reader.revision};
  for (const Reader &own : readers_)
    if (own.open && &own != &reader) report.add(getpid(), own.revision, steady_ms() - own.since_ms);
  mdb_reader_list(raw(), add_foreign_reader, &report);
  return {};
}

}  // namespace twcfg
