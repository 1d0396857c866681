// How far long work has come, on standard error: one line that is rewritten on a terminal, else every tenth.
#pragma once

#include <fmt/format.h>
#include <unistd.h>

#include <string>
#include <utility>

namespace twctl {

class progress {
 public:
  /// Shown when standard error is a terminal, or when `forced`.
  progress(std::string what, size_t total, bool forced)
      : what_(std::move(what)),
        total_(total),
        terminal_(isatty(STDERR_FILENO)),
        shown_(terminal_ || forced) {}
  ~progress() {
    if (shown_ && terminal_ && done_) fmt::print(stderr, "\n");
  }
  progress(const progress &) = delete;
  progress &operator=(const progress &) = delete;

  void step() {
    done_++;
    size_t stride = terminal_ ? 50 : (total_ + 9) / 10;
    if (!shown_ || (done_ % stride && done_ != total_)) return;
    fmt::print(stderr, "{}{}: {}/{}{}", terminal_ ? "\r" : "", what_, done_, total_, terminal_ ? "" : "\n");
  }

 private:
  std::string what_;
  size_t total_, done_ = 0;
  bool terminal_, shown_;
};

}  // namespace twctl
