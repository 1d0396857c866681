// Writing a port back into its element, or into a new one.
#include "nodes/node.hpp"
#include "nodes/port.hpp"
#include "record/engine.hpp"
#include "record/tables.hpp"

namespace {

using port = cfg_port;

constexpr tw::store_list identity({
    tw::string_row<&port::label>("label"),
    tw::string_row<&port::csid>("id"),
    tw::string_row<&port::mode>("mode"),
});
constexpr tw::store_list connection({
    tw::string_row<&port::connection_method>("connection_method"),
    tw::nonzero_row<&port::remote_port>("remote_port"),
    tw::string_row<&port::line_id>("line_id"),
});
// Flow control has a setter and is not among them: the node decides it, and what it reported must stay.
constexpr tw::store_list framing({
    tw::string_row<&port::uart_baud>("baud"),
    tw::string_row<&port::uart_parity>("parity"),
    tw::string_row<&port::uart_stopBits>("stopBits"),
    tw::string_row<&port::uart_dataBits>("dataBits"),
});

constexpr tw::named_list lists[] = {
    {"port save, identity", identity},
    {"port save, connection", connection},
    {"port save, \"hardwareSettings\", \"uart\"", framing},
};

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
  cfg_elem *uart = settings ? tw::need_map(record.cfg, settings, "uart") : nullptr;
  return uart && tw::store(framing, record, record.cfg, uart);
}

}  // namespace

const tw::tables tw::port_save_tables = lists;

// NULL is an ordinary failure here: ports are saved from lists in which a slot may be empty.
int cfg_port_save(cfg_port *port) noexcept {
  if (!port) return 0;
  cfg_elem *elem = port->uuid ? tw::element_of(*port) : new_element(*port);
  if (!elem || !tw::store(identity, *port, port->cfg, elem)) return 0;
  if (tw::same(port->mode.c_str(), "disabled") && !drop_connection(*port, elem)) return 0;
  if (!tw::store(connection, *port, port->cfg, elem)) return 0;
  // A port without a baud rate has no framing to write: the map is neither made nor touched.
  return !port->uart_baud || store_framing(*port, elem);
}

int cfg_port_update_string(cfg_port *port, cfg_elem *map, const char *key, const char *text) noexcept {
  return port && tw::store_map_string(port->cfg, map, key, text);
}
