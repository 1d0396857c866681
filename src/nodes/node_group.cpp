// The local groups of a node: read with the node, changed in the record, written as a whole list.
#include "nodes/node_group.hpp"

#include <algorithm>

#include "nodes/node.hpp"
#include "record/boundary.hpp"
#include "record/engine.hpp"
#include "record/entries.hpp"
#include "record/tables.hpp"
#include "record/texts_row.hpp"

namespace {

using group = cfg_node_group;

constexpr auto groupname = lenient(tw::string_row<&group::groupname>("groupname"));
constexpr auto description = lenient(tw::string_row<&group::description>("description"));
constexpr auto system_group = lenient(tw::bool_row<&group::system>("system"));
constexpr auto roles = lenient(tw::texts_row<&group::roles>("roles"));

constexpr tw::load_list load_everything({groupname, description, system_group, roles});
constexpr tw::store_list save_everything({groupname, description, system_group, roles});

constexpr tw::named_list lists[] = {
    {"node group load", load_everything},
    {"node group save", save_everything},
};

// A group that is taken out may outlive its node and the node's block.
bool leave_node(group &record) noexcept {
  return record.groupname.move_out() && record.description.move_out() && record.roles.move_out();
}

void store_what_can_be(const group &record, cfg *handle, cfg_elem *map) noexcept {
  for (const tw::row_data &row : save_everything.rows_) row.store(handle, map, row.key, &record);
}

}  // namespace

const tw::tables tw::node_group_tables = lists;

bool tw::load_node_groups(cfg_node &node, const cfg_value &list) noexcept {
  return each_map(node.cfg, list, load_everything.keys, [&](const cfg_value *values) {
    auto &slot = tw::add_slot(node.node_groups);
    if (!values) return true;
    slot = new_view<group>(node.cfg);
    if (!slot) return false;
    slot->texts = &node.texts;
    return load_from(load_everything, *slot, values);
  });
}

int32_t cfg_node_get_node_group_count(const cfg_node *node) noexcept {
  return node ? static_cast<int32_t>(node->node_groups.size()) : 0;
}
cfg_node_group *cfg_node_get_node_group(const cfg_node *node, int32_t index) noexcept {
  const auto *slot = node ? tw::slot_at(node->node_groups, index) : nullptr;
  return slot ? slot->get() : nullptr;
}

cfg_node_group *cfg_node_new_group(cfg_node *node, const char *name) noexcept {
  if (!node || !name) return nullptr;
  return tw::guarded([&]() -> cfg_node_group * {
    auto made = tw::new_view<group>(node->cfg);
    if (!made || !made->groupname.set(name)) return nullptr;
    return node->node_groups.emplace_back(std::move(made)).get();
  });
}

// The group itself stays: whoever deletes it often still shows it, and then frees it.
int cfg_node_delete_group(cfg_node *node, const cfg_node_group *record) noexcept {
  if (!node || !record) return 0;
  const auto at = std::find_if(node->node_groups.begin(), node->node_groups.end(),
                               [&](const auto &slot) { return slot.get() == record; });
  if (at == node->node_groups.end() || !leave_node(**at)) return 0;
  static_cast<void>(at->release());  // the caller's now
  node->node_groups.erase(at);
  return 1;
}

// A text that the store refuses is left out; it costs neither the rest of the group, nor the other groups,
// nor the result. The node, which is told of its groups after this, has the last word on each of them.
int cfg_node_save_groups(cfg_node *node) noexcept {
  cfg_elem *elem = node ? tw::element_of(*node) : nullptr;
  cfg_elem *list = elem ? cfg_new_list(node->cfg) : nullptr;
  if (!list || !cfg_add_mapelem(node->cfg, elem, "groups", list)) return 0;
  for (const auto &record : node->node_groups) {
    cfg_elem *map = record ? cfg_new_map(node->cfg) : nullptr;
    if (cfg_add_listelem(node->cfg, list, map)) store_what_can_be(*record, node->cfg, map);
  }
  return 1;
}

void cfg_node_group_free(cfg_node_group *record) noexcept { delete record; }

const char *cfg_node_group_get_groupname(const cfg_node_group *record) noexcept {
  return tw::get<&group::groupname>(record);
}

const char *cfg_node_group_get_description(const cfg_node_group *record) noexcept {
  return tw::get<&group::description>(record);
}
int cfg_node_group_set_description(cfg_node_group *record, const char *text) noexcept {
  return tw::replace<&group::description>(record, text);
}

int32_t cfg_node_group_get_system(const cfg_node_group *record) noexcept {
  return tw::get<&group::system>(record);
}
int cfg_node_group_set_system(cfg_node_group *record, int32_t is_system) noexcept {
  return tw::set<&group::system>(record, is_system != 0);
}

int32_t cfg_node_group_get_role_count(const cfg_node_group *record) noexcept {
  return record ? record->roles.count() : 0;
}
const char *cfg_node_group_get_role(const cfg_node_group *record, int32_t index) noexcept {
  return record ? record->roles.at(index) : nullptr;
}
int cfg_node_group_add_role(cfg_node_group *record, const char *role) noexcept {
  return record && role && record->roles.append(role);
}
