// A stream socket to a server that is not trusted: every wait ends, every size is bounded.
#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace twbs {

// The longest line of a reply, its end not counted.
inline constexpr std::size_t kLongestLine = 256;

// Until when a whole exchange must be over.
using Deadline = std::chrono::steady_clock::time_point;

// Functions answer 0 or a negative errno number. After a failure nobody knows what the server says next: the
// connection is over.
class Connection {
 public:
  Connection() = default;
  Connection(const Connection &) = delete;
  Connection &operator=(const Connection &) = delete;
  ~Connection();

  int open(const char *address, std::uint16_t port) noexcept;

  std::chrono::milliseconds timeout{5000};
  Deadline deadline(std::chrono::seconds more = {}) const {
    return std::chrono::steady_clock::now() + timeout + more;
  }

  // Sends the command line, which is complete, and what stands behind it.
  int send(std::string_view command, std::string_view body, Deadline deadline) noexcept;
  // The next line, without its end. It lives until the next call.
  int read_line(std::string_view &line, Deadline deadline) noexcept;
  // The next `length` bytes and the line end behind them. Without `out` they are dropped.
  int read_body(char *out, std::size_t length, Deadline deadline) noexcept;

  // Ends the connection because of `error`, which is returned.
  int fail(int error) noexcept;

 private:
  int wait(short events, Deadline deadline) noexcept;
  int send_some(std::string_view &bytes, bool more, Deadline deadline) noexcept;
  int fill(Deadline deadline) noexcept;

  int descriptor_ = -1;
  std::array<char, 4096> buffer_;  // received, and not yet taken: from first_ to last_
  std::size_t first_ = 0, last_ = 0;
};

}  // namespace twbs
