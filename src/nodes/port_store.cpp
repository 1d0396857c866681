// Reading and writing ports: by ID, as the entries of a node's list, and back into their elements.
#include "nodes/node.hpp"
#include "nodes/port.hpp"
#include "record/engine.hpp"
#include "record/entries.hpp"
#include "record/tables.hpp"

namespace {

using port = cfg_port;

// What a port's settings mean is the business of the node and of whoever shows them: only values of the right
// kind are taken, and no value keeps a port from loading.
constexpr auto label = lenient(tw::string_row<&port::label>("label"));
constexpr auto csid = lenient(tw::string_row<&port::csid>("id"));
constexpr auto mode = lenient(tw::string_row<&port::mode>("mode"));
constexpr auto connection_method = lenient(tw::string_row<&port::connection_method>("connection_method"));
constexpr auto line_id = lenient(tw::string_row<&port::line_id>("line_id"));
constexpr auto remote_port = lenient(tw::nonzero_row<&port::remote_port>("remote_port"));
constexpr auto baud = lenient(tw::string_row<&port::uart_baud>("baud"));
constexpr auto parity = lenient(tw::string_row<&port::uart_parity>("parity"));
constexpr auto stop_bits = lenient(tw::string_row<&port::uart_stopBits>("stopBits"));
constexpr auto data_bits = lenient(tw::string_row<&port::uart_dataBits>("dataBits"));

constexpr tw::load_list hardware({
    lenient(tw::string_row<&port::hardware_protocol>("protocol")),
    lenient(tw::string_row<&port::hardware_pinout>("pinout")),
});
constexpr tw::load_list uart({
    data_bits,
    stop_bits,
    baud,
    parity,
    lenient(tw::string_row<&port::uart_flowControl>("flowControl")),
});
constexpr tw::load_list hardware_settings({
    lenient(tw::map_row<uart>("uart")),
});
constexpr tw::load_list logging({
    lenient(tw::string_row<&port::logging_level>("level")),
    lenient(tw::string_row<&port::logging_facility>("facility")),
    lenient(tw::string_row<&port::logging_priority>("priority")),
});
constexpr tw::load_list nagios({
    lenient(tw::bool_row<&port::nagios_enabled>("enabled")),
    lenient(tw::bool_row<&port::nagios_serialStatus>("serialStatus")),
    lenient(tw::bool_row<&port::nagios_portLogging>("portLogging")),
    lenient(tw::string_row<&port::nagios_name>("name")),
});
constexpr tw::load_list ssh({
    lenient(tw::bool_row<&port::consoleServer_ssh_enabled>("enabled")),
});
constexpr tw::load_list tcp({
    lenient(tw::bool_row<&port::consoleServer_tcp_enabled>("enabled")),
});
constexpr tw::load_list port_share({
    lenient(tw::bool_row<&port::consoleServer_portShare_enabled>("enabled")),
    lenient(tw::bool_row<&port::consoleServer_portShare_encryption>("encryption")),
    lenient(tw::bool_row<&port::consoleServer_portShare_authentication>("authentication")),
    lenient(tw::string_row<&port::consoleServer_portShare_password>("password")),
});
constexpr tw::load_list rfc2217({
    lenient(tw::bool_row<&port::consoleServer_rfc2217_enabled>("enabled")),
});
constexpr tw::load_list web_shell({
    lenient(tw::bool_row<&port::consoleServer_webShell_enabled>("enabled")),
});
constexpr tw::load_list telnet({
    lenient(tw::bool_row<&port::consoleServer_telnet_enabled>("enabled")),
    lenient(tw::bool_row<&port::consoleServer_telnet_unauthenticated>("unauthenticated")),
});
constexpr tw::load_list console_server({
    lenient(tw::map_row<ssh>("ssh")),
    lenient(tw::map_row<tcp>("tcp")),
    lenient(tw::map_row<port_share>("portShare")),
    lenient(tw::map_row<rfc2217>("rfc2217")),
    lenient(tw::map_row<web_shell>("webShell")),
    lenient(tw::map_row<telnet>("telnet")),
});
constexpr tw::load_list terminal_server({
    lenient(tw::string_row<&port::terminalServer_terminalType>("terminalType")),
});
constexpr tw::load_list sdt_server({
    lenient(tw::string_row<&port::sdtServer_username>("username")),
    lenient(tw::string_row<&port::sdtServer_password>("password")),
});
constexpr tw::load_list bridge_server({
    lenient(tw::string_row<&port::bridge_server_address>("address")),
    lenient(tw::int_row<&port::bridge_server_port>("port")),
});
constexpr tw::load_list bridge({
    lenient(tw::bool_row<&port::bridge_rfc2217>("rfc2217")),
    lenient(tw::bool_row<&port::bridge_sshTunnel>("sshTunnel")),
    lenient(tw::map_row<bridge_server>("server")),
});
constexpr tw::load_list mode_settings({
    lenient(tw::map_row<console_server>("consoleServer")),
    lenient(tw::map_row<terminal_server>("terminalServer")),
    lenient(tw::map_row<sdt_server>("sdtServer")),
    lenient(tw::map_row<bridge>("bridge")),
});
constexpr tw::load_list load_everything({
    csid,
    label,
    lenient(tw::string_row<&port::attachedDeviceType>("attachedDeviceType")),
    mode,
    lenient(tw::string_row<&port::hardwareType>("hardwareType")),
    connection_method,
    line_id,
    remote_port,
    lenient(tw::map_row<hardware>("hardware")),
    lenient(tw::map_row<hardware_settings>("hardwareSettings")),
    lenient(tw::map_row<logging>("logging")),
    lenient(tw::map_row<nagios>("nagios")),
    lenient(tw::map_row<mode_settings>("modeSettings")),
});

constexpr tw::store_list save_identity({label, csid, mode});
constexpr tw::store_list save_connection({connection_method, remote_port, line_id});
// Flow control has a setter and is not among them: the node decides it, and what it reported must stay.
constexpr tw::store_list save_framing({baud, parity, stop_bits, data_bits});

constexpr tw::named_list lists[] = {
    {"port load", load_everything},
    {"port load, \"hardware\"", hardware},
    {"port load, \"hardwareSettings\", \"uart\"", uart},
    {"port load, \"hardwareSettings\"", hardware_settings},
    {"port load, \"logging\"", logging},
    {"port load, \"nagios\"", nagios},
    {"port load, \"modeSettings\", \"consoleServer\", \"ssh\"", ssh},
    {"port load, \"modeSettings\", \"consoleServer\", \"tcp\"", tcp},
    {"port load, \"modeSettings\", \"consoleServer\", \"portShare\"", port_share},
    {"port load, \"modeSettings\", \"consoleServer\", \"rfc2217\"", rfc2217},
    {"port load, \"modeSettings\", \"consoleServer\", \"webShell\"", web_shell},
    {"port load, \"modeSettings\", \"consoleServer\", \"telnet\"", telnet},
    {"port load, \"modeSettings\", \"consoleServer\"", console_server},
    {"port load, \"modeSettings\", \"terminalServer\"", terminal_server},
    {"port load, \"modeSettings\", \"sdtServer\"", sdt_server},
    {"port load, \"modeSettings\", \"bridge\", \"server\"", bridge_server},
    {"port load, \"modeSettings\", \"bridge\"", bridge},
    {"port load, \"modeSettings\"", mode_settings},
    {"port save, identity", save_identity},
    {"port save, connection", save_connection},
    {"port save, \"hardwareSettings\", \"uart\"", save_framing},
};

std::unique_ptr<port> new_port(cfg *store, const char *node_id, const char *id) noexcept {
  auto record = tw::new_view<port>(store);
  return record && record->uuid.set(id, &record->texts) && record->node_id.set(node_id, &record->texts)
             ? std::move(record)
             : nullptr;
}

// The element of a port that has none yet belongs to nobody until cfg_node_add_port() puts it into a list.
cfg_elem *new_element(port &record) noexcept {
  cfg_elem *elem = cfg_new_map(record.cfg);
  return tw::take_uuid(record.uuid, elem) ? elem : nullptr;
}

// How a port is reached is kept by the appliance for the nodes that it reaches by credentials: there a
// disabled port is not reached at all. Other nodes reach their ports themselves and keep it. False when the
// port belongs to no node that can be loaded.
bool drop_connection(port &record, cfg_elem *elem) noexcept {
  cfg_elem *list = cfg_get_parent_elem(record.cfg, elem);
  const auto node = tw::load_node(record.cfg, cfg_get_parent_elem(record.cfg, list));
  if (!node) return false;
  const tw::product_kind kind = tw::kind_of(node->product);
  if (kind != tw::product_kind::generic && kind != tw::product_kind::credential) return true;
  record.connection_method.clear();
  record.line_id.clear();
  record.remote_port = 0;
  return true;
}

bool store_framing(const port &record, cfg_elem *elem) noexcept {
  cfg_elem *settings = tw::need_map(record.cfg, elem, "hardwareSettings");
  cfg_elem *map = settings ? tw::need_map(record.cfg, settings, "uart") : nullptr;
  return map && tw::store(save_framing, record, record.cfg, map);
}

}  // namespace

