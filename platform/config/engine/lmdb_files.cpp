#include "engine/lmdb_files.hpp"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <new>

#include "engine/lmdb_error.hpp"
#include "engine/lmdb_format.hpp"
#include "engine/lmdb_open.hpp"
#include "engine/lmdb_table.hpp"

namespace twcfg {
namespace {

constexpr const char *kUnfinished = "data.new";

Failure check_private(const struct stat &info, const std::string &path) {
  if (info.st_uid != geteuid())
    return {CFG_E_PERMISSION, path + ": belongs to user " + std::to_string(info.st_uid) +
                                  ", but this process runs as user " + std::to_string(geteuid())};
  if ((info.st_mode & 077U) != 0)
    return {CFG_E_PERMISSION,
            path + ": others than its owner have access; take it away (chmod go= " + path + ")"};
  return {};
}

// A missing file is no failure: `info.st_nlink` is then 0.
Failure check_file(int directory, const std::string &name, const std::string &path, struct stat &info) {
  info = {};
  if (fstatat(directory, name.c_str(), &info, AT_SYMLINK_NOFOLLOW) != 0) {
    info = {};
    return errno == ENOENT ? Failure{} : lmdb_failure(errno, path, "cannot be looked up");
  }
  if (!S_ISREG(info.st_mode)) return {CFG_E_CORRUPT, path + ": is not a regular file"};
  return check_private(info, path);
}

std::string parent_of(std::string path) {
  while (path.size() > 1 && path.back() == '/') path.pop_back();
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

File open_directory(const std::string &path) {
  return File(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

// Makes what was created or renamed in a directory last.
Failure sync_directory(const std::string &path) {
  const File directory = open_directory(path);
  if (!directory || fsync(directory.get()) != 0)
    return lmdb_failure(errno, path, "cannot be written to disk");
  return {};
}

// The process's umask may take more away than others' access, hence the second word on modes, here and below.
Failure make_directory(const std::string &path) {
  const std::string parent = parent_of(path);
  if (mkdir(path.c_str(), 0700) != 0 || chmod(path.c_str(), 0700) != 0)
    return lmdb_failure(errno, path, "cannot be created");
  return sync_directory(parent);
}

}  // namespace

Failure prepare_file(const std::string &path, off_t size) {
  const File file(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
  // Where nothing can be written, LMDB knows what is left to do.
  if (!file && (errno == EACCES || errno == EPERM || errno == EROFS)) return {};
  if (!file || fchmod(file.get(), 0600) != 0) return lmdb_failure(errno, path, "cannot be prepared");
  const int code = size > 0 ? posix_fallocate(file.get(), 0, size) : 0;
  return code == 0 ? Failure{} : lmdb_failure(code, path, "cannot be given its space");
}

namespace {

// Copies in portions, so that memory is needed for one of them only.
void copy_records(MDB_env *env, Table &source) {
  constexpr std::size_t kPortion = std::size_t{64} << 20U;
  auto at = source.seek(0);
  while (at) {
    MDB_txn *txn = nullptr;
    check(mdb_txn_begin(env, nullptr, 0, &txn));
    try {
      LmdbTable target(txn);
      for (std::size_t copied = 0; at && copied < kPortion; at = source.seek(at->slot + 1)) {
        target.append(at->slot, {at->bytes});
        copied += at->bytes.size();
      }
    } catch (...) {
      mdb_txn_abort(txn);
      throw;
    }
    check(mdb_txn_commit(txn));
  }
}

void write_first_format(MDB_env *env, bool empty) {
  MDB_txn *txn = nullptr;
  check(mdb_txn_begin(env, nullptr, 0, &txn));
  try {
    MDB_dbi tree = 0;
    check(mdb_dbi_open(txn, nullptr, kTreeFlags, &tree));
    if (empty) {
      LmdbTable table(txn);
      write_format(table);
    }
  } catch (...) {
    mdb_txn_abort(txn);
    throw;
  }
  check(mdb_txn_commit(txn));
}

// Writes a new data file, complete and on disk when it returns. Nobody else knows of the file yet, so it
// needs no lock file. Free pages of `source` may hold secrets that were deleted, and so may the gaps inside
// its pages: records are copied, not pages.
Failure write_data_file(const std::string &path, Table *source) {
  if (Failure failure = prepare_file(path, 0)) return failure;
  try {
    EnvironmentPointer env;
    check(open_environment(path, MDB_NOSUBDIR | MDB_NOLOCK, kLargestMap, env));
    write_first_format(env.get(), source == nullptr);
    if (source) copy_records(env.get(), *source);
    return {};
  } catch (const LmdbError &error) {
    return lmdb_failure(error.code, path, "cannot be written");
  } catch (const std::bad_alloc &) {
    return lmdb_failure(ENOMEM, path, "cannot be written");
  }
}

// Makes the data file appear whole or not at all. The directory's lock keeps a second creator out; a creator
// that was killed has lost it and left at most an unfinished file under another name.
Failure create_data_file(int directory, const StoreFiles &files) {
  if (flock(directory, LOCK_EX) != 0) return lmdb_failure(errno, files.directory, "cannot be locked");
  if (faccessat(directory, "data.mdb", F_OK, AT_SYMLINK_NOFOLLOW) == 0) return {};
  if (unlinkat(directory, kUnfinished, 0) != 0 && errno != ENOENT)
    return lmdb_failure(errno, files.directory, "cannot be changed");
  if (Failure failure = write_data_file(files.directory + "/" + kUnfinished, nullptr)) {
    unlinkat(directory, kUnfinished, 0);
    return failure;
  }
  if (renameat(directory, kUnfinished, directory, "data.mdb") != 0)
    return lmdb_failure(errno, files.data(), "cannot be created");
  return sync_directory(files.directory);
}

}  // namespace

File::~File() {
  if (descriptor_ >= 0) close(descriptor_);
}

Failure find_store(const std::string &path, unsigned options, StoreFiles &files) {
  files.directory = path;
  const bool create = (options & CFG_OPEN_CREATE) != 0;
  File directory = open_directory(path);
  if (!directory && errno == ENOENT && create) {
    // Another process may be faster: then its directory is as good.
    if (Failure failure = make_directory(path); failure && failure.code != CFG_E_EXISTS) return failure;
    directory = open_directory(path);
  }
  if (!directory) return lmdb_failure(errno, path, "cannot be opened");
  struct stat info {};
  if (fstat(directory.get(), &info) != 0) return lmdb_failure(errno, path, "cannot be looked up");
  if (Failure failure = check_private(info, path)) return failure;

  if (Failure failure = check_file(directory.get(), "lock.mdb", files.lock(), info)) return failure;
  if (Failure failure = check_file(directory.get(), "data.mdb", files.data(), info)) return failure;
  if (info.st_nlink == 0 && create) {
    if (Failure failure = create_data_file(directory.get(), files)) return failure;
    if (Failure failure = check_file(directory.get(), "data.mdb", files.data(), info)) return failure;
  }
  if (info.st_nlink == 0) return {CFG_E_NOT_FOUND, path + ": there is no store in this directory"};
  files.id = {info.st_dev, info.st_ino};
  return {};
}

Failure make_store_copy(const std::string &path, Table *source) {
  const std::string data = path + "/data.mdb";
  if (Failure failure = make_directory(path)) return failure;
  Failure failure{CFG_E_MEMORY, {}};
  const auto remove_unfinished = [&](const Failure *result) {
    if (!*result) return;
    unlink(data.c_str());
    rmdir(path.c_str());
  };
  const std::unique_ptr<const Failure, decltype(remove_unfinished)> guard(&failure, remove_unfinished);
  failure = write_data_file(data, source);
  if (!failure) failure = sync_directory(path);
  return failure;
}

}  // namespace twcfg
