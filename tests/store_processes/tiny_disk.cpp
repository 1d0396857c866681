#include "tiny_disk.hpp"

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>

namespace trial {

std::string mount_tiny_disk(const std::string &directory, const std::string &size) {
  const auto because = [](const char *step) { return std::string(step) + ": " + std::strerror(errno); };
  if (unshare(CLONE_NEWNS) != 0) return because("no mount namespace");
  if (mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) return because("no private mounts");
  const std::string options = "mode=0700,size=" + size;
  if (mount("tmpfs", directory.c_str(), "tmpfs", 0, options.c_str()) != 0) return because("no tmpfs");
  return "";
}

Filler::Filler(const std::string &directory) : file_(directory + "/filler") {
  const int file = open(file_.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
  if (file < 0) throw std::runtime_error("no filler");
  const char page[4096] = {1};
  while (write(file, page, sizeof page) > 0) {
  }
  const bool full = errno == ENOSPC;
  close(file);
  if (!full) throw std::runtime_error("the disk does not fill up");
}

Filler::~Filler() { unlink(file_.c_str()); }

}  // namespace trial
