// unenrolld: takes nodes out of the appliance when their unenrolment was asked for.
#include <CLI/CLI.hpp>

#include "log.hpp"
#include "options.hpp"
#include "worker.hpp"

namespace {

void add_options(CLI::App &program, unenrolld::options &opts) {
  program.add_option("--store", opts.store, "Directory of the store")->capture_default_str();
  program.add_option("--address", opts.address, "Address of the work queue")
      ->check(CLI::ValidIPV4)
      ->capture_default_str();
  program.add_option("--port", opts.port, "Port of the work queue")
      ->check(CLI::Range(1, 65535))
      ->capture_default_str();
  program.add_option("--retry-delay", opts.retry_delay, "Seconds until a job that failed is tried again")
      ->check(CLI::Range(1, 86400))
      ->capture_default_str();
  program.add_flag("--once", opts.once, "Do the jobs that are there, then end; 1 without a work queue");
  program.set_version_flag("--version", UNENROLLD_VERSION);
  program.footer(
      "Environment: TW_ACTION_DIR  directory of the actions, /var/lib/twobject/actions without it\n"
      "             TW_INFOD_DIR   directory of the live state, /run/twinfod without it\n"
      "             TWLOG_LEVEL    0 to 7: how much is logged, 6 without it");
}

}  // namespace

int main(int argc, char **argv) {
  try {
    unenrolld::options opts;
    CLI::App program("Takes nodes out of the appliance when their unenrolment was asked for.", "unenrolld");
    add_options(program, opts);
    CLI11_PARSE(program, argc, argv);
    return unenrolld::worker(opts).run();
  } catch (const std::exception &problem) {
    unenrolld::log(unenrolld::level::error, problem.what());
    return 1;
  }
}
