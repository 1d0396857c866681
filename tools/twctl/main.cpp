// twctl: the appliance's configuration from the command line. "twctl NOUN VERB", one grammar for everything.
#include <fmt/format.h>

#include <clocale>
#include <cstdio>
#include <exception>
#include <functional>

#include "cli/failure.hpp"
#include "cli/manual.hpp"
#include "cli/output.hpp"
#include "cli/text.hpp"
#include "cli/usage.hpp"
#include "commands.hpp"

namespace {

using namespace twctl;

constexpr const char *footer =
    "Exit codes: 0 done, 1 failure, 2 wrong usage, 3 not found, 4 exists already or conflict,\n"
    "5 invalid input, 6 no permission or no space, 7 outcome unknown.\n"
    "Results go to standard output; changes, progress and errors to standard error.\n"
    "\n"
    "Start with:\n"
    "  export TWCTL_STORE=./store\n"
    "  twctl init\n"
    "  twctl node enroll --product tarnwell --name rack-12\n"
    "  twctl node list";

void add_options(CLI::App &program, options &opts) {
  program.add_option("--store", opts.store, "Directory of the store")
      ->envname("TWCTL_STORE")
      ->capture_default_str();
  program
      .add_option_function<std::string>(
          "-o,--output",
          [&opts](const std::string &name) {
            if (name != "table" && name != "json")
              throw CLI::ValidationError("--output", fmt::format("'{}' is neither table nor json", name));
            opts.output = name == "json" ? output_format::json : output_format::table;
          },
          "table or json")
      ->type_name("FORMAT");
  program.add_flag("--dry-run", opts.dry_run, "Show what would change and write nothing");
  program.add_flag("--yes", opts.yes, "Do not ask for confirmation");
  program.add_flag("--quiet", opts.quiet, "No remarks on standard error, only errors");
  program.add_option("--who", opts.who, "Author for the commit log");
  program.add_option("--reason", opts.reason, "Reason for the commit log");
}

/// Global options may stand behind the verb as well.
void let_options_stand_anywhere(CLI::App *app) {
  for (CLI::App *part : app->get_subcommands([](CLI::App *) { return true; })) {
    part->fallthrough();
    let_options_stand_anywhere(part);
  }
}

int report(const failure &problem, const options &opts) {
  auto code = static_cast<int>(problem.code());
  if (opts.json()) {
    sheet error;
    error.add("code", "", cell_of(name_of(problem.code())));
    error.add("exit", "", int64_t{code});
    error.add("what", "", std::string(problem.what()));
    error.add("why", "", problem.why());
    error.add("hint", "", problem.hint());
    json_value object = new_object();
    put(object.get(), "error", error.json());
    json_dumpf(object.get(), stderr, JSON_INDENT(2));
    fmt::print(stderr, "\n");
    return code;
  }
  fmt::print(stderr, "twctl: {}", problem.what());
  if (!problem.why().empty()) fmt::print(stderr, ": {}", printable(problem.why()));
  fmt::print(stderr, "\n");
  if (!problem.hint().empty()) fmt::print(stderr, "hint: {}\n", problem.hint());
  return code;
}

int run(CLI::App &program, const options &opts, int argc, char **argv) {
  try {
    program.parse(argc, argv);
    finish_output();
    return static_cast<int>(exit_code::ok);
  } catch (const CLI::Success &request) {
    return program.exit(request);  // --help, --version
  } catch (const CLI::ParseError &problem) {
    return report(usage_failure(program, problem), opts);
  } catch (const failure &problem) {
    fflush(stdout);
    return report(problem, opts);
  } catch (const std::bad_alloc &) {
    return report(failure(exit_code::failure, "out of memory"), opts);
  } catch (const std::exception &problem) {
    return report(failure(exit_code::failure, "unexpected failure", problem.what()), opts);
  }
}

int run(int argc, char **argv) {
  options opts;
  CLI::App program("The appliance's configuration from the command line.", "twctl");
  program.footer(footer);
  program.set_version_flag("--version", "twctl " TWCTL_VERSION);
  add_manual(program, "twctl " TWCTL_VERSION);
  program.require_subcommand(1);
  add_options(program, opts);
  for (auto add :
       {add_init,   add_system,   add_net,   add_ntp,    add_console_gateway, add_boot_flag, add_https,
        add_node,   add_port,     add_fleet, add_user,   add_group,           add_role,      add_acl,
        add_auth,   add_cert,     add_tag,   add_bundle, add_template,        add_push,      add_smartgroup,
        add_search, add_services, add_store})
    add(program, opts);
  let_options_stand_anywhere(&program);
  name_parts(program);
  program.parse_complete_callback([&] { opts.command = command_of(program); });
  return run(program, opts, argc, argv);
}

}  // namespace

int main(int argc, char **argv) {
  std::setlocale(LC_CTYPE, "C.UTF-8");  // names are UTF-8 whatever the terminal's language
  try {
    return run(argc, argv);
  } catch (...) {  // before there are options by which a failure could be told
    fputs("twctl: cannot begin: out of memory\n", stderr);
    return static_cast<int>(exit_code::failure);
  }
}
