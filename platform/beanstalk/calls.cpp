#include <twbeanstalk.h>

#include <array>
#include <cerrno>
#include <cinttypes>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

#include "connection.hpp"
#include "reply.hpp"

struct bs_connection : twbs::Connection {};

namespace {

using twbs::Deadline;
using twbs::Reply;

// No server takes larger ones.
constexpr std::int64_t kLargestJob = std::int64_t{1} << 30;

// A command line: the longest name of a tube and four numbers fit.
struct Line {
  char chars[256];
  std::size_t length;

  __attribute__((format(printf, 2, 3))) explicit Line(const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    length = static_cast<std::size_t>(std::vsnprintf(chars, sizeof chars, format, arguments));
    va_end(arguments);
  }
  operator std::string_view() const { return {chars, length}; }
};

// What a reply that is not the wanted one means. Behind one that is none nothing can be understood either.
int refused(bs_connection &connection, std::string_view line) {
  const int error = twbs::error_of(line);
  return error == -EPROTO ? connection.fail(error) : error;
}

// Sends a command whose good reply is `word` and `count` numbers.
int exchange(bs_connection &connection, std::string_view command, std::string_view body,
             std::string_view word, std::size_t count, Reply &reply) {
  const Deadline deadline = connection.deadline();
  if (const int result = connection.send(command, body, deadline)) return result;
  std::string_view line;
  if (const int result = connection.read_line(line, deadline)) return result;
  return twbs::parse(line, word, count, reply) ? 0 : refused(connection, line);
}

int exchange(bs_connection *connection, std::string_view command, std::string_view word,
             std::size_t count = 0) {
  Reply reply;
  return exchange(*connection, command, {}, word, count, reply);
}

int take_body(bs_connection &connection, std::size_t length, bs_job &job, Deadline deadline) {
  auto *body = static_cast<char *>(std::malloc(length + 1));
  if (!body) return connection.fail(-ENOMEM);
  if (const int result = connection.read_body(body, length, deadline)) {
    std::free(body);
    return result;
  }
  body[length] = '\0';
  job.body = body;
  job.length = length;
  return 0;
}

}  // namespace

bs_connection *bs_connect(const char *address, uint16_t port) noexcept {
  if (!address) {
    errno = EINVAL;
    return nullptr;
  }
  auto *connection = new (std::nothrow) bs_connection;
  if (!connection) {
    errno = ENOMEM;
    return nullptr;
  }
  if (const int result = connection->open(address, port)) {
    delete connection;
    errno = -result;
    return nullptr;
  }
  return connection;
}

void bs_disconnect(bs_connection *connection) noexcept { delete connection; }

int bs_set_timeout(bs_connection *connection, uint32_t milliseconds) noexcept {
  if (!connection || milliseconds == 0) return -EINVAL;
  connection->timeout = std::chrono::milliseconds(milliseconds);
  return 0;
}

int bs_use(bs_connection *connection, const char *tube) noexcept {
  if (!connection || !twbs::is_tube(tube)) return -EINVAL;
  return exchange(connection, Line("use %s\r\n", tube), Line("USING %s", tube));
}

int64_t bs_put(bs_connection *connection, uint32_t priority, uint32_t delay, uint32_t ttr, const void *body,
               size_t length) noexcept {
  if (!connection || (!body && length > 0)) return -EINVAL;
  if (length > BS_BODY_MAX) return -EMSGSIZE;
  std::array<char, BS_BODY_MAX + 2> bytes;
  if (length > 0) std::memcpy(bytes.data(), body, length);
  std::memcpy(bytes.data() + length, "\r\n", 2);
  Reply reply;
  const Line command("put %u %u %u %zu\r\n", priority, delay, ttr, length);
  const int result = exchange(*connection, command, {bytes.data(), length + 2}, "INSERTED", 1, reply);
  return result == 0 ? reply.numbers[0] : result;
}

int bs_watch(bs_connection *connection, const char *tube) noexcept {
  if (!connection || !twbs::is_tube(tube)) return -EINVAL;
  return exchange(connection, Line("watch %s\r\n", tube), "WATCHING", 1);
}

int bs_ignore(bs_connection *connection, const char *tube) noexcept {
  if (!connection || !twbs::is_tube(tube)) return -EINVAL;
  return exchange(connection, Line("ignore %s\r\n", tube), "WATCHING", 1);
}

int bs_reserve(bs_connection *connection, uint32_t timeout, bs_job *job) noexcept {
  if (!connection || !job) return -EINVAL;
  const Line command("reserve-with-timeout %u\r\n", timeout);
  if (const int result = connection->send(command, {}, connection->deadline())) return result;
  std::string_view line;
  if (const int result = connection->read_line(line, connection->deadline(std::chrono::seconds(timeout))))
    return result;
  Reply reply;
  if (!twbs::parse(line, "RESERVED", 2, reply)) return refused(*connection, line);
  const auto [id, length] = reply.numbers;
  if (length > kLargestJob) return connection->fail(-EPROTO);
  const auto size = static_cast<std::size_t>(length);
  bs_job found{id, nullptr, 0};
  int result = 0;
  if (size > BS_BODY_MAX) {
    result = connection->read_body(nullptr, size, connection->deadline());
    if (result == 0) result = -EMSGSIZE;
  } else {
    result = take_body(*connection, size, found, connection->deadline());
  }
  if (result == 0 || result == -EMSGSIZE) *job = found;
  return result;
}

int bs_delete(bs_connection *connection, int64_t id) noexcept {
  if (!connection || id < 0) return -EINVAL;
  return exchange(connection, Line("delete %" PRId64 "\r\n", id), "DELETED");
}

int bs_release(bs_connection *connection, int64_t id, uint32_t priority, uint32_t delay) noexcept {
  if (!connection || id < 0) return -EINVAL;
  return exchange(connection, Line("release %" PRId64 " %u %u\r\n", id, priority, delay), "RELEASED");
}

int bs_bury(bs_connection *connection, int64_t id, uint32_t priority) noexcept {
  if (!connection || id < 0) return -EINVAL;
  return exchange(connection, Line("bury %" PRId64 " %u\r\n", id, priority), "BURIED");
}

int bs_touch(bs_connection *connection, int64_t id) noexcept {
  if (!connection || id < 0) return -EINVAL;
  return exchange(connection, Line("touch %" PRId64 "\r\n", id), "TOUCHED");
}
