// An open LMDB environment of one file.
#pragma once

#include <lmdb.h>
#include <sys/stat.h>

#include <memory>
#include <string>

#include "twlmdb.hpp"

namespace twlmdb {

class Environment {
 public:
  // Opens the file, creating it when it is missing. 0 or a negative errno number.
  static int open(const std::string &path, std::size_t largest, std::shared_ptr<Environment> &out);
  Environment() = default;
  Environment(const Environment &) = delete;
  Environment &operator=(const Environment &) = delete;
  ~Environment();

  bool is(const struct stat &file) const { return file.st_dev == device_ && file.st_ino == inode_; }
  // Whether the file, as it was seen just now, still has all its pages: reading one that it has lost would
  // end the process.
  bool whole(const struct stat &seen) const;

  // A read transaction that is kept for the next time, so that no lock is taken for it.
  int begin_reading(Access &access);
  void end_reading();
  // A read transaction of the caller's, who aborts it.
  int begin_snapshot(Access &access);
  int begin_writing(Access &access);
  // Frees the places of readers that died; they would keep old pages in use for ever.
  void forget_dead_readers() { mdb_reader_check(env_, nullptr); }

  // Set in a child of the process that opened it. It is then neither used nor closed: closing its files would
  // take the child's own locks on them.
  bool inherited = false;
  std::shared_ptr<Environment> next_inherited;

 private:
  int prepare(const std::string &path, std::size_t largest);
  int begin(unsigned flags, MDB_txn *&txn);

  MDB_env *env_ = nullptr;
  MDB_txn *reader_ = nullptr;
  dev_t device_ = 0;
  ino_t inode_ = 0;
  std::size_t page_size_ = 0;
};

}  // namespace twlmdb
