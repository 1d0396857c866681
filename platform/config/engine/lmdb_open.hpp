// Opening LMDB environments with as much address space as there is to be had.
#pragma once

#include <lmdb.h>
#include <sys/types.h>

#include <cstddef>
#include <memory>
#include <string>

namespace twcfg {

struct EnvironmentCloser {
  void operator()(MDB_env *env) const { mdb_env_close(env); }
};
using EnvironmentPointer = std::unique_ptr<MDB_env, EnvironmentCloser>;

struct TransactionEnder {
  void operator()(MDB_txn *txn) const { mdb_txn_abort(txn); }
};
// A transaction that only reads, until the end of its scope.
using TransactionPointer = std::unique_ptr<MDB_txn, TransactionEnder>;

// Reserved for the map of a store. Address space costs nothing, and as long as the map is larger than the
// file nobody has to wait until it can be moved.
inline constexpr std::size_t kLargestMap = std::size_t{64} << 30U;
inline constexpr std::size_t kSmallestMap = std::size_t{64} << 20U;
// Readers of all processes together; LMDB's default of 126 is soon used up.
inline constexpr unsigned kMaxReaders = 1022;
// A cache line for each of them and two more for LMDB's own.
inline constexpr off_t kLockFileSize = (kMaxReaders + 2) * 64;

// mdb_env_open() with a map of `map_size` bytes, or of a half, a quarter, ... when the system refuses that.
int open_environment(const std::string &path, unsigned flags, std::size_t map_size, EnvironmentPointer &out);

}  // namespace twcfg
