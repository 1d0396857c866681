#include "connection.hpp"

#include <poll.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <utility>

namespace searchd {

namespace {

constexpr std::size_t header_size = 4;

std::size_t length_in(const std::string &bytes) {
  std::size_t length = 0;
  for (std::size_t i = 0; i < header_size; ++i) length = length << 8 | static_cast<unsigned char>(bytes[i]);
  return length;
}

}  // namespace

connection::connection(descriptor socket, const options &opts, clock::time_point now)
    : socket_(std::move(socket)),
      max_message_(opts.max_message),
      time_(opts.client_time),
      deadline_(now + time_) {}

short connection::events() const { return out_.empty() ? POLLIN : POLLOUT; }

bool connection::advance(service &answers, clock::time_point now) {
  const std::size_t served = served_;
  if (!(out_.empty() ? receive() : send())) return false;
  if (!answer_messages(answers)) return false;
  if (served_ != served) deadline_ = now + time_;
  return true;
}

// Reads what is there, at most one piece: other clients have their turn.
bool connection::receive() {
  std::array<char, 65536> piece;
  const ssize_t got = recv(fd(), piece.data(), piece.size(), MSG_DONTWAIT);
  if (got < 0) return errno == EAGAIN || errno == EINTR;
  in_.append(piece.data(), static_cast<std::size_t>(got));
  return got > 0;
}

// Answers one message after the other for as long as replies are taken at once.
bool connection::answer_messages(service &answers) {
  while (out_.empty() && !closing_ && in_.size() >= header_size) {
    const std::size_t length = length_in(in_);
    if (length == 0 || length > max_message_) {
      reply(R"({"result":false,"error":"a message of this length is not taken"})");
      closing_ = true;  // where the next message begins is not known
    } else if (in_.size() < header_size + length) {
      return true;
    } else {
      reply(answers.answer(in_.substr(header_size, length), greeted_));
      in_.erase(0, header_size + length);
    }
    ++served_;
    if (!send()) return false;
  }
  return true;
}

void connection::reply(const std::string &text) {
  for (std::size_t i = header_size; i-- > 0;) out_ += static_cast<char>(text.size() >> (8 * i) & 0xff);
  out_ += text;
}

// False when the peer is gone, or nothing is left to do for it.
bool connection::send() {
  while (sent_ < out_.size()) {
    const ssize_t moved = ::send(fd(), out_.data() + sent_, out_.size() - sent_, MSG_DONTWAIT | MSG_NOSIGNAL);
    if (moved < 0) return errno == EAGAIN || errno == EINTR;
    sent_ += static_cast<std::size_t>(moved);
  }
  out_.clear();
  sent_ = 0;
  return !closing_;
}

}  // namespace searchd
