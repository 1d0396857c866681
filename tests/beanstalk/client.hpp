// Connections and jobs that free themselves.
#ifndef TW_TESTS_BEANSTALK_CLIENT_HPP
#define TW_TESTS_BEANSTALK_CLIENT_HPP

#include <twbeanstalk.h>

#include <cstdlib>
#include <memory>
#include <optional>
#include <string>

namespace queue {

struct disconnect {
  void operator()(bs_connection *connection) const { bs_disconnect(connection); }
};
using connection = std::unique_ptr<bs_connection, disconnect>;

inline connection connect_to(uint16_t port) { return connection(bs_connect("127.0.0.1", port)); }

/** A connection that works for one tube alone. */
inline connection worker_of(uint16_t port, const char *tube) {
  connection made = connect_to(port);
  if (bs_watch(made.get(), tube) != 0 || bs_ignore(made.get(), "default") != 0) made.reset();
  return made;
}

inline int64_t put(const connection &to, const std::string &body, uint32_t priority = 0, uint32_t delay = 0,
                   uint32_t ttr = 60) {
  return bs_put(to.get(), priority, delay, ttr, body.data(), body.size());
}

struct job {
  int64_t id;
  std::string body;
};
/** The next job that is there; nothing, with `result` saying why, without one. */
inline std::optional<job> take(const connection &from, int *result = nullptr, uint32_t timeout = 0) {
  bs_job taken{-1, nullptr, 0};
  const int code = bs_reserve(from.get(), timeout, &taken);
  if (result) *result = code;
  if (code != 0) return std::nullopt;
  job found{taken.id, std::string(taken.body, taken.length)};
  std::free(taken.body);
  return found;
}

}  // namespace queue

#endif
