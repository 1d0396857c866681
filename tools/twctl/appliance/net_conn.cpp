// twctl net conn: how the appliance's interfaces are addressed.
#include <fmt/format.h>

#include "appliance/networks.hpp"
#include "cli/fields.hpp"
#include "cli/text.hpp"
#include "commands.hpp"

namespace twctl {

namespace {

constexpr field<cfg_net_conn> fields[] = {
    shown_text<cfg_net_conn_get_id>("id", "ID"),
    text_field<cfg_net_conn_get_name, cfg_net_conn_set_name, require_label>("name", "Name"),
    truth_field<cfg_net_conn_get_enabled, cfg_net_conn_set_enabled>("enabled", "Enabled"),
    text_field<cfg_net_conn_get_description, cfg_net_conn_set_description>("description", "Description"),
    word_field<cfg_net_conn_get_role, cfg_net_conn_set_role, cfg_net_conn_role_to_string, CFG_NET_CONN_WAN,
               CFG_NET_CONN_DIALOUT>("role", "Role"),
    word_field<cfg_net_conn_get_mode, cfg_net_conn_set_mode, cfg_net_conn_mode_to_string, CFG_NET_CONN_STATIC,
               CFG_NET_CONN_DHCP>("mode", "Mode"),
    shown_text<cfg_net_conn_get_physif_id>("physif_id", "Interface's ID"),
    text_field<cfg_net_conn_get_static_address, cfg_net_conn_set_static_address, allow_address>(
        "address", "Static address"),
    text_field<cfg_net_conn_get_static_netmask, cfg_net_conn_set_static_netmask, allow_address>("netmask",
                                                                                                "Net mask"),
    text_field<cfg_net_conn_get_static_broadcast, cfg_net_conn_set_static_broadcast, allow_address>(
        "broadcast", "Broadcast address"),
    text_field<cfg_net_conn_get_static_gateway, cfg_net_conn_set_static_gateway, allow_address>("gateway",
                                                                                                "Gateway"),
    text_field<cfg_net_conn_get_static_dns1, cfg_net_conn_set_static_dns1, allow_address>(
        "dns1", "First name server"),
    text_field<cfg_net_conn_get_static_dns2, cfg_net_conn_set_static_dns2, allow_address>(
        "dns2", "Second name server"),
    text_field<cfg_net_conn_get_dhcp_vendor_class, cfg_net_conn_set_dhcp_vendor_class>("vendor_class",
                                                                                       "Vendor class"),
    text_field<cfg_net_conn_get_dhcp_udhcpc_script, cfg_net_conn_set_dhcp_udhcpc_script>("udhcpc_script",
                                                                                         "DHCP script"),
    // The live state; a connection without one is "unknown".
    {"status", "State",
     [](cfg_net_conn *conn) {
       return cell_of(cfg_net_conn_runtime_status_to_string(cfg_net_conn_runtime_get_status(conn)));
     },
     nullptr},
    {"since", "Since",
     [](cfg_net_conn *conn) {
       int64_t since = cfg_net_conn_runtime_get_last_status_change(conn);
       return unless_empty(since ? utc_time(since) : "");
     },
     nullptr},
    shown_text<cfg_net_conn_runtime_get_dhcp_address>("dhcp_address", "Address by DHCP"),
    shown_text<cfg_net_conn_runtime_get_dhcp_netmask>("dhcp_netmask", "Net mask by DHCP"),
    shown_text<cfg_net_conn_runtime_get_dhcp_gateway>("dhcp_gateway", "Gateway by DHCP"),
    shown_text<cfg_net_conn_runtime_get_dhcp_dns>("dhcp_dns", "Name servers by DHCP"),
};

/// The device of a connection, or nothing when its interface is gone.
cell device_of(cfg *store, const cfg_net_conn *conn) {
  physif_record physif(cfg_get_net_physif_by_net_conn(store, conn));
  return cell_of(cfg_net_physif_get_device(physif.get()));
}

void list(const options &opts) {
  session work(opts, session::access::read);
  listing result("conns", {{"id", "ID"},
                           {"name", "NAME"},
                           {"enabled", "ENABLED"},
                           {"role", "ROLE"},
                           {"mode", "MODE"},
                           {"device", "DEVICE"},
                           {"address", "ADDRESS"},
                           {"status", "STATE"}});
  for (const conn_record &one : all_conns(work.store())) {
    if (!one) throw store_failure(work.store(), "cannot read a connection");
    cfg_net_conn *conn = one.get();
    bool fixed = cfg_net_conn_get_mode(conn) == CFG_NET_CONN_STATIC;
    result.add(
        {cell_of(cfg_net_conn_get_id(conn)), cell_of(cfg_net_conn_get_name(conn)),
         cfg_net_conn_get_enabled(conn) != 0,
         cell_of(cfg_net_conn_role_to_string(cfg_net_conn_get_role(conn))),
         cell_of(cfg_net_conn_mode_to_string(cfg_net_conn_get_mode(conn))), device_of(work.store(), conn),
         cell_of(fixed ? cfg_net_conn_get_static_address(conn) : cfg_net_conn_runtime_get_dhcp_address(conn)),
         cell_of(cfg_net_conn_runtime_status_to_string(cfg_net_conn_runtime_get_status(conn)))});
  }
  result.print(opts);
}

void show(const options &opts, const std::string &reference) {
  session work(opts, session::access::read);
  conn_record one = find_conn(work.store(), reference);
  sheet result;
  show_fields(result, fields, one.get());
  result.add("device", "Device", device_of(work.store(), one.get()));
  result.print(opts);
}

void set(const options &opts, const std::string &reference, const std::vector<std::string> &assignments) {
  auto values = read_assignments(assignments, settable(fields, {"interface"}));
  session work(opts, session::access::write);
  conn_record one = find_conn(work.store(), reference);
  set_fields(fields, one.get(), values);
  if (auto physif = values.find("interface"); physif != values.end())
    require_set(cfg_net_conn_set_physif_id(
                    one.get(), cfg_net_physif_get_id(find_physif(work.store(), physif->second).get())),
                "interface");
  if (!cfg_net_conn_store(one.get())) throw store_failure(work.store(), "cannot save the connection");
  finish_entry(work, cfg_net_conn_get_id(one.get()), cfg_net_conn_get_name(one.get()), "Changed");
}

}  // namespace

conn_record find_conn(cfg *store, const std::string &reference) {
  if (reference.starts_with("system_net_conns-"))
    if (conn_record one(cfg_get_net_conn_by_id(store, reference.c_str())); one) return one;
  for (conn_record one : all_conns(store))
    if (view(cfg_net_conn_get_name(one.get())) == reference) return one;
  not_found("connection", reference, "net conn");
}

void add_net_conn(CLI::App *net, const options &opts) {
  CLI::App *noun = net->add_subcommand("conn", "Network connections: how interfaces are addressed");
  noun->require_subcommand(1);
  constexpr const char *what_a_connection_is = "ID or name of a connection";

  CLI::App *verb = add_verb(noun, "list", "List connections with their addresses and states",
                            "  twctl net conn list\n  twctl net conn list -o json");
  verb->callback([&opts] { list(opts); });

  auto reference = std::make_shared<std::string>();
  verb = add_verb(noun, "show", "Show one connection with its live state",
                  "  twctl net conn show default-conn-1");
  verb->add_option("connection", *reference, what_a_connection_is)->required();
  verb->callback([&opts, reference] { show(opts, *reference); });

  auto assignments = std::make_shared<std::vector<std::string>>();
  verb =
      add_verb(noun, "set", "Change fields of a connection",
               "  twctl net conn set default-conn-1 address=10.0.0.2 netmask=255.255.255.0\n"
               "  twctl net conn set default-conn-2 mode=dhcp interface=eth1\n"
               "  twctl net conn set default-conn-1 gateway= --dry-run    (an empty value clears the field)\n"
               "\nFields: " +
                   joined(settable(fields, {"interface"})));
  verb->add_option("connection", *reference, what_a_connection_is)->required();
  verb->add_option("assignments", *assignments, "FIELD=VALUE ...")->required();
  verb->callback([&opts, reference, assignments] { set(opts, *reference, *assignments); });
}

}  // namespace twctl
