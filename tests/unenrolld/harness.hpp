// A store, actions and a work queue for each test, and unenrolld as a process.
#ifndef TW_TESTS_UNENROLLD_HARNESS_HPP
#define TW_TESTS_UNENROLLD_HARNESS_HPP

#include <gtest/gtest.h>
#include <sys/types.h>
#include <twaction.h>
#include <twconfig.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "beanstalk/client.hpp"
#include "beanstalk/server.hpp"
#include "store_processes/scratch.hpp"

namespace unenrolling {

using texts = std::vector<std::string>;

struct close_store {
  void operator()(cfg *store) const { cfg_close(store); }
};
using store_handle = std::unique_ptr<cfg, close_store>;

/** A program that was started. */
class Process {
 public:
  /** `environment` is added to the test's own; what the program prints goes to a file. */
  Process(const texts &arguments, const texts &environment, std::string output);
  ~Process();
  Process(const Process &) = delete;
  Process &operator=(const Process &) = delete;

  void signal(int number);
  /** Waits for the end: "exit <n>" or "signal <n>". */
  std::string wait();
  /** What it has printed so far. */
  std::string printed() const;

 private:
  pid_t pid_;
  std::string output_;
};

/** How many jobs of the tube are in each state. */
struct Jobs {
  int ready = 0, reserved = 0, delayed = 0, buried = 0;
  bool operator==(const Jobs &) const = default;
};
void PrintTo(const Jobs &jobs, std::ostream *out);

class UnenrolldTest : public testing::Test {
 protected:
  UnenrolldTest();

  // The store
  store_handle open();
  std::string store_path() const { return scratch_.path() + "/store"; }
  /** A committed node; with a certificate, whose ID is then in `certificate`, unless told otherwise. */
  std::string add_node(const char *name, bool with_certificate = true);
  bool has_node(const std::string &id);
  /** "revoke_time" of a certificate; 0 when it is not revoked. */
  int32_t revoked_at(const std::string &id);
  uint64_t revision();
  /** "who: why" of every commit that carries a token, newest first. */
  texts commits();

  // The actions
  uint64_t add_action(const std::string &node, int32_t state = TWACTION_NEW);
  /** State of the action of a node, and its last error behind it when there is one; "none" without action. */
  std::string action_of(const std::string &node);

  // The queue
  void put_body(const std::string &body);
  void put_job(const std::string &node) { put_body("{\"node_id\": \"" + node + "\"}" + '\0'); }
  Jobs jobs();
  /** Waits until the queue has noticed that a worker died. */
  void wait_until_nothing_is_reserved();
  /** Makes delayed and buried jobs ready. */
  void kick();

  // The worker
  Process start(const texts &more = {}, const texts &environment = {});
  /** Runs it until no job is left; how it ended. Its output is in `output`. */
  std::string run_once(const texts &environment = {}, const texts &more = {});

  std::optional<queue::FixedPort> fixed_port;  // outlives the server that listens on it
  std::unique_ptr<queue::Server> server = std::make_unique<queue::Server>();
  std::string certificate;
  std::string output;

 private:
  trial::Scratch scratch_;
  int started_ = 0;
};

}  // namespace unenrolling

#endif
