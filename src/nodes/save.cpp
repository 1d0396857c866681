// Writing a node back into its element, and the generic writers.
#include "nodes/node.hpp"
#include "record/engine.hpp"
#include "record/tables.hpp"

namespace {

using node = cfg_node;

constexpr tw::store_list first({
    tw::string_row<&node::name>("name"),
    tw::reference_row<&node::bundle_id>("bundle"),
    tw::string_row<&node::status>("status"),
    tw::bool_row<&node::approved>("approved"),
});
constexpr tw::store_list tarnwell({
    tw::string_row<&node::description>("description"),
    tw::string_row<&node::fhvpn_address>("fhvpn_address"),
});
constexpr tw::store_list tarnwell_ssh({
    tw::int_row<&node::ssh_port>("port"),
});
constexpr tw::store_list last({
    tw::string_row<&node::firmware_version>("firmware_version"),
    tw::string_row<&node::model>("model"),
    tw::string_row<&node::serial_number>("serial_number"),
    tw::string_row<&node::mac_address>("mac_address"),
});

constexpr tw::named_list lists[] = {
    {"node save, first", first},
    {"node save, tarnwell", tarnwell},
    {"node save, tarnwell, \"ssh\"", tarnwell_ssh},
    {"node save, last", last},
};

bool store_tarnwell(const node &record, cfg_elem *elem) noexcept {
  if (!tw::store(tarnwell, record, record.cfg, elem)) return false;
  cfg_elem *ssh = tw::need_map(record.cfg, elem, "ssh");
  return ssh && tw::store(tarnwell_ssh, record, record.cfg, ssh);
}

}  // namespace

const tw::tables tw::node_save_tables = lists;

// Product, address, credentials, connection method, ports and certificate are not the node's to change here:
// enrolment writes them, and what it wrote must survive every save of the node.
int cfg_node_save(cfg_node *node) noexcept {
  TW_ASSERT(node && node->cfg, "src/nodes");
  cfg_elem *elem = tw::element_of(*node);
  if (!elem || !tw::store(first, *node, node->cfg, elem)) return 0;
  if (tw::kind_of(node->product) == tw::product_kind::tarnwell && !store_tarnwell(*node, elem)) return 0;
  return tw::store(last, *node, node->cfg, elem);
}

int cfg_node_update_string(cfg_node *node, cfg_elem *map, const char *key, const char *text) noexcept {
  return node && tw::store_map_string(node->cfg, map, key, text);
}

int cfg_node_update_reference(cfg_node *node, cfg_elem *map, const char *key, const char *id) noexcept {
  return node && tw::store_map_reference(node->cfg, map, key, id);
}

int cfg_node_update_blob(cfg_node *node, cfg_elem *map, const char *key, const void *data,
                         size_t length) noexcept {
  return node && tw::store_map_blob(node->cfg, map, key, data, length);
}
