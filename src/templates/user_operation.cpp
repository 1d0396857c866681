// One user of a users-groups template.
#include "record/boundary.hpp"
#include "record/engine.hpp"
#include "record/memory_watch.hpp"
#include "record/tables.hpp"
#include "record/texts_row.hpp"
#include "templates/operations.hpp"

namespace {

using user = cfg_ugt_user_operation;

constexpr auto username = lenient(tw::string_row<&user::username>("username"));
constexpr auto description = lenient(tw::string_row<&user::description>("description"));
constexpr auto password = lenient(tw::string_row<&user::password>("password"));
constexpr auto disabled = lenient(tw::nonzero_row<&user::disabled>("disabled"));
constexpr auto groups = lenient(tw::texts_row<&user::groups>("groups"));

constexpr tw::load_list load_everything({username, description, password, disabled, groups});
constexpr tw::store_list save_everything({username, description, password, disabled, groups});

constexpr tw::named_list lists[] = {
    {"user operation load", load_everything},
    {"user operation save", save_everything},
};

}  // namespace

const tw::tables tw::user_operation_tables = lists;

cfg_ugt_user_operation *cfg_ugt_new_user_operation() noexcept {
  return tw::new_operation<user>(nullptr).release();
}

cfg_ugt_user_operation *cfg_ugt_load_user_operation_from_config(cfg *store, cfg_elem *map) noexcept {
  if (!store || !map) return nullptr;
  const tw::memory_watch memory;
  auto record = tw::new_operation<user>(store);
  if (record) tw::load(load_everything, *record, map);
  return memory.ran_short() ? nullptr : record.release();
}

cfg_elem *cfg_ugt_save_user_operation_to_config(cfg *store, const cfg_ugt_user_operation *record) noexcept {
  if (!store || !record) return nullptr;
  const tw::memory_watch memory;
  cfg_elem *map = cfg_new_map(store);
  tw::store_each(save_everything, *record, store, map);
  return memory.ran_short() ? nullptr : map;
}

// Its block stays: the pointer is the caller's, who may fill the record again.
void cfg_ugt_free_user_operation(cfg_ugt_user_operation *record) noexcept {
  if (record) *record = {};
}

const char *cfg_ugt_user_operation_get_username(const cfg_ugt_user_operation *record) noexcept {
  return tw::get<&user::username>(record);
}
int cfg_ugt_user_operation_set_username(cfg_ugt_user_operation *record, const char *name) noexcept {
  return tw::replace<&user::username>(record, name);
}

const char *cfg_ugt_user_operation_get_description(const cfg_ugt_user_operation *record) noexcept {
  return tw::get<&user::description>(record);
}
int cfg_ugt_user_operation_set_description(cfg_ugt_user_operation *record, const char *text) noexcept {
  return tw::replace<&user::description>(record, text);
}

const char *cfg_ugt_user_operation_get_password(const cfg_ugt_user_operation *record) noexcept {
  return tw::get<&user::password>(record);
}
int cfg_ugt_user_operation_set_password(cfg_ugt_user_operation *record, const char *text) noexcept {
  return tw::replace<&user::password>(record, text);
}

int32_t cfg_ugt_user_operation_get_disabled(const cfg_ugt_user_operation *record) noexcept {
  return tw::get<&user::disabled>(record);
}
int cfg_ugt_user_operation_set_disabled(cfg_ugt_user_operation *record, int32_t value) noexcept {
  return tw::set<&user::disabled>(record, value);
}

int32_t cfg_ugt_user_operation_get_groups_count(const cfg_ugt_user_operation *record) noexcept {
  return record ? record->groups.count() : 0;
}
const char *cfg_ugt_user_operation_get_group(const cfg_ugt_user_operation *record, int32_t index) noexcept {
  return record ? record->groups.at(index) : nullptr;
}
int cfg_ugt_user_operation_add_group(cfg_ugt_user_operation *record, const char *group) noexcept {
  return record && group && record->groups.append(group);
}
void cfg_ugt_user_operation_clear_groups(cfg_ugt_user_operation *record) noexcept {
  if (record) record->groups.clear();
}
