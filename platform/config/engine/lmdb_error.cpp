#include "engine/lmdb_error.hpp"

#include <lmdb.h>

#include <cerrno>

namespace twcfg {
namespace {

cfg_code store_code(int code) {
  switch (code) {
    case MDB_CORRUPTED:
    case MDB_PAGE_NOTFOUND:
    case MDB_INVALID:
    case MDB_INCOMPATIBLE:
    case MDB_CURSOR_FULL:  // deeper than a sound tree can be
    case MDB_PAGE_FULL:
    case MDB_KEYEXIST:  // only appending at the table's end can find a key in its way
      return CFG_E_CORRUPT;
    case MDB_VERSION_MISMATCH:
      return CFG_E_VERSION;
    case MDB_MAP_FULL:
    case MDB_MAP_RESIZED:
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
      return CFG_E_NO_SPACE;
    case MDB_READERS_FULL:
    case MDB_TXN_FULL:
    case MDB_BAD_VALSIZE:
    case EMFILE:
    case ENFILE:
      return CFG_E_LIMIT;
    case EACCES:
    case EPERM:
      return CFG_E_PERMISSION;
    case EROFS:
      return CFG_E_READ_ONLY;
    case ENOENT:
    case ENOTDIR:
      return CFG_E_NOT_FOUND;
    case EEXIST:
      return CFG_E_EXISTS;
    case ENOMEM:
      return CFG_E_MEMORY;
    default:
      return CFG_E_IO;
  }
}

// What LMDB's own words do not say: what to do about it.
std::string remedy(int code) {
  switch (code) {
    case MDB_MAP_FULL:
    case MDB_MAP_RESIZED:
      return "the store has outgrown the address space that this process reserved for it; close or park all "
             "handles of the process so that it can reserve more";
    case MDB_READERS_FULL:
      return "too many snapshots are open in all processes together; close or park some";
    case MDB_TXN_FULL:
      return "the commit changes too much at once; split it";
    case MDB_PANIC:
      return "an earlier write failed half-way; close all handles of this process and open the store again";
    default:
      return mdb_strerror(code);
  }
}

}  // namespace

Failure lmdb_failure(int code, const std::string &path, const std::string &what) {
  return {store_code(code), path + ": " + what + ": " + remedy(code)};
}

}  // namespace twcfg
