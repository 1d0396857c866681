// Preloaded into unenrolld, to let something happen at a moment that a test has chosen:
//   TRAP_KILL_AT=<n>        it is killed before its n-th call that sends, receives, writes or syncs
//   TRAP_CHANGE_NODE=<n>    before each of its first n commits another commit changes the node TRAP_NODE
//   TRAP_REMOVE_NODE=<n>    ... removes it
// in the store TRAP_STORE.
#include <dlfcn.h>
#include <sys/socket.h>
#include <sys/uio.h>
#include <twconfig.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <string>

namespace {

long number_of(const char *variable) {
  const char *text = std::getenv(variable);
  return text ? std::atol(text) : 0;
}

template <class Function>
Function *next(const char *name) {
  return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

void count_call() {
  static const long kill_at = number_of("TRAP_KILL_AT");
  static long calls = 0;
  if (++calls == kill_at) kill(getpid(), SIGKILL);
}

using commit_function = int(cfg *, const cfg_commit_note *);

void other_commit(bool remove, long number) {
  cfg *store = cfg_open(std::getenv("TRAP_STORE"), 0, nullptr);
  cfg_elem *node = cfg_get_by_id(store, std::getenv("TRAP_NODE"));
  if (remove)
    cfg_delete_element(store, node);
  else
    cfg_map_set_string(store, node, "description", ("changed " + std::to_string(number)).c_str());
  next<commit_function>("cfg_commit")(store, nullptr);
  cfg_close(store);
}

}  // namespace

#define TW_TRAP extern "C" __attribute__((visibility("default")))

TW_TRAP ssize_t send(int to, const void *bytes, size_t size, int flags) {
  count_call();
  return next<ssize_t(int, const void *, size_t, int)>("send")(to, bytes, size, flags);
}
TW_TRAP ssize_t recv(int from, void *bytes, size_t size, int flags) {
  count_call();
  return next<ssize_t(int, void *, size_t, int)>("recv")(from, bytes, size, flags);
}
TW_TRAP ssize_t pwrite(int to, const void *bytes, size_t size, off_t at) {
  count_call();
  return next<ssize_t(int, const void *, size_t, off_t)>("pwrite")(to, bytes, size, at);
}
TW_TRAP ssize_t pwritev(int to, const iovec *parts, int count, off_t at) {
  count_call();
  return next<ssize_t(int, const iovec *, int, off_t)>("pwritev")(to, parts, count, at);
}
TW_TRAP int fsync(int file) {
  count_call();
  return next<int(int)>("fsync")(file);
}
TW_TRAP int fdatasync(int file) {
  count_call();
  return next<int(int)>("fdatasync")(file);
}

TW_TRAP int cfg_commit(cfg *store, const cfg_commit_note *note) noexcept {
  static const long changes = number_of("TRAP_CHANGE_NODE"), removals = number_of("TRAP_REMOVE_NODE");
  static long commits = 0;
  if (++commits <= changes) other_commit(false, commits);
  if (commits <= removals) other_commit(true, commits);
  return next<commit_function>("cfg_commit")(store, note);
}
