// A server that says what a test tells it to say, whatever it is asked.
#ifndef TW_TESTS_BEANSTALK_FAKE_SERVER_HPP
#define TW_TESTS_BEANSTALK_FAKE_SERVER_HPP

#include <cstdint>
#include <string>
#include <thread>
#include <vector>

namespace queue {

struct Step {
  int lines;          // is asked so many lines
  std::string reply;  // and says this
};

enum class Ending { close, silence };

// Takes one connection. Behind the last step it closes the connection or stays silent.
class FakeServer {
 public:
  FakeServer(std::vector<Step> steps, Ending ending, uint16_t port = 0);
  ~FakeServer();
  FakeServer(const FakeServer &) = delete;
  FakeServer &operator=(const FakeServer &) = delete;

  uint16_t port() const { return port_; }
  // Waits until the client is gone; everything that it has said.
  std::string heard();

 private:
  void serve(const std::vector<Step> &steps, Ending ending);

  int listening_;
  uint16_t port_;
  std::string heard_;
  std::thread thread_;
};

}  // namespace queue

#endif
