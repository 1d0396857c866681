// A node's ports.
#include "nodes/node.hpp"
#include "record/entries.hpp"

namespace {

// Read by the first query. "None" is not remembered: a record that is kept for long sees the ports that the
// node's first report brings. Only committed ports are a node's ports; one that cfg_node_add_port() has added
// is seen after the commit.
const tw::port_slots &ports_of(cfg_node &node) noexcept {
  if (node.ports.empty()) tw::load_ports(node.ports, node.cfg, tw::element_of(node));
  return node.ports;
}

}  // namespace

int32_t cfg_node_get_port_count(cfg_node *node) noexcept {
  return node ? static_cast<int32_t>(ports_of(*node).size()) : 0;
}

cfg_port *cfg_node_get_port(cfg_node *node, int32_t index) noexcept {
  const auto *slot = node ? tw::slot_at(ports_of(*node), index) : nullptr;
  return slot ? slot->get() : nullptr;
}

cfg_port *cfg_node_get_port_by_csid(cfg_node *node, const char *csid) noexcept {
  if (!node || !csid) return nullptr;
  for (const auto &port : ports_of(*node)) {
    if (port && tw::same(port->csid.c_str(), csid)) return port.get();
  }
  return nullptr;
}

int cfg_node_add_port(cfg_node *node, const cfg_port *port) noexcept {
  if (!node || !port) return 0;
  cfg_elem *list = cfg_simple_get_mapelem(node->cfg, tw::element_of(*node), "ports");
  cfg_elem *elem = cfg_get_by_id(node->cfg, port->uuid.c_str());
  return cfg_append_future_listelem(node->cfg, list, elem);
}
