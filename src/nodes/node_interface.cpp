// The network interfaces that a node reports. They are read and never written.
#include "nodes/node_interface.hpp"

#include "nodes/node.hpp"
#include "record/boundary.hpp"
#include "record/engine.hpp"
#include "record/entries.hpp"
#include "record/tables.hpp"

namespace {

using interface = cfg_node_interface;

constexpr tw::load_list everything({
    lenient(tw::string_row<&interface::name>("name")),
    lenient(tw::string_row<&interface::ipv4_addr>("ipv4_address")),
    lenient(tw::string_row<&interface::ipv6_addr>("ipv6_address")),
});

constexpr tw::named_list lists[] = {{"node interface load", everything}};

}  // namespace

const tw::tables tw::node_interface_tables = lists;

bool tw::load_interfaces(cfg_node &node, cfg_elem *elem) noexcept {
  return each_entry(elem, "interfaces", everything.keys, [&](const char *id, const cfg_value *values) {
    auto &slot = tw::add_slot(node.interfaces);
    if (!values) return true;
    slot = new_view<interface>(node.cfg);
    if (!slot) return false;
    slot->texts = &node.texts;
    return slot->uuid.set(id, &node.texts) && slot->node_uuid.set(node.uuid.c_str(), &node.texts) &&
           load_from(everything, *slot, values);
  });
}

cfg_node_interface *cfg_new_node_interface(cfg *store) noexcept {
  return tw::new_view<interface>(store).release();
}

// An interface is two levels below its node: the list is its parent.
cfg_node_interface *cfg_get_node_interface_by_id(cfg *store, const char *id) noexcept {
  cfg_elem *elem = cfg_get_by_id(store, id);
  cfg_elem *node = cfg_get_parent_elem(store, cfg_get_parent_elem(store, elem));
  auto record = node ? tw::new_view<interface>(store, elem) : nullptr;
  if (!record || !tw::take_uuid(record->node_uuid, node) || !tw::load(everything, *record, elem))
    return nullptr;
  return record.release();
}

void cfg_node_interface_free(cfg_node_interface *record) noexcept { delete record; }

const char *cfg_node_interface_get_uuid(const cfg_node_interface *record) noexcept {
  return tw::get<&interface::uuid>(record);
}
const char *cfg_node_interface_get_node_uuid(const cfg_node_interface *record) noexcept {
  return tw::get<&interface::node_uuid>(record);
}
const char *cfg_node_interface_get_name(const cfg_node_interface *record) noexcept {
  return tw::get<&interface::name>(record);
}
const char *cfg_node_interface_get_ipv4_addr(const cfg_node_interface *record) noexcept {
  return tw::get<&interface::ipv4_addr>(record);
}
const char *cfg_node_interface_get_ipv6_addr(const cfg_node_interface *record) noexcept {
  return tw::get<&interface::ipv6_addr>(record);
}

int32_t cfg_node_get_interface_count(const cfg_node *node) noexcept {
  return node ? static_cast<int32_t>(node->interfaces.size()) : 0;
}
cfg_node_interface *cfg_node_get_interface(const cfg_node *node, int32_t index) noexcept {
  const auto *slot = node ? tw::slot_at(node->interfaces, index) : nullptr;
  return slot ? slot->get() : nullptr;
}
