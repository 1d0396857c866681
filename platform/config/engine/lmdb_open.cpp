#include "engine/lmdb_open.hpp"

#include <cerrno>
#include <cstdio>

namespace twcfg {
namespace {

// LMDB aborts the process when it finds that it cannot go on: leave a word about why.
void log_assertion(MDB_env *env, const char *message) {
  const char *path = nullptr;
  mdb_env_get_path(env, &path);
  std::fprintf(stderr, "twconfig: %s: the store's files are damaged: %s\n", path ? path : "?", message);
}

int open_once(const std::string &path, unsigned flags, std::size_t map_size, EnvironmentPointer &out) {
  MDB_env *env = nullptr;
  if (const int code = mdb_env_create(&env)) return code;
  out.reset(env);
  mdb_env_set_assert(env, log_assertion);
  if (const int code = mdb_env_set_maxreaders(env, kMaxReaders)) return code;
  if (const int code = mdb_env_set_mapsize(env, map_size)) return code;
  return mdb_env_open(env, path.c_str(), flags, 0600);
}

}  // namespace

int open_environment(const std::string &path, unsigned flags, std::size_t map_size, EnvironmentPointer &out) {
  int code = open_once(path, flags, map_size, out);
  // Memory checkers refuse so large a map as an invalid argument.
  while ((code == ENOMEM || code == EINVAL) && map_size > kSmallestMap) {
    map_size /= 2;
    code = open_once(path, flags, map_size, out);
  }
  if (code != 0) out.reset();
  return code;
}

}  // namespace twcfg
