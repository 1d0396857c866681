// Loading a node whole, by element, by ID, by index and several at once.
#include "nodes/node_rows.hpp"
#include "record/boundary.hpp"
#include "record/engine.hpp"
#include "record/memory_watch.hpp"
#include "record/tables.hpp"

namespace {

using node = cfg_node;
namespace rows = tw::node_rows;

// The certificate is a record of its own, in memory that is mostly cold: it is loaded last, and the store is
// told at once that it will be asked for.
bool expect_certificate(void *record, const cfg_value &reference) {
  auto *self = static_cast<node *>(record);
  self->certificate_id = reference.data;
  cfg_expect(self->cfg, self->certificate_id);
  return true;
}

constexpr auto product = lenient(tw::string_row<&node::product>("product"));
constexpr auto certificate =
    lenient(tw::hook_row<node>("cert", CFG_REFERENCE, expect_certificate, "expect_certificate"));

constexpr tw::load_list common({certificate, rows::name, rows::status, rows::bundle, rows::description,
                                product, rows::mac_address, rows::fhvpn_address, rows::firmware_version,
                                rows::model, rows::serial_number, rows::approved});

constexpr tw::load_list ssh({rows::ssh_port});

bool load_ssh(node &record, const cfg_value &map) noexcept {
  tw::load_within(ssh, record, map);
  return true;
}

// A list or map of the node, read by a function of its family.
template <bool (*Load)(node &, const cfg_value &) noexcept>
constexpr auto nested(const char *key, cfg_kind kind, const char *function) {
  return lenient(tw::hook_row<node>(
      key, kind,
      [](void *record, const cfg_value &value) { return Load(*static_cast<node *>(record), value); },
      function));
}

// What is nested in a "tarnwell" node, but for the lists whose entries' IDs are kept.
constexpr tw::load_list tarnwell({
    nested<tw::load_node_users>("users", CFG_LIST, "load_node_users"),
    nested<tw::load_node_groups>("groups", CFG_LIST, "load_node_groups"),
    nested<tw::load_node_auth>("auth", CFG_MAP, "load_node_auth"),
    nested<load_ssh>("ssh", CFG_MAP, "load_ssh"),
});

constexpr auto address = lenient(tw::string_row<&node::address>("address"));
constexpr auto username = lenient(tw::string_row<&node::username>("username"));
constexpr auto password = lenient(tw::string_row<&node::password>("password"));

constexpr tw::load_list credential({address, username, password});
constexpr tw::load_list generic({
    address,
    username,
    password,
    lenient(tw::string_row<&node::connection_method>("connection_method")),
    lenient(tw::int_row<&node::port_label_count>("port_count")),
    lenient(tw::int_row<&node::base_port>("base_port")),
});

// Only these nodes hold a certificate.
bool load_tarnwell(node &record, cfg_elem *elem) {
  if (record.certificate_id) cfg_expect(record.cfg, record.certificate_id);
  if (!tw::load_interfaces(record, elem) || !tw::load(tarnwell, record, elem) ||
      !tw::load_etags(record, elem))
    return false;
  if (record.certificate_id)
    record.certificate.reset(cfg_get_certificate_by_id(record.cfg, record.certificate_id));
  return true;
}

bool load_kind(node &record, cfg_elem *elem) {
  switch (tw::kind_of(record.product)) {
    case tw::product_kind::tarnwell:
      return load_tarnwell(record, elem);
    case tw::product_kind::credential:
      return tw::load(credential, record, elem);
    case tw::product_kind::generic:
      return tw::load(generic, record, elem) &&
             record.port_labels.load(record.port_label_count, record.cfg,
                                     cfg_simple_get_mapelem(record.cfg, elem, "port_labels"));
    case tw::product_kind::other:
      break;
  }
  return true;
}

constexpr tw::named_list lists[] = {
    {"node load, every product", common},  {"node load, tarnwell", tarnwell},
    {"node load, tarnwell, \"ssh\"", ssh}, {"node load, credential", credential},
    {"node load, generic", generic},
};

}  // namespace

const tw::tables tw::node_load_tables = lists;

std::unique_ptr<cfg_node> tw::load_node(cfg *store, cfg_elem *elem) noexcept {
  // What is missing or broken in the store leaves fields empty. What could not be read for want of memory
  // must not look like that: saved again, it would be lost.
  const memory_watch memory;
  auto record = elem ? new_view<node>(store) : nullptr;
  const bool loaded = record && take_uuid(record->uuid, elem, record->texts) &&
                      guarded([&] { return tw::load(common, *record, elem) && load_kind(*record, elem); });
  if (!loaded || memory.ran_short()) return nullptr;
  record->certificate_id = nullptr;
  return record;
}

cfg_node *cfg_get_node_by_id(cfg *store, const char *id) noexcept {
  return tw::load_node(store, cfg_get_by_id(store, id)).release();
}

int32_t cfg_get_nodes_count(cfg *store) noexcept { return tw::collection_count(store, "nodes"); }

cfg_node *cfg_get_node_by_idx(cfg *store, int32_t index) noexcept {
  return tw::load_node(store, tw::collection_entry(store, "nodes", index)).release();
}

cfg_node **cfg_get_nodes_by_id(cfg *store, const char *const *ids, int32_t count) noexcept {
  if (!ids || count < 0) return nullptr;
  const std::unique_ptr<cfg_elem *[], decltype(&std::free)> elems(cfg_get_by_ids(store, ids, count),
                                                                  std::free);
  if (!elems) return nullptr;
  auto **nodes = static_cast<cfg_node **>(std::calloc(static_cast<size_t>(count) + 1, sizeof(cfg_node *)));
  if (!nodes) return nullptr;
  for (int32_t i = 0; elems[static_cast<size_t>(i)]; ++i) {
    nodes[i] = tw::load_node(store, elems[static_cast<size_t>(i)]).release();
    if (nodes[i]) continue;
    while (i > 0) cfg_node_free(nodes[--i]);
    std::free(nodes);
    return nullptr;
  }
  return nodes;
}
