// A real beanstalkd for a test.
#ifndef TW_TESTS_BEANSTALK_SERVER_HPP
#define TW_TESTS_BEANSTALK_SERVER_HPP

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <vector>

namespace queue {

// The port that the library has compiled in. One test of the machine at a time has it: others, of other trees
// too, wait.
class FixedPort {
 public:
  static constexpr uint16_t number = 11300;
  FixedPort();
  ~FixedPort();
  FixedPort(const FixedPort &) = delete;
  FixedPort &operator=(const FixedPort &) = delete;

 private:
  int lock_;
};

// A listening socket on 127.0.0.1; with port 0 on one that is free. Throws when it cannot be had.
int listen_on(uint16_t port);
uint16_t port_of(int listening);

// Sends bytes to a port of 127.0.0.1, then "quit", and gives back all that the server says.
std::string send_raw(uint16_t port, const std::string &bytes);

// Listens from the beginning of its life to the end of it.
class Server {
 public:
  explicit Server(uint16_t port = 0, const std::vector<std::string> &options = {});
  ~Server();
  Server(const Server &) = delete;
  Server &operator=(const Server &) = delete;

  uint16_t port() const { return port_; }
  // Ends it; the port is free again.
  void stop();

 private:
  uint16_t port_;
  pid_t pid_;
};

}  // namespace queue

#endif
