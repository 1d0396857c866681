#include "connection.hpp"

#include <netdb.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

namespace twbs {
namespace {

// 0 when the descriptor is ready, or a negative errno number.
int wait_for(int descriptor, short events, Deadline deadline) noexcept {
  using std::chrono::milliseconds;
  for (;;) {
    const auto left = std::chrono::ceil<milliseconds>(deadline - std::chrono::steady_clock::now());
    if (left <= milliseconds::zero()) return -ETIMEDOUT;
    pollfd one{descriptor, events, 0};
    const int ready = poll(&one, 1, static_cast<int>(std::min<std::int64_t>(left.count(), 1 << 30)));
    if (ready > 0) return 0;
    if (ready < 0 && errno != EINTR) return -errno;
  }
}

int finish_connecting(int descriptor, Deadline deadline) noexcept {
  if (const int result = wait_for(descriptor, POLLOUT, deadline)) return result;
  int error = 0;
  socklen_t size = sizeof error;
  if (getsockopt(descriptor, SOL_SOCKET, SO_ERROR, &error, &size) != 0) return -errno;
  return -error;
}

}  // namespace

Connection::~Connection() {
  if (descriptor_ >= 0) close(descriptor_);
}

int Connection::open(const char *address, std::uint16_t port) noexcept {
  addrinfo hints{}, *found = nullptr;
  hints.ai_socktype = SOCK_STREAM;
  hints.ai_flags = AI_NUMERICHOST | AI_NUMERICSERV;
  char service[8];
  std::snprintf(service, sizeof service, "%u", unsigned{port});
  const int code = getaddrinfo(address, service, &hints, &found);
  if (code != 0) return code == EAI_MEMORY ? -ENOMEM : -EINVAL;
  const std::unique_ptr<addrinfo, decltype(&freeaddrinfo)> addresses(found, freeaddrinfo);
  descriptor_ = socket(found->ai_family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  if (descriptor_ < 0) return -errno;
  if (connect(descriptor_, found->ai_addr, found->ai_addrlen) == 0) return 0;
  return errno == EINPROGRESS ? finish_connecting(descriptor_, deadline()) : -errno;
}

int Connection::fail(int error) noexcept {
  if (descriptor_ >= 0) close(descriptor_);
  descriptor_ = -1;
  return error;
}

int Connection::wait(short events, Deadline deadline) noexcept {
  const int result = wait_for(descriptor_, events, deadline);
  return result == 0 ? 0 : fail(result);
}

int Connection::send_some(std::string_view &bytes, bool more, Deadline deadline) noexcept {
  const int flags = MSG_NOSIGNAL | (more ? MSG_MORE : 0);
  const ssize_t sent = ::send(descriptor_, bytes.data(), bytes.size(), flags);
  if (sent >= 0) {
    bytes.remove_prefix(static_cast<std::size_t>(sent));
    return 0;
  }
  if (errno == EAGAIN || errno == EWOULDBLOCK) return wait(POLLOUT, deadline);
  return errno == EINTR ? 0 : fail(-errno);
}

int Connection::send(std::string_view command, std::string_view body, Deadline deadline) noexcept {
  if (descriptor_ < 0) return -ENOTCONN;
  const bool has_body = !body.empty();
  while (!command.empty())
    if (const int result = send_some(command, has_body, deadline)) return result;
  while (!body.empty())
    if (const int result = send_some(body, false, deadline)) return result;
  return 0;
}

// Receives more behind what is there already; there is room.
int Connection::fill(Deadline deadline) noexcept {
  if (descriptor_ < 0) return -ENOTCONN;
  if (first_ > 0) {
    std::memmove(buffer_.data(), buffer_.data() + first_, last_ - first_);
    last_ -= first_;
    first_ = 0;
  }
  for (;;) {
    const ssize_t got = recv(descriptor_, buffer_.data() + last_, buffer_.size() - last_, 0);
    if (got > 0) {
      last_ += static_cast<std::size_t>(got);
      return 0;
    }
    if (got == 0) return fail(-ECONNRESET);
    if (errno != EAGAIN && errno != EWOULDBLOCK && errno != EINTR) return fail(-errno);
    if (const int result = wait(POLLIN, deadline)) return result;
  }
}

int Connection::read_line(std::string_view &line, Deadline deadline) noexcept {
  for (;;) {
    const std::string_view received(buffer_.data() + first_, last_ - first_);
    const std::size_t end = received.substr(0, kLongestLine + 2).find("\r\n");
    if (end != std::string_view::npos) {
      line = received.substr(0, end);
      first_ += end + 2;
      return 0;
    }
    if (received.size() >= kLongestLine + 2) return fail(-EPROTO);
    if (const int result = fill(deadline)) return result;
  }
}

int Connection::read_body(char *out, std::size_t length, Deadline deadline) noexcept {
  while (length > 0) {
    const std::size_t part = std::min(length, last_ - first_);
    if (out) out = std::copy_n(buffer_.data() + first_, part, out);
    first_ += part;
    length -= part;
    if (length == 0) break;
    // A server that keeps sending is not allowed to do so for ever, either.
    if (std::chrono::steady_clock::now() >= deadline) return fail(-ETIMEDOUT);
    if (const int result = fill(deadline)) return result;
  }
  std::string_view rest;
  if (const int result = read_line(rest, deadline)) return result;
  return rest.empty() ? 0 : fail(-EPROTO);
}

}  // namespace twbs
