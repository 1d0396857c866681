// twbench: measures libtwobject and its store against what a user would pick instead, all in one run, and
// prints one table. See docs/performance.md.
#include <getopt.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <filesystem>

#include "figures/figures.hpp"

namespace {

constexpr const char *kUsage =
    "usage: twbench [--dir DIR] [--only access|read|ports|connections|pushes|requests|commit|import|fresh]\n"
    "               [--port-nodes N] [--effort FACTOR]\n"
    "  --dir     where the stores are kept meanwhile; a disk, or the durable figures mean nothing\n"
    "            (default: the build directory)\n"
    "  --only    one group of figures\n"
    "  --port-nodes  nodes with 48 ports each (default 500; 5000 takes minutes to fill)\n"
    "  --effort  multiplies the number of rounds (default 1)\n";

struct Options {
  std::string directory = TW_BENCH_DIRECTORY, only;
  std::uint32_t port_nodes = 500;
  double effort = 1;
};

bool parse(int argc, char **argv, Options &options) {
  static const option names[] = {{"dir", required_argument, nullptr, 'd'},
                                 {"only", required_argument, nullptr, 'o'},
                                 {"port-nodes", required_argument, nullptr, 'p'},
                                 {"effort", required_argument, nullptr, 'e'},
                                 {nullptr, 0, nullptr, 0}};
  for (int choice = 0; (choice = getopt_long(argc, argv, "", names, nullptr)) != -1;) {
    const std::string value = optarg == nullptr ? "" : optarg;
    if (choice == 'd')
      options.directory = value;
    else if (choice == 'o' && (value == "access" || value == "read" || value == "ports" ||
                               value == "connections" || value == "pushes" || value == "requests" ||
                               value == "commit" || value == "import" || value == "fresh"))
      options.only = value;
    else if (choice == 'p' && std::atoi(optarg) > 0)
      options.port_nodes = static_cast<std::uint32_t>(std::atoi(optarg));
    else if (choice == 'e' && std::atof(optarg) > 0)
      options.effort = std::atof(optarg);
    else
      return false;
  }
  return optind == argc;
}

void measure(const Options &options, const std::string &program) {
  const bench::Workspace workspace(options.directory);
  if (workspace.is_tmpfs())
    std::printf("note: %s is not on a disk: the durable figures mean nothing\n", options.directory.c_str());
  const bench::Settings settings = {
      .workspace = workspace,
      .port_nodes = options.port_nodes,
      .effort = options.effort,
      .fresh_program = std::filesystem::path(program).parent_path() / "twbench_fresh"};
  const auto wanted = [&](const char *group) { return options.only.empty() || options.only == group; };
  bench::Table table;
  if (wanted("read")) measure_reads(settings, table);
  if (wanted("access")) measure_access(settings, table);
  if (wanted("ports")) measure_ports(settings, table);
  if (wanted("connections")) measure_connections(settings, table);
  if (wanted("pushes")) measure_pushes(settings, table);
  if (wanted("requests")) measure_requests(settings, table);
  if (wanted("import")) measure_imports(settings, table);
  if (wanted("commit") || wanted("fresh")) {
    // The fresh process opens the large store that the commits were measured on.
    const std::string large = measure_commits(settings, table);
    if (wanted("fresh")) measure_fresh_processes(settings, large, table);
  }
  table.print();
}

}  // namespace

int main(int argc, char **argv) {
  Options options;
  if (!parse(argc, argv, options)) {
    std::fputs(kUsage, stderr);
    return 2;
  }
  try {
    measure(options, std::filesystem::read_symlink("/proc/self/exe"));
  } catch (const std::exception &failure) {
    std::fprintf(stderr, "twbench: %s\n", failure.what());
    return 1;
  }
  return 0;
}
