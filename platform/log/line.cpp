#include "line.hpp"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstring>

namespace twlog {
namespace {

constexpr std::string_view kPriorityNames[] = {"emergency", "alert",  "critical",    "error",
                                               "warning",   "notice", "information", "debug"};
constexpr std::string_view kCut = "...";

std::string_view decimal(std::array<char, 16> &buffer, int number) noexcept {
  const auto end = std::to_chars(buffer.begin(), buffer.end(), number).ptr;
  return {buffer.data(), static_cast<std::size_t>(end - buffer.begin())};
}

// Control characters could forge a second line or steer a terminal. Those above 127 appear in UTF-8 text as
// C2 80 to C2 9F.
std::size_t control_length(std::string_view text) noexcept {
  const auto byte = static_cast<unsigned char>(text[0]);
  if (byte < 0x20 || byte == 0x7f) return 1;
  if (byte != 0xc2 || text.size() < 2) return 0;
  const auto next = static_cast<unsigned char>(text[1]);
  return next >= 0x80 && next <= 0x9f ? 2 : 0;
}

Outcome outcome(ssize_t written) noexcept { return written >= 0 ? Outcome::written : Outcome::dropped; }

// A pipe or terminal may be full and its flags are shared with other processes. A description of our own is
// the one way to write without waiting and without changing it for them.
Outcome print_without_waiting(int fd, std::string_view text) noexcept {
  pollfd writable{fd, POLLOUT, 0};
  if (poll(&writable, 1, 0) != 1 || (writable.revents & (POLLERR | POLLHUP)) || !(writable.revents & POLLOUT))
    return Outcome::dropped;  // full, or a pipe without a reader, which would raise SIGPIPE
  char path[32] = "/proc/self/fd/";
  std::to_chars(path + std::strlen(path), path + sizeof path - 1, fd);
  const int own = open(path, O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
  // Another user's terminal or pipe cannot be opened again: what poll said has to do.
  const Outcome result = outcome(write(own >= 0 ? own : fd, text.data(), text.size()));
  if (own >= 0) close(own);
  return result;
}

}  // namespace

PrintedLine::PrintedLine(const Line &line) noexcept {
  std::array<char, 16> number;
  const std::string_view position_line = decimal(number, line.line);
  std::array<char, 16> pid;
  append_escaped(program_invocation_short_name);
  append("[");
  append(decimal(pid, getpid()));
  append("] ");
  append(kPriorityNames[line.priority]);
  append(" ");
  append_escaped(line.file);
  append(":");
  append(position_line);
  append(" ");
  append_escaped(line.function);
  append(": ");
  if (!append_escaped(line.message)) {
    std::memcpy(buffer_.data() + length_, kCut.data(), kCut.size());
    length_ += kCut.size();
  }
  buffer_[length_++] = '\n';
}

// Appends all or nothing, leaving room for the mark of a cut and the line's end.
bool PrintedLine::append(std::string_view text) noexcept {
  if (text.size() > kMax - kCut.size() - 1 - length_) return false;
  std::memcpy(buffer_.data() + length_, text.data(), text.size());
  length_ += text.size();
  return true;
}

bool PrintedLine::append_escaped(std::string_view text) noexcept {
  static constexpr char kDigits[] = "0123456789abcdef";
  while (!text.empty()) {
    const std::size_t control = control_length(text);
    if (control == 0) {
      if (!append(text.substr(0, 1))) return false;
    } else if (text[0] == '\n') {
      if (!append("\\n")) return false;
    } else {
      const auto byte = static_cast<unsigned char>(text[control - 1]);
      const char escape[] = {'\\', 'x', kDigits[byte >> 4], kDigits[byte & 15]};
      if (!append({escape, sizeof escape})) return false;
    }
    text.remove_prefix(control == 0 ? 1 : control);
  }
  return true;
}

Outcome print(int fd, const Line &line) noexcept {
  // In a process that was started without stderr, whatever it opened next has the number 2. Our own files and
  // sockets are all opened close-on-exec, a stderr is not: nothing may be printed into a data file.
  const int flags = fcntl(fd, F_GETFD);
  struct stat status;
  if (flags < 0 || (flags & FD_CLOEXEC) || fstat(fd, &status) < 0) return Outcome::no_output;

  const PrintedLine printed(line);
  const std::string_view text = printed.text();
  if (S_ISSOCK(status.st_mode))
    return outcome(send(fd, text.data(), text.size(), MSG_DONTWAIT | MSG_NOSIGNAL));
  if (S_ISFIFO(status.st_mode) || S_ISCHR(status.st_mode)) return print_without_waiting(fd, text);
  return outcome(write(fd, text.data(), text.size()));
}

}  // namespace twlog
