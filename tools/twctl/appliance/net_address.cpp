// twctl net address: where the appliance is reached, and what the operating system calls its addresses.
#include "appliance/networks.hpp"
#include "cli/failure.hpp"
#include "cli/session.hpp"
#include "cli/text.hpp"
#include "commands.hpp"

namespace twctl {

namespace {

void list(const options &opts) {
  session work(opts, session::access::read);
  listing result("labels", {{"conn_id", "ID"}, {"name", "NAME"}, {"mode", "MODE"}, {"label", "LABEL"}});
  for (const conn_record &one : all_conns(work.store())) {
    if (!one) throw store_failure(work.store(), "cannot read a connection");
    const char *name = cfg_net_conn_get_name(one.get());
    result.add({cell_of(cfg_net_conn_get_id(one.get())), cell_of(name),
                cell_of(cfg_get_conn_mode_from_conn_name(work.store(), name)),
                unless_empty(take(cfg_get_interface_name_from_conn_name(work.store(), name)))});
  }
  result.print(opts);
}

void show(const options &opts, bool from_system) {
  session work(opts, session::access::read);
  endpoint_list endpoints(from_system ? nullptr : cfg_net_get_external_endpoint_list(work.store()));
  bool configured = cfg_net_external_endpoint_count(endpoints.get()) > 0;
  std::string address = take(from_system ? cfg_net_external_address_from_os(work.store())
                                         : cfg_net_get_external_address_from_cfg_or_os(work.store()));
  if (address.empty())
    throw failure(exit_code::not_found, "the appliance has no external address",
                  "no connection has one, and there is no default route",
                  "name one with 'twctl net endpoint add'");
  sheet result;
  result.add("address", "Address", address);
  result.add("source", "From", cell_of(configured ? "endpoint" : "system"));
  result.print(opts);
}

}  // namespace

void add_net_address(CLI::App *net, const options &opts) {
  CLI::App *noun = net->add_subcommand("address", "The appliance's own addresses");
  noun->require_subcommand(1);

  CLI::App *verb = add_verb(noun, "list", "List what the operating system calls each connection's address",
                            "  twctl net address list\n  twctl net address list -o json");
  verb->callback([&opts] { list(opts); });

  auto from_system = std::make_shared<bool>(false);
  verb =
      add_verb(noun, "show", "Show where the appliance is reached: the first endpoint, or what ip(8) finds",
               "  twctl net address show\n  twctl net address show --system");
  verb->add_flag("--system", *from_system, "Ask the operating system, endpoints or not");
  verb->callback([&opts, from_system] { show(opts, *from_system); });
}

}  // namespace twctl
