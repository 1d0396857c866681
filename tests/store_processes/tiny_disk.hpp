// A file system of a few MiB that a test can fill up.
#pragma once

#include <string>

namespace trial {

// Mounts one at `directory`, seen by the calling process only: call it in a child. "" or why it cannot be.
std::string mount_tiny_disk(const std::string &directory, const std::string &size);

// Takes all space that is left on a disk for as long as it lives.
class Filler {
 public:
  explicit Filler(const std::string &directory);
  ~Filler();
  Filler(const Filler &) = delete;
  Filler &operator=(const Filler &) = delete;

 private:
  std::string file_;
};

}  // namespace trial
