#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <sstream>
#include <stdexcept>

#include "figures/figures.hpp"

extern char **environ;

namespace bench {
namespace {

// Runs the program and gives what it printed.
std::string run(const std::string &program, std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), program);
  std::vector<char *> argv;
  for (std::string &argument : arguments) argv.push_back(argument.data());
  argv.push_back(nullptr);
  std::array<int, 2> ends{};
  if (pipe(ends.data()) != 0) throw std::runtime_error("no pipe");
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
  posix_spawn_file_actions_addclose(&actions, ends[0]);
  pid_t child = -1;
  const int failed = posix_spawn(&child, program.c_str(), &actions, nullptr, argv.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  close(ends[1]);
  std::string output;
  char buffer[512];
  for (ssize_t got = 0; (got = read(ends[0], buffer, sizeof buffer)) > 0;)
    output.append(buffer, static_cast<std::size_t>(got));
  close(ends[0]);
  int status = 0;
  if (failed != 0 || waitpid(child, &status, 0) != child || status != 0)
    throw std::runtime_error(program + " failed");
  return output;
}

void measure_time(const Settings &settings, const std::string &large, Table &table) {
  const std::string size = " at " + std::to_string(settings.many) + " nodes";
  const std::string reading = "process that opens and reads", idle = "process that does nothing";
  std::vector<double> inside;
  Contest contest;
  contest.enter(reading, [&](std::size_t) {
    inside.push_back(std::stod(run(settings.fresh_program, {"time", large})) / 1e6);
  });
  contest.enter(idle, [&](std::size_t) { run(settings.fresh_program, {"idle"}); });
  contest.run(settings.rounds(40), 1);
  table.limit("open and read one setting" + size, median(inside), 5, "ms");
  table.limit("the whole process for it", contest.nanoseconds(reading) / 1e6, 5, "ms");
  table.compare("the whole process for it", contest, reading, idle, Target{});
}

void measure_memory(const Settings &settings, const std::string &large, Table &table) {
  std::istringstream output(run(settings.fresh_program, {"memory", large, std::to_string(settings.nodes)}));
  const std::array<std::string, 4> after = {"opening", "1 node", "100 nodes",
                                            std::to_string(settings.nodes) + " nodes"};
  // A handle may keep something for what it touched, but nothing for what it did not.
  const std::array<double, 4> touched = {0, 1, 100, static_cast<double>(settings.nodes)};
  constexpr double heap_kib = 64, resident_kib = 1024, node_kib = 4;
  for (std::size_t i = 0; i < after.size(); ++i) {
    double heap = 0, resident = 0;
    if (!(output >> heap >> resident)) throw std::runtime_error("no memory figures");
    const double nodes_kib = node_kib * touched[i];
    table.limit("heap since open, after " + after[i], heap / 1024, heap_kib + nodes_kib, "KiB");
    table.limit("resident since start, after " + after[i], resident / 1024, resident_kib + nodes_kib, "KiB");
  }
}

}  // namespace

void measure_fresh_processes(const Settings &settings, const std::string &large, Table &table) {
  measure_time(settings, large, table);
  measure_memory(settings, large, table);
}

}  // namespace bench
