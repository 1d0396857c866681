#include "search_service/search_service.hpp"

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <stdexcept>
#include <utility>

namespace search_service {

namespace {

int checked(int result, const char *what) {
  if (result < 0) throw std::runtime_error(std::string(what) + ": " + std::strerror(errno));
  return result;
}

std::string framed(const std::string &body) {
  std::string message;
  for (int shift = 24; shift >= 0; shift -= 8) message += static_cast<char>(body.size() >> shift & 0xff);
  return message + body;
}

}  // namespace

PathClaim::PathClaim()
    : lock_(checked(open(SEARCH_SOCKET_LOCK, O_RDWR | O_CREAT | O_CLOEXEC, 0600), SEARCH_SOCKET_LOCK)) {
  checked(flock(lock_, LOCK_EX), "flock");
  unlink(kPath);
}

PathClaim::~PathClaim() {
  unlink(kPath);
  close(lock_);
}

Scripted::Scripted(Answer answer) : answer_(std::move(answer)) {
  listener_ = checked(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0), "socket");
  stop_ = checked(eventfd(0, EFD_CLOEXEC), "eventfd");
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::memcpy(address.sun_path, kPath, sizeof kPath);
  checked(bind(listener_, reinterpret_cast<sockaddr *>(&address), sizeof address), kPath);
  checked(listen(listener_, 16), "listen");
  thread_ = std::thread([this] { serve(); });
}

Scripted::Scripted(std::string reply)
    : Scripted(Answer([reply = std::move(reply)](const std::string &message) {
        return is_hello(message) ? kGreeting : reply;
      })) {}

Scripted::~Scripted() {
  eventfd_write(stop_, 1);
  thread_.join();
  close(listener_);
  close(stop_);
}

std::vector<std::string> Scripted::messages() {
  const std::lock_guard hold(mutex_);
  return messages_;
}

int Scripted::connections() {
  const std::lock_guard hold(mutex_);
  return connections_;
}

void Scripted::hang_up() {
  const std::lock_guard hold(mutex_);
  hanging_up_ = true;
}

void Scripted::reply_unasked(std::string reply) {
  const std::lock_guard hold(mutex_);
  unasked_ = std::move(reply);
}

void Scripted::wait_for_ended(int count) {
  for (;; std::this_thread::sleep_for(std::chrono::milliseconds(1))) {
    const std::lock_guard hold(mutex_);
    if (ended_ >= count) return;
  }
}

void Scripted::serve() {
  std::vector<pollfd> events = {{listener_, POLLIN, 0}, {stop_, POLLIN, 0}};
  for (;;) {
    poll(events.data(), events.size(), -1);
    if (events[1].revents != 0) break;
    for (std::size_t i = 2; i < events.size();) {
      if (events[i].revents == 0 || answer(events[i].fd)) {
        ++i;
        continue;
      }
      close(events[i].fd);
      events.erase(events.begin() + static_cast<std::ptrdiff_t>(i));
      const std::lock_guard hold(mutex_);
      ++ended_;
    }
    if (events[0].revents == 0) continue;
    const int connection = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
    if (connection < 0) continue;
    const std::lock_guard hold(mutex_);
    ++connections_;
    if (hanging_up_) {
      close(connection);
      ++ended_;
    } else {
      events.push_back({connection, POLLIN, 0});
    }
  }
  for (std::size_t i = 2; i < events.size(); ++i) close(events[i].fd);
}

// Takes one message and answers it. False when the connection is to be closed.
bool Scripted::answer(int connection) {
  std::string header(4, '\0');
  if (!receive(connection, header)) return false;
  std::size_t length = 0;
  for (const char byte : header) length = length << 8 | static_cast<unsigned char>(byte);
  std::string message(length, '\0');
  if (!receive(connection, message)) return false;
  std::string unasked;
  {
    const std::lock_guard hold(mutex_);
    messages_.push_back(message);
    unasked = unasked_;
  }
  const std::optional<std::string> reply = answer_(message);
  if (!reply) return false;
  if (reply->empty()) return true;
  std::string bytes = framed(*reply);
  if (!unasked.empty()) {
    shutdown(connection, SHUT_RD);
    bytes += framed(unasked);
  }
  return send(connection, bytes.data(), bytes.size(), MSG_NOSIGNAL) >= 0;
}

// Fills `bytes`; false at the end of the stream or of the service.
bool Scripted::receive(int connection, std::string &bytes) {
  for (std::size_t done = 0; done < bytes.size();) {
    pollfd events[] = {{connection, POLLIN, 0}, {stop_, POLLIN, 0}};
    poll(events, 2, -1);
    if (events[1].revents != 0) return false;
    const ssize_t got = recv(connection, bytes.data() + done, bytes.size() - done, 0);
    if (got <= 0) return false;
    done += static_cast<std::size_t>(got);
  }
  return true;
}

bool is_hello(const std::string &message) { return message.starts_with(R"({"method":"hello")"); }

}  // namespace search_service
