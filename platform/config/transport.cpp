#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <twconfig/transport.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cstddef>
#include <exception>
#include <string>

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t kMaxBody = CFG_TRANSPORT_MAX;
constexpr std::size_t kHeaderSize = 4;
// What is set aside for a body before its first byte has come.
constexpr std::size_t kFirstChunk = std::size_t{64} * 1024;

// A stream socket with one deadline for all that a message needs: a peer that sends a byte now and then must
// not keep its caller for longer than the socket's time-out. Each step is tried without waiting, whether the
// socket is blocking or not, and waits in poll().
class Stream {
 public:
  // `timeout` is SO_RCVTIMEO or SO_SNDTIMEO.
  Stream(int fd, int timeout) noexcept : fd_(fd) {
    // The socket's type can be asked of anything: what is no stream socket is found out without touching it.
    int type = 0;
    socklen_t size = sizeof type;
    usable_ = getsockopt(fd, SOL_SOCKET, SO_TYPE, &type, &size) == 0 && type == SOCK_STREAM;
    timeval limit{};
    size = sizeof limit;
    usable_ = usable_ && getsockopt(fd, SOL_SOCKET, timeout, &limit, &size) == 0;
    if (limit.tv_sec == 0 && limit.tv_usec == 0) return;  // zero means for ever
    constexpr long kLongest = 1'000'000'000;              // seconds; more overflows the clock
    deadline_ = Clock::now() + std::chrono::seconds(std::min(limit.tv_sec, kLongest)) +
                std::chrono::microseconds(limit.tv_usec);
  }

  bool usable() const { return usable_; }

  bool receive(char *data, std::size_t size) noexcept {
    return transfer(POLLIN, size,
                    [&](std::size_t done) { return recv(fd_, data + done, size - done, MSG_DONTWAIT); });
  }

  bool send(const char *data, std::size_t size) noexcept {
    return transfer(POLLOUT, size, [&](std::size_t done) {
      return ::send(fd_, data + done, size - done, MSG_DONTWAIT | MSG_NOSIGNAL);
    });
  }

 private:
  static constexpr Clock::time_point kNever = Clock::time_point::max();

  template <class Step>
  bool transfer(short event, std::size_t size, Step step) noexcept {
    for (std::size_t done = 0; done < size;) {
      const ssize_t moved = step(done);
      if (moved > 0) {
        done += static_cast<std::size_t>(moved);
      } else if (moved < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) {
        if (!wait(event)) return false;
      } else if (moved == 0 || errno != EINTR) {
        return false;  // the end of the stream, or broken
      }
      if (done < size && remaining() == 0) return false;
    }
    return true;
  }

  // Until the socket is ready (or broken, which the next step finds out); false at the deadline.
  bool wait(short event) const noexcept {
    for (;;) {
      pollfd ready{fd_, event, 0};
      const int left = remaining();
      const int count = poll(&ready, 1, left);
      if (count > 0) return true;
      if (count < 0 && errno != EINTR) return false;
      if (count == 0 && remaining() == 0) return false;
    }
  }

  // Milliseconds for poll(), rounded up; -1 without a deadline.
  int remaining() const noexcept {
    if (deadline_ == kNever) return -1;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline_ - Clock::now()).count();
    return static_cast<int>(std::clamp<decltype(left)>(left, 0, INT_MAX));
  }

  int fd_;
  bool usable_ = false;
  Clock::time_point deadline_ = kNever;
};

// A message on its way. Jansson goes on behind a member's name that it could not write, so that what has
// failed once must keep failing: half a message is never sent.
struct Text {
  std::string message = std::string(kHeaderSize, '\0');
  bool whole = true;
};

int append_text(const char *data, std::size_t size, void *context) noexcept {
  auto &text = *static_cast<Text *>(context);
  text.whole = text.whole && size <= kMaxBody + kHeaderSize - text.message.size();
  if (!text.whole) return -1;
  try {
    text.message.append(data, size);
    return 0;
  } catch (const std::exception &) {
    text.whole = false;
    return -1;
  }
}

// The body grows with what has come, so that a claimed length costs its sender bytes and not us memory.
bool receive_body(Stream &stream, std::size_t length, std::string &body) {
  while (body.size() < length) {
    const std::size_t had = body.size();
    body.resize(std::min(length, std::max(kFirstChunk, 2 * had)));
    if (!stream.receive(body.data() + had, body.size() - had)) return false;
  }
  return true;
}

}  // namespace

int cfg_send(int socket, const json_t *value) noexcept {
  Stream stream(socket, SO_SNDTIMEO);
  if (!value || !stream.usable()) return 0;
  try {
    Text text;
    if (json_dump_callback(value, append_text, &text, JSON_COMPACT | JSON_ENCODE_ANY) < 0 || !text.whole)
      return 0;
    std::string &message = text.message;
    const std::size_t length = message.size() - kHeaderSize;
    for (std::size_t i = 0; i < kHeaderSize; ++i)
      message[i] = static_cast<char>(length >> (8 * (kHeaderSize - 1 - i)) & 0xff);
    return stream.send(message.data(), message.size()) ? 1 : 0;
  } catch (const std::exception &) {
    return 0;
  }
}

json_t *cfg_receive(int socket) noexcept {
  Stream stream(socket, SO_RCVTIMEO);
  if (!stream.usable()) return nullptr;
  std::array<char, kHeaderSize> header;
  if (!stream.receive(header.data(), header.size())) return nullptr;
  std::size_t length = 0;
  for (const char byte : header) length = length << 8 | static_cast<unsigned char>(byte);
  if (length == 0 || length > kMaxBody) return nullptr;
  try {
    std::string body;
    if (!receive_body(stream, length, body)) return nullptr;
    return json_loadb(body.data(), body.size(), JSON_REJECT_DUPLICATES | JSON_DECODE_ANY, nullptr);
  } catch (const std::exception &) {
    return nullptr;
  }
}
