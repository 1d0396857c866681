#include "journal.hpp"

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <system_error>

namespace twlog {
namespace {

// The fields of one entry. Sizes are bounded by the message's limit; a field that does not fit is left out.
class Fields {
 public:
  // In the form with a length (8 bytes, least significant first), so that a value may hold line breaks.
  void add(std::string_view name, std::string_view value) noexcept {
    if (name.size() + value.size() + 10 > buffer_.size() - length_) return;
    append(name);
    append("\n");
    for (unsigned shift = 0; shift < 64; shift += 8)
      buffer_[length_++] = static_cast<char>(std::uint64_t{value.size()} >> shift & 0xff);
    append(value);
    append("\n");
  }
  void add(std::string_view name, int number) noexcept {
    std::array<char, 16> text;
    const int length = std::snprintf(text.data(), text.size(), "%d", number);
    add(name, {text.data(), static_cast<std::size_t>(length)});
  }
  std::string_view text() const { return {buffer_.data(), length_}; }

 private:
  void append(std::string_view text) noexcept {
    std::memcpy(buffer_.data() + length_, text.data(), text.size());
    length_ += text.size();
  }
  std::array<char, 8192> buffer_;
  std::size_t length_ = 0;
};

}  // namespace

JournalStream::JournalStream(const char *variable) noexcept {
  const std::string_view text = variable ? variable : "";
  const char *end = text.data() + text.size();
  const auto device = std::from_chars(text.data(), end, device_);
  if (device.ec != std::errc() || device.ptr == end || *device.ptr != ':') return;
  known_ = std::from_chars(device.ptr + 1, end, inode_).ec == std::errc();
}

bool JournalStream::is(int fd) const noexcept {
  struct stat status;
  return known_ && fstat(fd, &status) == 0 && status.st_dev == device_ && status.st_ino == inode_;
}

Outcome send_to_journal(const char *socket_path, const Line &line) noexcept {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (std::strlen(socket_path) >= sizeof address.sun_path) return Outcome::no_output;
  std::strcpy(address.sun_path, socket_path);

  Fields fields;
  fields.add("PRIORITY", line.priority);
  fields.add("SYSLOG_IDENTIFIER", program_invocation_short_name);
  fields.add("MESSAGE", line.message);
  fields.add("CODE_LINE", line.line);
  fields.add("CODE_FILE", line.file);
  fields.add("CODE_FUNC", line.function);

  // A socket per line: nothing is shared between threads or left behind in a forked child.
  const int fd = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  if (fd < 0) return Outcome::no_output;
  const std::string_view text = fields.text();
  const ssize_t sent = sendto(fd, text.data(), text.size(), MSG_NOSIGNAL,
                              reinterpret_cast<const sockaddr *>(&address), sizeof address);
  const bool full = sent < 0 && (errno == EAGAIN || errno == ENOBUFS);
  close(fd);
  if (sent >= 0) return Outcome::written;
  return full ? Outcome::dropped : Outcome::no_output;
}

}  // namespace twlog
