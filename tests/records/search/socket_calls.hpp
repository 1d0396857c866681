// The socket calls of the library, seen and sometimes changed on their way to the system.
#ifndef TW_TESTS_RECORDS_SEARCH_SOCKET_CALLS_HPP
#define TW_TESTS_RECORDS_SEARCH_SOCKET_CALLS_HPP

#include <sys/socket.h>
#include <sys/time.h>

#include <atomic>
#include <functional>
#include <string>

namespace socket_calls {

struct Seen {
  int domain = 0, type = 0, protocol = 0;  // of socket()
  socklen_t address_size = 0;              // of connect()
  std::string address;                     // its bytes
  timeval reply_time{};                    // of setsockopt(SO_RCVTIMEO)
  std::atomic<int> fd = -1;                // whose reply time was set
  int reply_times_set = 0;                 // how often
};

// What the calling thread's calls were, and what becomes of its next ones. Reset when this ends.
class Watch {
 public:
  Watch();
  ~Watch();
  Watch(const Watch &) = delete;
  Watch &operator=(const Watch &) = delete;

  Seen seen;
  bool refuse_reply_time = false;           // setsockopt(SO_RCVTIMEO) fails
  timeval shorter_reply_time{};             // set in place of what was asked for, unless zero
  std::function<void()> connected = [] {};  // called from within setsockopt(SO_RCVTIMEO)
};

}  // namespace socket_calls

#endif
