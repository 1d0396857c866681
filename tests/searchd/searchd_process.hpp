// searchd as a child process, and a client that says what the test wants it to.
#ifndef TW_TESTS_SEARCHD_PROCESS_HPP
#define TW_TESTS_SEARCHD_PROCESS_HPP

#include <jansson.h>
#include <sys/types.h>

#include <string>
#include <vector>

namespace searchd_tests {

// Ends with its object.
class Searchd {
 public:
  using Options = std::vector<std::string>;

  // Starts it and waits until it listens, or has ended.
  Searchd(const std::string &store, const std::string &socket, const Options &options = {});
  ~Searchd();
  Searchd(const Searchd &) = delete;
  Searchd &operator=(const Searchd &) = delete;

  const std::string &socket() const { return socket_; }
  bool runs();
  // Sends a signal and waits for the end: the exit status, or minus the signal that ended it.
  int end(int signal);
  // The exit status of one that ends by itself.
  int wait();

 private:
  std::string socket_;
  pid_t pid_;
  int status_ = 0;
};

class Client {
 public:
  // Connected, and greeted unless it is to be rude.
  explicit Client(const std::string &path, bool hello = true);
  ~Client();
  Client(const Client &) = delete;
  Client &operator=(const Client &) = delete;

  // The reply to a request, both as JSON text; "" when the connection is over.
  std::string ask(const std::string &request);
  // The IDs that a search finds: their own text behind one another, or the reply that was no success.
  std::string find(const std::string &object, const std::string &conditions);
  std::string search(const std::string &object,
                     const std::string &conditions);  // the result's ID or the reply

  void send_bytes(const std::string &bytes) const;
  std::string receive() const;
  bool closed_by_peer() const;  // waits for what comes: a byte or the end
  int fd() const { return fd_; }

 private:
  int fd_;
};

std::string framed(const std::string &body);

}  // namespace searchd_tests

#endif
