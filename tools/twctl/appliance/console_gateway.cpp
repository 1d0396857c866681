// twctl console-gateway: the service that leads SSH logins to serial ports.
#include <fmt/format.h>

#include "cli/fields.hpp"
#include "cli/text.hpp"
#include "commands.hpp"

namespace twctl {

namespace {

constexpr const char *map_path = "services.consoleGateway";

void show(const options &opts) {
  session work(opts, session::access::read);
  gateway_record gateway(cfg_get_service_console_gateway(work.store()));
  sheet result;
  result.add("ssh_delimiter", "SSH delimiter",
             cell_of(gateway ? cfg_service_console_gateway_get_ssh_delim(gateway.get()) : nullptr));
  result.print(opts);
}

/// The settings. The library loads none without a delimiter: the first one is put in place here.
gateway_record load_or_make(cfg *store) {
  gateway_record gateway(cfg_get_service_console_gateway(store));
  if (gateway) return gateway;
  cfg_elem *map = cfg_get_by_path(store, map_path);
  cfg_elem *services = cfg_get_by_path(store, "services");
  if (!map && services) {
    map = cfg_new_map(store);
    if (!cfg_add_mapelem(store, services, "consoleGateway", map)) map = nullptr;
  }
  if (map && cfg_map_set_string(store, map, "ssh_delimiter", ""))
    gateway.reset(cfg_get_service_console_gateway(store));
  if (!gateway) throw store_failure(store, "cannot make the settings (is there a map 'services'?)");
  return gateway;
}

void set(const options &opts, const std::vector<std::string> &assignments) {
  std::string delimiter = read_assignments(assignments, {"ssh_delimiter"}).at("ssh_delimiter");
  require_label(delimiter, "the SSH delimiter");
  session work(opts, session::access::write);
  gateway_record gateway = load_or_make(work.store());
  require_set(cfg_service_console_gateway_set_ssh_delim(gateway.get(), delimiter.c_str()), "ssh_delimiter");
  if (!cfg_service_console_gateway_update(gateway.get()))
    throw store_failure(work.store(), "cannot save the settings");
  outcome result = work.commit("set the SSH delimiter");
  sheet details;
  details.add("ssh_delimiter", "SSH delimiter", delimiter);
  work.report(result, fmt::format("The SSH delimiter is now {}", printable(delimiter)), details.json());
}

}  // namespace

void add_console_gateway(CLI::App &program, const options &opts) {
  CLI::App *noun = program.add_subcommand("console-gateway", "The service that leads SSH logins to ports");
  noun->require_subcommand(1);

  CLI::App *verb = add_verb(noun, "show", "Show the settings",
                            "  twctl console-gateway show\n  twctl console-gateway show -o json");
  verb->callback([&opts] { show(opts); });

  auto assignments = std::make_shared<std::vector<std::string>>();
  verb = add_verb(noun, "set", "Change what stands between user and port in an SSH login",
                  "  twctl console-gateway set ssh_delimiter=:\n\nFields: ssh_delimiter");
  verb->add_option("assignments", *assignments, "ssh_delimiter=TEXT")->required();
  verb->callback([&opts, assignments] { set(opts, *assignments); });
}

}  // namespace twctl
