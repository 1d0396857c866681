// twctl services: the appliance's services on a developer's machine. On an appliance systemd runs them.
#include <fmt/format.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <optional>
#include <ranges>
#include <thread>

#include "appliance/daemon.hpp"
#include "cli/failure.hpp"
#include "cli/session.hpp"
#include "cli/text.hpp"
#include "commands.hpp"

namespace twctl {

namespace {

constexpr uint16_t queue_port = 11300;
constexpr const char *search_socket = "/tmp/twsearch-server.sock";
constexpr std::chrono::seconds patience{20};

/// A connected stream socket, or an empty one.
class connection {
 public:
  connection(const sockaddr *address, socklen_t length)
      : descriptor_(socket(address->sa_family, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    timeval limit{5, 0};
    setsockopt(descriptor_, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
    connected_ = connect(descriptor_, address, length) == 0;
  }
  ~connection() { close(descriptor_); }
  connection(const connection &) = delete;
  connection &operator=(const connection &) = delete;

  explicit operator bool() const { return connected_; }
  /// Sends a request and reads until one of the `ends` has come, or no more comes.
  std::string ask(std::string_view request, std::initializer_list<std::string_view> ends) const {
    auto has_come = [&ends](std::string_view reply) {
      return std::any_of(ends.begin(), ends.end(),
                         [reply](std::string_view end) { return reply.find(end) != std::string_view::npos; });
    };
    std::string reply;
    char part[4096];
    if (send(descriptor_, request.data(), request.size(), MSG_NOSIGNAL) < 0) return reply;
    while (!has_come(reply) && reply.size() < 65536) {
      ssize_t count = recv(descriptor_, part, sizeof part, 0);
      if (count <= 0) break;
      reply.append(part, static_cast<size_t>(count));
    }
    return reply;
  }

 private:
  int descriptor_;
  bool connected_;
};

std::string ask_queue(std::string_view request, std::initializer_list<std::string_view> ends) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(queue_port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  connection queue(reinterpret_cast<const sockaddr *>(&address), sizeof address);
  return queue ? queue.ask(request, ends) : std::string();
}

bool queue_answers() { return ask_queue("list-tube-used\r\n", {"\r\n"}).starts_with("USING "); }

/// Asked by a plain connection first: each attempt of twsearch_connect() on a missing service costs a
/// descriptor.
bool search_answers() {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::string_view(search_socket).copy(address.sun_path, sizeof address.sun_path - 1);
  if (!connection(reinterpret_cast<const sockaddr *>(&address), sizeof address)) return false;
  int greeted = twsearch_connect();
  if (greeted > 0) close(greeted);
  return greeted > 0;
}

/// The unenrolment service answers nobody but its queue: it is ready when it watches that.
bool unenrolment_answers() {
  constexpr std::string_view watching = "current-watching: ";
  std::string reply = ask_queue("stats-tube unenroll_node\r\n", {"\npause-time-left:", "NOT_FOUND\r\n"});
  size_t at = reply.find(watching);
  return at != std::string::npos && reply[at + watching.size()] != '0';
}

struct service {
  const char *name;
  bool knows_store;  ///< takes --store
  bool (*answers)();
  std::vector<std::string> arguments;
};

/// In the order in which they are started: each needs at most those before it.
const service services[] = {
    {"beanstalkd", false, queue_answers, {"-l", "127.0.0.1", "-p", std::to_string(queue_port)}},
    {"searchd", true, search_answers, {}},
    {"unenrolld", true, unenrolment_answers, {}},
};

/// The program beside this one, as it is installed or in the build; else its name, for $PATH.
std::string program_of(const service &one) {
  std::error_code none;
  std::filesystem::path here = std::filesystem::read_symlink("/proc/self/exe", none).parent_path();
  const std::filesystem::path places[] = {
      here / one.name,
      here / ".." / "sbin" / one.name,
      here / ".." / ".." / "services" / one.name / one.name,
  };
  for (const std::filesystem::path &place : places)
    if (access(place.c_str(), X_OK) == 0 && !std::filesystem::is_directory(place, none))
      return place.lexically_normal();
  return one.name;
}

std::string run_directory(const options &opts) { return opts.store + "/run"; }

/// Fails unless there is a store that the services can work on, and makes the run directory.
void prepare(const options &opts) {
  { session check(opts, session::access::read); }
  if (opts.dry_run) return;
  if (mkdir(run_directory(opts).c_str(), 0700) != 0 && errno != EEXIST)
    throw system_failure(fmt::format("cannot make '{}'", printable(run_directory(opts))));
}

void wait_until_it_answers(const service &one, const daemon_process &process) {
  auto end = std::chrono::steady_clock::now() + patience;
  while (!one.answers()) {
    bool ended = process.pid() == 0;
    if (ended || std::chrono::steady_clock::now() > end)
      throw failure(exit_code::failure,
                    fmt::format("{} {}", one.name, ended ? "has ended" : "does not answer"), "",
                    fmt::format("its log is '{}'", printable(process.log_path())));
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
}

void print_states(const options &opts, const std::vector<std::pair<const service *, std::string>> &states) {
  listing result("services", {{"name", "SERVICE"}, {"state", "STATE"}, {"pid", "PID", true}, {"log", "LOG"}});
  for (const auto &[one, state] : states) {
    daemon_process process(run_directory(opts), one->name);
    result.add({cell_of(one->name), state, unless_zero(process.pid()), process.log_path()});
  }
  result.print(opts);
}

/// Starts one service; false when it was running already.
bool start_one(const options &opts, const service &one, daemon_process &process) {
  if (process.pid()) return false;
  if (one.answers())
    throw failure(exit_code::conflict, fmt::format("another {} is running", one.name),
                  "it is not this store's, and there can be only one on a machine",
                  fmt::format("stop it first: with 'twctl --store DIR services stop' for another store, with "
                              "'systemctl stop {}' when systemd runs it",
                              one.name));
  std::vector<std::string> arguments = one.arguments;
  if (one.knows_store) arguments.insert(arguments.end(), {"--store", std::filesystem::absolute(opts.store)});
  process.start(program_of(one), arguments);
  return true;
}

void start(const options &opts) {
  prepare(opts);
  std::vector<std::pair<const service *, std::string>> states;
  std::vector<daemon_process> started;
  try {
    for (const service &one : services) {
      daemon_process process(run_directory(opts), one.name);
      if (opts.dry_run) {
        states.emplace_back(&one, process.pid() ? "running" : "would be started");
        continue;
      }
      bool fresh = start_one(opts, one, process);
      if (fresh) started.push_back(process);
      wait_until_it_answers(one, process);
      states.emplace_back(&one, fresh ? "started" : "running");
    }
  } catch (...) {
    // All or nothing: what this command has started does not stay behind half of it.
    for (daemon_process &one : std::views::reverse(started)) one.stop();
    throw;
  }
  print_states(opts, states);
}

void status(const options &opts) {
  std::vector<std::pair<const service *, std::string>> states;
  for (const service &one : services) {
    bool running = daemon_process(run_directory(opts), one.name).pid() != 0;
    states.emplace_back(&one, !running ? "stopped" : one.answers() ? "running" : "does not answer");
  }
  print_states(opts, states);
}

void stop(const options &opts) {
  std::vector<std::pair<const service *, std::string>> states;
  for (auto one = std::rbegin(services); one != std::rend(services); ++one) {
    daemon_process process(run_directory(opts), one->name);
    bool running = opts.dry_run ? process.pid() != 0 : process.stop();
    states.emplace_back(&*one, !running ? "was not running" : opts.dry_run ? "would be stopped" : "stopped");
  }
  print_states(opts, states);
}

}  // namespace

void add_services(CLI::App &program, const options &opts) {
  CLI::App *noun = program.add_subcommand(
      "services", "The services beanstalkd, searchd and unenrolld for a store, on a developer's machine");
  noun->require_subcommand(1);
  CLI::App *verb = add_verb(noun, "start", "Start them in the background, and wait until they answer",
                            "  export TW_ACTION_DIR=./actions TW_INFOD_DIR=./live\n"
                            "  twctl services start");
  verb->callback([&opts] { start(opts); });
  verb = add_verb(noun, "status", "Show whether they run", "  twctl services status -o json");
  verb->callback([&opts] { status(opts); });
  verb = add_verb(noun, "stop", "Stop those that were started for this store", "  twctl services stop");
  verb->callback([&opts] { stop(opts); });
}

}  // namespace twctl
