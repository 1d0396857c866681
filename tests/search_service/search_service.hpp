// A search service whose answers a test writes, on the path where clients look for the real one.
#ifndef TW_TESTS_SEARCH_SERVICE_HPP
#define TW_TESTS_SEARCH_SERVICE_HPP

#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace search_service {

inline constexpr char kPath[] = "/tmp/twsearch-server.sock";

// The path is one for the whole machine: while this lives, it is this process's alone, and nothing is there
// unless its owner puts it there. Waits for other test programs to be done with it.
class PathClaim {
 public:
  PathClaim();
  ~PathClaim();
  PathClaim(const PathClaim &) = delete;
  PathClaim &operator=(const PathClaim &) = delete;

 private:
  int lock_;
};

inline constexpr char kGreeting[] = R"({"result":true})";

// Serves all connections in a thread of its own. It takes messages apart by itself, so that what the library
// sends is seen byte for byte.
class Scripted {
 public:
  // What becomes of a request: the reply's JSON, "" to keep silent, nothing to close the connection.
  using Answer = std::function<std::optional<std::string>(const std::string &request)>;

  // Asks `answer` for every message, hello included.
  explicit Scripted(Answer answer);
  // Greets everybody and gives every other request the same reply.
  explicit Scripted(std::string reply);
  ~Scripted();
  Scripted(const Scripted &) = delete;
  Scripted &operator=(const Scripted &) = delete;

  // All messages so far, as JSON text; how many connections there were, and how many of them have ended.
  std::vector<std::string> messages();
  int connections();
  // Waits until the service has seen the end of `count` connections.
  void wait_for_ended(int count);
  // Ends each further connection as soon as it is there.
  void hang_up();
  // Reads no more than hello from each further connection, and sends this reply right behind the greeting.
  void reply_unasked(std::string reply);

 private:
  void serve();
  bool answer(int connection);
  bool receive(int connection, std::string &bytes);

  PathClaim claim_;
  Answer answer_;
  int listener_ = -1;
  int stop_ = -1;
  std::mutex mutex_;
  std::vector<std::string> messages_;
  int connections_ = 0;
  int ended_ = 0;
  bool hanging_up_ = false;
  std::string unasked_;
  std::thread thread_;
};

bool is_hello(const std::string &message);

}  // namespace search_service

#endif
