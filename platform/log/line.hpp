// One log line and its form on stderr.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace twlog {

struct Line {
  std::string_view file;
  std::string_view function;
  int line = 0;
  int priority = 0;  // 0 to 7
  std::string_view message;
};

// What became of a line.
enum class Outcome {
  written,
  dropped,  // the output exists but cannot take the line now
  no_output
};

// "name[pid] error src/users:120 function: message\n" with control characters escaped. No longer than a pipe
// takes in one piece, so that lines of several processes do not mix.
class PrintedLine {
 public:
  static constexpr std::size_t kMax = 4096;
  explicit PrintedLine(const Line &line) noexcept;
  std::string_view text() const { return {buffer_.data(), length_}; }

 private:
  bool append(std::string_view text) noexcept;
  bool append_escaped(std::string_view text) noexcept;

  std::array<char, kMax> buffer_;
  std::size_t length_ = 0;
};

// Writes the printed line to a descriptor without ever waiting for it.
Outcome print(int fd, const Line &line) noexcept;

}  // namespace twlog
