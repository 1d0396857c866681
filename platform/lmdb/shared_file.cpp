#include <pthread.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>

#include "environment.hpp"

namespace twlmdb {
namespace {

std::atomic<SharedFile *> files{nullptr};

// Whoever may write to the directory can put another file in the place of ours.
int check_directory(const std::string &directory) {
  struct stat info {};
  if (stat(directory.c_str(), &info) != 0) return -errno;
  if (!S_ISDIR(info.st_mode)) return -ENOTDIR;
  if (info.st_uid != geteuid() && info.st_uid != 0) return -EPERM;
  return (info.st_mode & S_IWOTH) != 0 ? -EPERM : 0;
}

}  // namespace

Snapshot::~Snapshot() {
  if (environment_ && !environment_->inherited) mdb_txn_abort(access_.txn);
}

int Snapshot::use(Access &access) const noexcept {
  if (!environment_) return -ENOENT;
  if (environment_->inherited) return -EBADF;
  access = access_;
  return 0;
}

SharedFile::SharedFile(const Place &place) : place_(place), next_(files.load()) {
  files.store(this);
  if (!next_) pthread_atfork(before_fork, after_fork_in_parent, after_fork_in_child);
}

void SharedFile::before_fork() {
  for (SharedFile *file = files.load(); file; file = file->next_) file->mutex_.lock();
}

void SharedFile::after_fork_in_parent() {
  for (SharedFile *file = files.load(); file; file = file->next_) file->mutex_.unlock();
}

void SharedFile::after_fork_in_child() {
  static std::shared_ptr<Environment> inherited;  // kept reachable for leak checkers
  for (SharedFile *file = files.load(); file; file = file->next_) {
    if (file->open_) {
      file->open_->inherited = true;
      file->open_->next_inherited = std::move(inherited);
      inherited = std::move(file->open_);
    }
    file->mutex_.unlock();
  }
}

int SharedFile::open(bool create) {
  const char *directory = secure_getenv(place_.variable);
  if (!directory || !*directory) directory = place_.default_directory;
  if (directory_ != directory) {
    open_.reset();
    path_ = std::string(directory) + "/" + place_.file;
    directory_ = directory;
  }
  struct stat file {};
  const bool found = stat(path_.c_str(), &file) == 0;
  if (!found && errno != ENOENT && errno != ENOTDIR) return -errno;
  if (found && open_ && open_->is(file)) return open_->whole(file) ? 0 : -EBADMSG;
  open_.reset();
  if (!found && !create) return -ENOENT;
  if (!found && mkdir(directory, 0700) != 0 && errno != EEXIST) return -errno;
  if (const int result = check_directory(directory_)) return result;
  return Environment::open(path_, place_.largest, open_);
}

// What `work` throws, it throws for want of memory.
int SharedFile::run(Function work, void *context, const Access &access) noexcept try {
  return work(context, access);
} catch (...) {
  return -ENOMEM;
}

int SharedFile::read_with(Function work, void *context) noexcept try {
  const std::lock_guard guard(mutex_);
  if (const int result = open(false)) return result;
  Access access;
  if (const int result = open_->begin_reading(access)) return result;
  const int result = run(work, context, access);
  open_->end_reading();
  return result;
} catch (...) {
  return -ENOMEM;
}

int SharedFile::write_once(Function work, void *context) noexcept {
  Access access;
  if (const int result = open_->begin_writing(access)) return result;
  if (const int result = run(work, context, access)) {
    mdb_txn_abort(access.txn);
    return result;
  }
  return result_of(mdb_txn_commit(access.txn));
}

int SharedFile::write_with(Function work, void *context) noexcept try {
  constexpr unsigned kInterval = 64;
  const std::lock_guard guard(mutex_);
  if (const int result = open(true)) return result;
  if (++writes_ % kInterval == 0) open_->forget_dead_readers();
  const int result = write_once(work, context);
  if (result != -ENOSPC) return result;
  open_->forget_dead_readers();
  return write_once(work, context);
} catch (...) {
  return -ENOMEM;
}

int SharedFile::take(Snapshot &snapshot) noexcept try {
  const std::lock_guard guard(mutex_);
  const int result = open(false);
  if (result == -ENOENT) return 0;
  if (result != 0) return result;
  if (const int failed = open_->begin_snapshot(snapshot.access_)) return failed;
  snapshot.environment_ = open_;
  return 0;
} catch (...) {
  return -ENOMEM;
}

}  // namespace twlmdb
