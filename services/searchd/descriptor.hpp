// A file descriptor that closes itself.
#pragma once

#include <unistd.h>

#include <utility>

namespace searchd {

class descriptor {
 public:
  explicit descriptor(int fd = -1) noexcept : fd_(fd) {}
  descriptor(descriptor &&other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
  descriptor &operator=(descriptor &&other) noexcept {
    std::swap(fd_, other.fd_);
    return *this;
  }
  descriptor(const descriptor &) = delete;
  descriptor &operator=(const descriptor &) = delete;
  ~descriptor() {
    if (fd_ >= 0) close(fd_);
  }

  int get() const { return fd_; }

 private:
  int fd_;
};

}  // namespace searchd
