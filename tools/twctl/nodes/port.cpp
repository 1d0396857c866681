// twctl port: the serial ports of nodes.
#include <fmt/format.h>

#include <algorithm>

#include "cli/fields.hpp"
#include "cli/text.hpp"
#include "commands.hpp"
#include "nodes/nodes.hpp"

namespace twctl {

namespace {

void write_remote_port(cfg_port *port, const std::string &text, const std::string &name) {
  require_set(text.empty() ? cfg_port_delete_remote_port(port)
                           : cfg_port_set_remote_port(port, require_number(text, name, 1, 65535)),
              name);
}

template <auto Get>
constexpr field<cfg_port> shown_truth(const char *name, const char *title) {
  return {name, title, [](cfg_port *port) { return cell(Get(port) != 0); }, nullptr};
}

constexpr field<cfg_port> fields[] = {
    shown_text<cfg_port_get_uuid>("id", "ID"),
    shown_text<cfg_port_get_node_id>("node_id", "Node's ID"),
    text_field<cfg_port_get_csid, cfg_port_set_csid, require_label>("port", "Port"),
    text_field<cfg_port_get_label, cfg_port_set_label>("label", "Label"),
    text_field<cfg_port_get_mode, cfg_port_set_mode>("mode", "Mode"),
    text_field<cfg_port_get_connection_method, cfg_port_set_connection_method>("connection_method",
                                                                               "Connection"),
    {"remote_port", "Network port",
     [](cfg_port *port) { return unless_zero(cfg_port_get_remote_port(port)); }, write_remote_port},
    text_field<cfg_port_get_line_id, cfg_port_set_line_id>("line_id", "Line"),
    text_field<cfg_port_get_hardware_uart_baud, cfg_port_set_hardware_uart_baud>("baud", "Baud rate"),
    text_field<cfg_port_get_hardware_uart_dataBits, cfg_port_set_hardware_uart_dataBits>("data_bits",
                                                                                         "Data bits"),
    text_field<cfg_port_get_hardware_uart_parity, cfg_port_set_hardware_uart_parity>("parity", "Parity"),
    text_field<cfg_port_get_hardware_uart_stopBits, cfg_port_set_hardware_uart_stopBits>("stop_bits",
                                                                                         "Stop bits"),
    // The record never saves it.
    shown_text<cfg_port_get_hardware_uart_flowControl>("flow_control", "Flow control"),
    shown_text<cfg_port_get_attachedDeviceType>("attached_device", "Attached device"),
    shown_text<cfg_port_get_hardwareType>("hardware_type", "Hardware"),
    shown_text<cfg_port_get_hardware_protocol>("protocol", "Protocol"),
    shown_text<cfg_port_get_hardware_pinout>("pinout", "Pinout"),
    shown_text<cfg_port_get_logging_level>("log_level", "Logging level"),
    shown_text<cfg_port_get_logging_facility>("log_facility", "Logging facility"),
    shown_text<cfg_port_get_logging_priority>("log_priority", "Logging priority"),
    shown_truth<cfg_port_get_nagios_enabled>("nagios_enabled", "Watched by Nagios"),
    shown_text<cfg_port_get_nagios_name>("nagios_name", "Name in Nagios"),
    shown_truth<cfg_port_get_mode_consoleServer_ssh_enabled>("ssh", "SSH"),
    shown_truth<cfg_port_get_mode_consoleServer_tcp_enabled>("tcp", "TCP"),
    shown_truth<cfg_port_get_mode_consoleServer_telnet_enabled>("telnet", "Telnet"),
    shown_truth<cfg_port_get_mode_consoleServer_rfc2217_enabled>("rfc2217", "RFC 2217"),
    shown_truth<cfg_port_get_mode_consoleServer_webShell_enabled>("web_shell", "Web shell"),
    shown_truth<cfg_port_get_mode_consoleServer_portShare_enabled>("port_share", "Shared"),
    shown_secret<cfg_port_get_mode_consoleServer_portShare_password>("port_share_password_set",
                                                                     "Password of the share set"),
    shown_text<cfg_port_get_mode_terminalServer_terminalType>("terminal_type", "Terminal"),
    shown_text<cfg_port_get_mode_sdtServer_username>("sdt_username", "SDT user name"),
    shown_secret<cfg_port_get_mode_sdtServer_password>("sdt_password_set", "SDT password set"),
    shown_text<cfg_port_get_mode_bridge_server_address>("bridge_address", "Bridge to"),
    {"bridge_port", "Bridge to port",
     [](cfg_port *port) { return unless_zero(cfg_port_get_mode_bridge_server_port(port)); }, nullptr},
};

/// A node's port by the ID that the node gives it, its label or its ID in the store, tried in that order.
cfg_port *find_port(cfg_node *node, const std::string &reference) {
  if (cfg_port *port = cfg_node_get_port_by_csid(node, reference.c_str())) return port;
  for (auto get : {cfg_port_get_label, cfg_port_get_uuid})
    for (cfg_port *port : ports(node))
      if (port && view(get(port)) == reference) return port;
  throw failure(exit_code::not_found,
                fmt::format("{} has no port '{}'", view(cfg_node_get_uuid(node)), printable(reference)),
                "it is the ID, label or ID in the store of none of them",
                fmt::format("see 'twctl port list {}'", view(cfg_node_get_uuid(node))));
}

void add_ports(const session &work, listing &result, cfg_node *node) {
  for (cfg_port *port : ports(node)) {
    if (!port) throw store_failure(work.store(), "cannot read a port");
    result.add({cell_of(cfg_port_get_uuid(port)), cell_of(cfg_node_get_name(node)),
                cell_of(cfg_port_get_csid(port)), cell_of(cfg_port_get_label(port)),
                cell_of(cfg_port_get_mode(port)), cell_of(cfg_port_get_connection_method(port)),
                unless_zero(cfg_port_get_remote_port(port)), cell_of(cfg_port_get_hardware_uart_baud(port))});
  }
}

void list(const options &opts, const std::string &reference) {
  session work(opts, session::access::read);
  listing result("ports", {{"id", "ID"},
                           {"node", "NODE"},
                           {"port", "PORT"},
                           {"label", "LABEL"},
                           {"mode", "MODE"},
                           {"connection_method", "CONNECTION"},
                           {"remote_port", "NETWORK PORT", true},
                           {"baud", "BAUD", true}});
  if (!reference.empty()) {
    add_ports(work, result, find_node(work.store(), reference).get());
  } else {
    for (const node_record &node : nodes(work.store())) {
      if (!node) throw store_failure(work.store(), "cannot read a node");
      add_ports(work, result, node.get());
    }
  }
  result.print(opts);
}

struct port_arguments {
  std::string node, port;
  std::vector<std::string> assignments;
};

void show(const options &opts, const port_arguments &arguments) {
  session work(opts, session::access::read);
  node_record node = find_node(work.store(), arguments.node);
  sheet result;
  show_fields(result, fields, find_port(node.get(), arguments.port));
  result.print(opts);
}

/// A port without a baud rate saves nothing of how its line is framed: that must not look as if it were done.
void require_baud(const cfg_port *port, const std::map<std::string, std::string> &values) {
  if (cfg_port_get_hardware_uart_baud(port)) return;
  for (const char *framing : {"data_bits", "parity", "stop_bits"})
    if (auto found = values.find(framing); found != values.end() && !found->second.empty())
      throw failure(exit_code::invalid_input, fmt::format("{} needs a baud rate", framing),
                    "a port keeps nothing of its line without one", "give baud=9600, for example");
}

/// Fails when another port of the node has this ID already.
void require_free_id(cfg_node *node, const std::string &id) {
  if (const cfg_port *same = cfg_node_get_port_by_csid(node, id.c_str()))
    require_free(cfg_port_get_uuid(same), id);
}

void save(session &work, cfg_port *port) {
  if (!cfg_port_save(port)) throw store_failure(work.store(), "cannot save the port");
}

std::string name_of(const cfg_port *port) {
  const char *label = cfg_port_get_label(port);
  return std::string(view(label ? label : cfg_port_get_csid(port)));
}

void set(const options &opts, const port_arguments &arguments) {
  auto values = read_assignments(arguments.assignments, settable(fields));
  session work(opts, session::access::write);
  node_record node = find_node(work.store(), arguments.node);
  cfg_port *port = find_port(node.get(), arguments.port);
  if (auto id = values.find("port"); id != values.end() && id->second != view(cfg_port_get_csid(port)))
    require_free_id(node.get(), id->second);
  set_fields(fields, port, values);
  require_baud(port, values);
  save(work, port);
  finish_entry(work, cfg_port_get_uuid(port), name_of(port), "Changed");
}

void add(const options &opts, const port_arguments &arguments) {
  std::vector<const char *> names = settable(fields);
  std::erase_if(names, [](std::string_view name) { return name == "port"; });  // given by itself
  auto values = read_assignments(arguments.assignments, names, true);
  require_label(arguments.port, "the ID of a port");
  if (auto mode = values.find("mode"); mode != values.end() && mode->second == "disabled")
    throw failure(exit_code::invalid_input, "a new port cannot be disabled",
                  "what a disabled port keeps depends on the node that it belongs to",
                  "add it, then disable it with 'twctl port set'");
  session work(opts, session::access::write);
  node_record node = find_node(work.store(), arguments.node);
  require_free_id(node.get(), arguments.port);
  port_record port(cfg_new_port(work.store()));
  require_set(cfg_port_set_csid(port.get(), arguments.port.c_str()), "port");
  set_fields(fields, port.get(), values);
  require_baud(port.get(), values);
  save(work, port.get());
  need_list(work.store(), node.get(), "ports");
  if (!cfg_node_add_port(node.get(), port.get()))
    throw store_failure(work.store(), "cannot add the port to the node");
  finish_entry(work, cfg_port_get_uuid(port.get()), name_of(port.get()), "Added");
}

}  // namespace

void add_port(CLI::App &program, const options &opts) {
  CLI::App *noun = program.add_subcommand("port", "Ports: the serial ports of nodes");
  noun->require_subcommand(1);
  constexpr const char *what_a_node_is = "ID, name, serial number or VPN address of a node";
  constexpr const char *what_a_port_is = "The node's own ID of the port, its label or its ID in the store";
  auto arguments = std::make_shared<port_arguments>();

  CLI::App *verb = add_verb(noun, "list", "List the ports of a node, or of all nodes",
                            "  twctl port list rack-12\n  twctl port list -o json");
  verb->add_option("node", arguments->node, std::string(what_a_node_is) + "; without it, all nodes");
  verb->callback([&opts, arguments] { list(opts, arguments->node); });

  verb = add_verb(noun, "show", "Show one port", "  twctl port show rack-12 3");
  verb->add_option("node", arguments->node, what_a_node_is)->required();
  verb->add_option("port", arguments->port, what_a_port_is)->required();
  verb->callback([&opts, arguments] { show(opts, *arguments); });

  verb = add_verb(noun, "set", "Change fields of a port",
                  "  twctl port set rack-12 3 label=router baud=9600 parity=none\n"
                  "  twctl port set rack-12 router mode=disabled --dry-run\n"
                  "  twctl port set rack-12 3 remote_port=            (an empty value clears the field)\n"
                  "\nFields: " +
                      joined(settable(fields)));
  verb->add_option("node", arguments->node, what_a_node_is)->required();
  verb->add_option("port", arguments->port, what_a_port_is)->required();
  verb->add_option("assignments", arguments->assignments, "FIELD=VALUE ...")->required();
  verb->callback([&opts, arguments] { set(opts, *arguments); });

  verb = add_verb(noun, "add", "Add a port to a node",
                  "  twctl port add lab-1 5\n"
                  "  twctl port add lab-1 5 label=switch connection_method=ssh remote_port=3005");
  verb->add_option("node", arguments->node, what_a_node_is)->required();
  verb->add_option("port", arguments->port, "The node's own ID of the new port")->required();
  verb->add_option("assignments", arguments->assignments, "FIELD=VALUE ..., the fields of 'port set'");
  verb->callback([&opts, arguments] { add(opts, *arguments); });
}

}  // namespace twctl
