// searchd: evaluates searches on the store for the clients on its socket.
#include <CLI/CLI.hpp>

#include "log.hpp"
#include "options.hpp"
#include "server.hpp"

namespace {

// Seconds are given as numbers.
void add_seconds(CLI::App &program, const char *name, std::chrono::seconds &value, const char *help) {
  program
      .add_option_function<int>(
          name, [&value](int seconds) { value = std::chrono::seconds(seconds); }, help)
      ->check(CLI::Range(1, 86400))
      ->default_str(std::to_string(value.count()));
}

void add_options(CLI::App &program, searchd::options &opts) {
  program.add_option("--store", opts.store, "Directory of the store")->capture_default_str();
  program.add_option("--socket", opts.socket, "Path of the socket; clients know only the default")
      ->capture_default_str();
  program.add_option("--max-clients", opts.max_clients, "Clients that are served at a time; others wait")
      ->check(CLI::Range(1, 10000))
      ->capture_default_str();
  program.add_option("--max-message", opts.max_message, "Longest request in bytes")
      ->check(CLI::Range(1024, 16 << 20))
      ->capture_default_str();
  program.add_option("--max-results", opts.max_results, "Results that are kept; the oldest make room")
      ->check(CLI::Range(1, 100000))
      ->capture_default_str();
  add_seconds(program, "--result-age", opts.result_age, "Seconds that a result is kept");
  add_seconds(program, "--client-time", opts.client_time,
              "Seconds in which a client must send a message or take a reply");
  program.set_version_flag("--version", SEARCHD_VERSION);
  program.footer("Environment: TWLOG_LEVEL  0 to 7: how much is logged, 6 without it");
}

}  // namespace

int main(int argc, char **argv) {
  try {
    searchd::options opts;
    CLI::App program("Evaluates searches on the store for the clients on its socket.", "searchd");
    add_options(program, opts);
    CLI11_PARSE(program, argc, argv);
    searchd::server(opts).run();
    return 0;
  } catch (const std::exception &problem) {
    searchd::log(searchd::level::error, problem.what());
    return 1;
  }
}
