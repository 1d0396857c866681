// The local users that a node reports. They are read and never written.
#include "nodes/node_user.hpp"

#include "nodes/node.hpp"
#include "record/boundary.hpp"
#include "record/engine.hpp"
#include "record/entries.hpp"
#include "record/tables.hpp"
#include "record/texts_row.hpp"

namespace {

using user = cfg_node_user;

constexpr tw::load_list everything({
    lenient(tw::string_row<&user::username>("username")),
    lenient(tw::string_row<&user::description>("description")),
    lenient(tw::int_row<&user::disabled>("disabled")),
    lenient(tw::texts_row<&user::groups>("groups")),
});

constexpr tw::named_list lists[] = {{"node user load", everything}};

}  // namespace

const tw::tables tw::node_user_tables = lists;

bool tw::load_node_users(cfg_node &node, const cfg_value &list) noexcept {
  return each_map(node.cfg, list, everything.keys, [&](const cfg_value *values) {
    auto &slot = tw::add_slot(node.node_users);
    if (!values) return true;
    slot = new_view<user>(node.cfg);
    if (!slot) return false;
    slot->texts = &node.texts;
    return load_from(everything, *slot, values);
  });
}

void cfg_node_user_free(cfg_node_user *record) noexcept { delete record; }

int32_t cfg_node_get_node_user_count(const cfg_node *node) noexcept {
  return node ? static_cast<int32_t>(node->node_users.size()) : 0;
}
cfg_node_user *cfg_node_get_node_user(const cfg_node *node, int32_t index) noexcept {
  const auto *slot = node ? tw::slot_at(node->node_users, index) : nullptr;
  return slot ? slot->get() : nullptr;
}

const char *cfg_node_user_get_username(const cfg_node_user *record) noexcept {
  return tw::get<&user::username>(record);
}
const char *cfg_node_user_get_description(const cfg_node_user *record) noexcept {
  return tw::get<&user::description>(record);
}
int32_t cfg_node_user_get_disabled(const cfg_node_user *record) noexcept {
  return tw::get<&user::disabled>(record);
}
int32_t cfg_node_user_get_group_count(const cfg_node_user *record) noexcept {
  return record ? record->groups.count() : 0;
}
const char *cfg_node_user_get_group(const cfg_node_user *record, int32_t index) noexcept {
  return record ? record->groups.at(index) : nullptr;
}
