// What LMDB and the operating system report, in the store's own codes and words.
#pragma once

#include <string>

#include "engine/engine.hpp"

namespace twcfg {

// Thrown by table operations inside a transaction; never leaves the engine.
struct LmdbError {
  int code;  // MDB_* or errno
};

// Throws unless `code` is 0.
inline void check(int code) {
  if (code != 0) throw LmdbError{code};
}

// `what` failed on `path` with `code`.
Failure lmdb_failure(int code, const std::string &path, const std::string &what);

}  // namespace twcfg
