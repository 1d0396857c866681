#include "socket_calls.hpp"

#include <dlfcn.h>

#include <cerrno>

namespace socket_calls {

namespace {

thread_local Watch *watch = nullptr;

template <class Function>
Function *system_call(const char *name) {
  return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

}  // namespace

Watch::Watch() { watch = this; }
Watch::~Watch() { watch = nullptr; }

}  // namespace socket_calls

// The definitions of a program come before those of the libraries that it loads.
#define VISIBLE extern "C" __attribute__((visibility("default")))
using socket_calls::system_call;
using socket_calls::watch;

VISIBLE int socket(int domain, int type, int protocol) noexcept {
  if (watch) {
    watch->seen.domain = domain;
    watch->seen.type = type;
    watch->seen.protocol = protocol;
  }
  return system_call<int(int, int, int)>("socket")(domain, type, protocol);
}

VISIBLE int connect(int fd, const sockaddr *address, socklen_t size) {
  if (watch) {
    watch->seen.address_size = size;
    watch->seen.address.assign(reinterpret_cast<const char *>(address), size);
  }
  return system_call<int(int, const sockaddr *, socklen_t)>("connect")(fd, address, size);
}

VISIBLE int setsockopt(int fd, int level, int option, const void *value, socklen_t size) noexcept {
  const auto call = system_call<int(int, int, int, const void *, socklen_t)>("setsockopt");
  if (!watch || level != SOL_SOCKET || option != SO_RCVTIMEO) return call(fd, level, option, value, size);
  watch->seen.reply_time = *static_cast<const timeval *>(value);
  watch->seen.fd = fd;
  ++watch->seen.reply_times_set;
  watch->connected();
  if (watch->refuse_reply_time) {
    errno = ENOBUFS;
    return -1;
  }
  const timeval shorter = watch->shorter_reply_time;
  return call(fd, level, option, shorter.tv_usec != 0 ? &shorter : value, size);
}
