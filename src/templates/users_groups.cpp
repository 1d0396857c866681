// Users-groups templates: one operation on the users, the groups or the memberships of nodes.
#include <twobject/template_users_groups.h>

#include "record/boundary.hpp"
#include "record/engine.hpp"
#include "record/entries.hpp"
#include "record/memory_watch.hpp"
#include "record/tables.hpp"
#include "record/texts_row.hpp"
#include "templates/template.hpp"

namespace {

constexpr char user_changes[] = "ug_user_changes";
constexpr char group_changes[] = "ug_group_changes";

constexpr const char *operation_texts[] = {"user_add",      "user_modify",    "user_remove",
                                           "user_set_list", "group_add",      "group_modify",
                                           "group_remove",  "group_set_list", "membership"};
constexpr tw::enumeration operation_types{
    .texts = operation_texts, .first = CFG_UGT_USER_ADD, .unknown = CFG_UGT_NONE};

// Mandatory for the list, not for the template: without an operation there is nothing else to read. Unlike
// other enumerations it is written when it has no text too, as "unknown": readers expect the key.
constexpr auto operation = [] {
  auto row = mandatory(tw::enum_row<&cfg_template::operation, operation_types>("ug_operation_type"));
  row.store = [](cfg *store, cfg_elem *map, const char *key, const void *record) {
    const auto &self = *static_cast<const cfg_template *>(record);
    return cfg_map_set_string(store, map, key, cfg_ugt_op_type_to_string(self.operation)) != 0;
  };
  row.rule = "enumeration, unknown is written as \"unknown\"";
  return row;
}();
constexpr auto membership_users =
    lenient(tw::texts_row<&cfg_template::membership_users>("ug_membership_users"));
constexpr auto membership_groups =
    lenient(tw::texts_row<&cfg_template::membership_groups>("ug_membership_groups"));
constexpr auto add_membership = lenient(tw::int_row<&cfg_template::add_membership>("ug_add_membership"));

constexpr tw::load_list load_operation({operation});
constexpr tw::load_list load_membership({membership_users, membership_groups, add_membership});
constexpr tw::store_list save_operation({operation});
constexpr tw::store_list save_membership({membership_users, membership_groups, add_membership});

constexpr tw::named_list lists[] = {
    {"template load, users and groups", load_operation},
    {"template load, users and groups, membership", load_membership},
    {"template save, users and groups", save_operation},
    {"template save, users and groups, membership", save_membership},
};

// What an operation uses.
enum class data { none, users, groups, membership };

data used_by(int32_t type) noexcept {
  if (type >= CFG_UGT_USER_ADD && type <= CFG_UGT_USER_SET_LIST) return data::users;
  if (type >= CFG_UGT_GROUP_ADD && type <= CFG_UGT_GROUP_SET_LIST) return data::groups;
  return type == CFG_UGT_MEMBERSHIP ? data::membership : data::none;
}

// An entry that cannot be read is left out.
template <class Operation>
int load_operations(tw::operations<Operation> &out, cfg *store, cfg_elem *map, const char *key,
                    Operation *(*load)(cfg *, cfg_elem *)) noexcept {
  return tw::guarded([&] {
    tw::operations<Operation> found;
    cfg_elem *list = cfg_simple_get_mapelem(store, map, key);
    int32_t count = 0;
    cfg_list_size(list, &count);
    for (int32_t i = 0; i < count; ++i) {
      tw::operation_ptr<Operation> entry(load(store, cfg_simple_get_listelem(store, list, i)));
      if (entry) found.push_back(std::move(entry));
    }
    out = std::move(found);
    return 1;
  });
}

// The list is a new one each time, and its entries are there at once, like all of a saved template.
template <class Operation>
void save_operations(const tw::operations<Operation> &entries, cfg *store, cfg_elem *map, const char *key,
                     cfg_elem *(*save)(cfg *, const Operation *)) noexcept {
  cfg_elem *list = cfg_new_list(store);
  if (!cfg_add_mapelem(store, map, key, list)) return;
  for (const auto &entry : entries) cfg_add_listelem(store, list, save(store, entry.get()));
}

template <class Operation>
int add_operation(tw::operations<Operation> &entries, Operation *added) noexcept {
  return tw::guarded([&] {
    entries.emplace_back();
    entries.back().reset(added);
    return 1;
  });
}

}  // namespace

const tw::tables tw::users_groups_template_tables = lists;

const char *cfg_ugt_op_type_to_string(int32_t type) noexcept {
  const char *text = operation_types.to_string(type);
  return text ? text : "unknown";
}
int32_t cfg_ugt_string_to_op_type(const char *text) noexcept { return operation_types.from_string(text); }

int cfg_ugt_new_setup(cfg_template *record) noexcept {
  if (!record) return 0;
  record->operation = CFG_UGT_NONE;
  record->user_operations.clear();
  record->group_operations.clear();
  record->membership_users.clear();
  record->membership_groups.clear();
  record->add_membership = 1;
  return 1;
}

