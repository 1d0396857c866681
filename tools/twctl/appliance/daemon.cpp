#include "appliance/daemon.hpp"

#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

// This header does not name its functions as C's in every version of the C library.
extern "C" {
#include <sys/pidfd.h>
}

#include <cerrno>
#include <fstream>

#include "cli/failure.hpp"
#include "cli/files.hpp"
#include "cli/text.hpp"

namespace twctl {

namespace {

constexpr int patience_ms = 10000;

/**
 * When a process was started, in the kernel's ticks since boot; "" when there is none, or when it has ended
 * and only waits to be collected. Number and start together name a process for good: numbers alone come
 * again.
 */
std::string start_of(pid_t pid) {
  std::ifstream file(fmt::format("/proc/{}/stat", pid));
  std::string line;
  std::getline(file, line);
  size_t end = line.rfind(')');  // of the program's name, which may hold anything
  if (end == std::string::npos || line.size() < end + 3 || line[end + 2] == 'Z') return {};
  size_t at = end + 2;
  for (int field = 3; field < 22 && at != std::string::npos; field++) {
    at = line.find(' ', at);
    if (at != std::string::npos) at++;
  }
  return at == std::string::npos ? std::string() : line.substr(at, line.find(' ', at) - at);
}

}  // namespace

daemon_process::daemon_process(const std::string &directory, const std::string &name)
    : pid_path_(fmt::format("{}/{}.pid", directory, name)),
      log_path_(fmt::format("{}/{}.log", directory, name)) {}

pid_t daemon_process::pid() const {
  std::ifstream file(pid_path_);
  std::string number, start;
  file >> number >> start;
  auto pid = static_cast<pid_t>(parse_number(number).value_or(0));
  return pid > 1 && !start.empty() && start_of(pid) == start ? pid : 0;
}

void daemon_process::start(const std::string &program, const std::vector<std::string> &arguments) {
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, log_path_.c_str(),
                                   O_WRONLY | O_CREAT | O_APPEND | O_NOFOLLOW, 0600);
  posix_spawn_file_actions_adddup2(&actions, STDOUT_FILENO, STDERR_FILENO);
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID);
  std::vector<char *> words{const_cast<char *>(program.c_str())};
  for (const std::string &word : arguments) words.push_back(const_cast<char *>(word.c_str()));
  words.push_back(nullptr);
  pid_t pid = 0;
  int error = posix_spawnp(&pid, program.c_str(), &actions, &attributes, words.data(), environ);
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&actions);
  if (error) {
    errno = error;
    throw system_failure(fmt::format("cannot start '{}'", printable(program)));
  }
  unlink(pid_path_.c_str());
  write_private_file(pid_path_, fmt::format("{} {}\n", pid, start_of(pid)));
}

bool daemon_process::stop() {
  pid_t number = pid();
  // The descriptor is the process's even when its number comes again: the number is looked at once more.
  int process = number ? pidfd_open(number, 0) : -1;
  bool running = process >= 0 && pid() == number;
  if (running) {
    pollfd ended{process, POLLIN, 0};
    pidfd_send_signal(process, SIGTERM, nullptr, 0);
    if (poll(&ended, 1, patience_ms) != 1) {
      pidfd_send_signal(process, SIGKILL, nullptr, 0);
      poll(&ended, 1, patience_ms);
    }
    waitpid(number, nullptr, WNOHANG);  // a child of this very process, when starting it went wrong
  }
  if (process >= 0) close(process);
  unlink(pid_path_.c_str());
  return running;
}

}  // namespace twctl
