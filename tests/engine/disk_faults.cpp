#include "disk_faults.hpp"

#include <dlfcn.h>
#include <sys/uio.h>
#include <unistd.h>

#include <cerrno>

namespace twcfg::testing {
namespace {

DiskFault wanted = DiskFault::none;
int wanted_error = 0;

bool fails(DiskFault fault) {
  if (wanted != fault) return false;
  errno = wanted_error;
  return true;
}

template <class Function>
Function next(const char *name) {
  return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

constexpr off_t kFirstDataPage = 2 * 4096;

}  // namespace

void set_disk_fault(DiskFault fault, int error) {
  wanted = fault;
  wanted_error = error;
}

extern "C" {

__attribute__((visibility("default"))) ssize_t pwrite(int file, const void *data, size_t size, off_t offset) {
  static const auto system = next<ssize_t (*)(int, const void *, size_t, off_t)>("pwrite");
  if (offset < kFirstDataPage && fails(DiskFault::meta_write)) {
    wanted = DiskFault::none;
    return -1;
  }
  if (offset >= kFirstDataPage) {
    if (fails(DiskFault::data_write)) return -1;
    if (fails(DiskFault::short_data_write)) size /= 2;
  }
  return system(file, data, size, offset);
}

// LMDB writes nothing but data pages with it.
__attribute__((visibility("default"))) ssize_t writev(int file, const iovec *parts, int count) {
  static const auto system = next<ssize_t (*)(int, const iovec *, int)>("writev");
  if (fails(DiskFault::data_write)) return -1;
  return system(file, parts, fails(DiskFault::short_data_write) ? count - 1 : count);
}

__attribute__((visibility("default"))) int fdatasync(int file) {
  static const auto system = next<int (*)(int)>("fdatasync");
  return fails(DiskFault::flush) ? -1 : system(file);
}

}  // extern "C"

}  // namespace twcfg::testing