int cfg_ugt_load_from_config(cfg_template *record, cfg_elem *map) noexcept {
  if (!record || !map) return 0;
  const tw::memory_watch memory;
  if (tw::load(load_operation, *record, map)) {
    switch (used_by(record->operation)) {
      case data::users:
        load_operations(record->user_operations, record->cfg, map, user_changes,
                        cfg_ugt_load_user_operation_from_config);
        break;
      case data::groups:
        load_operations(record->group_operations, record->cfg, map, group_changes,
                        cfg_ugt_load_group_operation_from_config);
        break;
      case data::membership:
        record->membership_users.clear();
        record->membership_groups.clear();
        tw::load(load_membership, *record, map);
        break;
      case data::none:
        break;
    }
  }
  return !memory.ran_short();
}

int cfg_ugt_save_to_config(cfg_template *record, cfg_elem *map) noexcept {
  if (!record || !map) return 0;
  const tw::memory_watch memory;
  tw::store_each(save_operation, *record, record->cfg, map);
  switch (used_by(record->operation)) {
    case data::users:
      save_operations(record->user_operations, record->cfg, map, user_changes,
                      cfg_ugt_save_user_operation_to_config);
      break;
    case data::groups:
      save_operations(record->group_operations, record->cfg, map, group_changes,
                      cfg_ugt_save_group_operation_to_config);
      break;
    case data::membership:
      tw::store_each(save_membership, *record, record->cfg, map);
      break;
    case data::none:
      break;
  }
  return !memory.ran_short();
}

int32_t cfg_ugt_get_operation(const cfg_template *record) noexcept {
  return tw::get<&cfg_template::operation>(record);
}
int cfg_ugt_set_operation(cfg_template *record, int32_t type) noexcept {
  return tw::set<&cfg_template::operation>(record, type);
}

int cfg_ugt_add_user_operation(cfg_template *record, cfg_ugt_user_operation *user) noexcept {
  return record && user && add_operation(record->user_operations, user);
}
int32_t cfg_ugt_get_user_operations_count(const cfg_template *record) noexcept {
  return record ? static_cast<int32_t>(record->user_operations.size()) : 0;
}
cfg_ugt_user_operation *cfg_ugt_get_user_operation(const cfg_template *record, int32_t index) noexcept {
  const auto *slot = record ? tw::slot_at(record->user_operations, index) : nullptr;
  return slot ? slot->get() : nullptr;
}
void cfg_ugt_clear_user_operations(cfg_template *record) noexcept {
  if (record) record->user_operations.clear();
}

int cfg_ugt_add_group_operation(cfg_template *record, cfg_ugt_group_operation *group) noexcept {
  return record && group && add_operation(record->group_operations, group);
}
int32_t cfg_ugt_get_group_operations_count(const cfg_template *record) noexcept {
  return record ? static_cast<int32_t>(record->group_operations.size()) : 0;
}
cfg_ugt_group_operation *cfg_ugt_get_group_operation(const cfg_template *record, int32_t index) noexcept {
  const auto *slot = record ? tw::slot_at(record->group_operations, index) : nullptr;
  return slot ? slot->get() : nullptr;
}
void cfg_ugt_clear_group_operations(cfg_template *record) noexcept {
  if (record) record->group_operations.clear();
}

int cfg_ugt_add_membership_user(cfg_template *record, const char *name) noexcept {
  return record && name && record->membership_users.append(name);
}
int32_t cfg_ugt_get_membership_users_count(const cfg_template *record) noexcept {
  return record ? record->membership_users.count() : 0;
}
const char *cfg_ugt_get_membership_user(const cfg_template *record, int32_t index) noexcept {
  return record ? record->membership_users.at(index) : nullptr;
}
void cfg_ugt_clear_membership_users(cfg_template *record) noexcept {
  if (record) record->membership_users.clear();
}

int cfg_ugt_add_membership_group(cfg_template *record, const char *name) noexcept {
  return record && name && record->membership_groups.append(name);
}
int32_t cfg_ugt_get_membership_groups_count(const cfg_template *record) noexcept {
  return record ? record->membership_groups.count() : 0;
}
const char *cfg_ugt_get_membership_group(const cfg_template *record, int32_t index) noexcept {
  return record ? record->membership_groups.at(index) : nullptr;
}
void cfg_ugt_clear_membership_groups(cfg_template *record) noexcept {
  if (record) record->membership_groups.clear();
}

int32_t cfg_ugt_get_add_membership(const cfg_template *record) noexcept {
  return tw::get<&cfg_template::add_membership>(record);
}
int cfg_ugt_set_add_membership(cfg_template *record, int32_t add) noexcept {
  return tw::set<&cfg_template::add_membership>(record, add);
}
