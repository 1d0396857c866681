// Writing a node back into its element, and the generic writers.
#include "nodes/node_rows.hpp"
#include "record/engine.hpp"
#include "record/tables.hpp"

namespace {

using node = cfg_node;
namespace rows = tw::node_rows;

constexpr tw::store_list first({rows::name, rows::bundle, rows::status, rows::approved});
constexpr tw::store_list tarnwell({rows::description, rows::fhvpn_address});
constexpr tw::store_list tarnwell_ssh({rows::ssh_port});
constexpr tw::store_list last({rows::firmware_version, rows::model, rows::serial_number, rows::mac_address});

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