const tw::tables tw::port_tables = lists;

bool tw::load_ports(port_slots &ports, cfg *store, cfg_elem *node) noexcept {
  text node_id;
  if (!take_uuid(node_id, node)) return true;
  port_slots loaded;
  const auto take = [&](const char *id, const cfg_value *values) {
    auto &slot = tw::add_slot(loaded);
    if (!values) return true;
    slot = new_port(store, node_id.c_str(), id);
    return slot && load_from(load_everything, *slot, values);
  };
  if (!each_entry(node, "ports", load_everything.keys, take)) return false;
  ports = std::move(loaded);
  return true;
}

// A port is two levels below its node: the list is its parent.
cfg_port *cfg_get_port_by_id(cfg *store, const char *id) noexcept {
  cfg_elem *elem = cfg_get_by_id(store, id);
  cfg_elem *node = cfg_get_parent_elem(store, cfg_get_parent_elem(store, elem));
  auto record = node ? tw::new_view<port>(store, elem) : nullptr;
  if (!record || !tw::take_uuid(record->node_id, node) || !tw::load(load_everything, *record, elem))
    return nullptr;
  return record.release();
}

int32_t cfg_get_ports_count(cfg *store) noexcept { return tw::collection_count(store, "ports"); }

// NULL is an ordinary failure here: ports are saved from lists in which a slot may be empty.
int cfg_port_save(cfg_port *port) noexcept {
  if (!port) return 0;
  cfg_elem *elem = port->uuid ? tw::element_of(*port) : new_element(*port);
  if (!elem || !tw::store(save_identity, *port, port->cfg, elem)) return 0;
  if (tw::same(port->mode.c_str(), "disabled") && !drop_connection(*port, elem)) return 0;
  if (!tw::store(save_connection, *port, port->cfg, elem)) return 0;
  // A port without a baud rate has no framing to write: the map is neither made nor touched.
  return !port->uart_baud || store_framing(*port, elem);
}

int cfg_port_update_string(cfg_port *port, cfg_elem *map, const char *key, const char *text) noexcept {
  return port && tw::store_map_string(port->cfg, map, key, text);
}
