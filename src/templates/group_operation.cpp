// One group of a users-groups template.
#include "record/boundary.hpp"
#include "record/engine.hpp"
#include "record/memory_watch.hpp"
#include "record/tables.hpp"
#include "record/texts_row.hpp"
#include "templates/operations.hpp"

namespace {

using group = cfg_ugt_group_operation;

constexpr auto groupname = lenient(tw::string_row<&group::groupname>("groupname"));
constexpr auto description = lenient(tw::string_row<&group::description>("description"));
constexpr auto roles = lenient(tw::texts_row<&group::roles>("roles"));

constexpr tw::load_list load_everything({groupname, description, roles});
constexpr tw::store_list save_everything({groupname, description, roles});

constexpr tw::named_list lists[] = {
    {"group operation load", load_everything},
    {"group operation save", save_everything},
};

}  // namespace

const tw::tables tw::group_operation_tables = lists;

cfg_ugt_group_operation *cfg_ugt_new_group_operation() noexcept {
  return tw::new_operation<group>(nullptr).release();
}

cfg_ugt_group_operation *cfg_ugt_load_group_operation_from_config(cfg *store, cfg_elem *map) noexcept {
  if (!store || !map) return nullptr;
  const tw::memory_watch memory;
  auto record = tw::new_operation<group>(store);
  if (record) tw::load(load_everything, *record, map);
  return memory.ran_short() ? nullptr : record.release();
}

cfg_elem *cfg_ugt_save_group_operation_to_config(cfg *store, const cfg_ugt_group_operation *record) noexcept {
  if (!store || !record) return nullptr;
  const tw::memory_watch memory;
  cfg_elem *map = cfg_new_map(store);
  tw::store_each(save_everything, *record, store, map);
  return memory.ran_short() ? nullptr : map;
}

// Its block stays: the pointer is the caller's, who may fill the record again.
void cfg_ugt_free_group_operation(cfg_ugt_group_operation *record) noexcept {
  if (record) *record = {};
}

const char *cfg_ugt_group_operation_get_groupname(const cfg_ugt_group_operation *record) noexcept {
  return tw::get<&group::groupname>(record);
}
int cfg_ugt_group_operation_set_groupname(cfg_ugt_group_operation *record, const char *name) noexcept {
  return tw::replace<&group::groupname>(record, name);
}

const char *cfg_ugt_group_operation_get_description(const cfg_ugt_group_operation *record) noexcept {
  return tw::get<&group::description>(record);
}
int cfg_ugt_group_operation_set_description(cfg_ugt_group_operation *record, const char *text) noexcept {
  return tw::replace<&group::description>(record, text);
}

int32_t cfg_ugt_group_operation_get_roles_count(const cfg_ugt_group_operation *record) noexcept {
  return record ? record->roles.count() : 0;
}
const char *cfg_ugt_group_operation_get_role(const cfg_ugt_group_operation *record, int32_t index) noexcept {
  return record ? record->roles.at(index) : nullptr;
}
int cfg_ugt_group_operation_add_role(cfg_ugt_group_operation *record, const char *role) noexcept {
  return record && role && record->roles.append(role);
}
void cfg_ugt_group_operation_clear_roles(cfg_ugt_group_operation *record) noexcept {
  if (record) record->roles.clear();
}
