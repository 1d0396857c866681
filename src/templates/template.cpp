// Templates: what they have in common. What a type carries beside that is set up, read and written where the
// type is asked for here.
#include "templates/template.hpp"

#include <twobject/template_auth.h>
#include <twobject/template_script.h>
#include <twobject/template_users_groups.h>

#include "record/boundary.hpp"
#include "record/engine.hpp"
#include "record/memory_watch.hpp"
#include "record/tables.hpp"

namespace {

constexpr const char *type_texts[] = {"dummy", "users_groups", "ports", "network", "auth", "script"};
constexpr tw::enumeration types{
    .texts = type_texts, .first = CFG_TEMPLATE_DUMMY, .unknown = CFG_TEMPLATE_INVALID};

// Bundles and pushes refer to templates by ID. One that is damaged is loaded with what can be read of it, so
// that it can be shown, repaired or deleted.
constexpr auto name = lenient(tw::string_row<&cfg_template::name>("name"));
constexpr auto description = lenient(tw::string_row<&cfg_template::description>("description"));
constexpr auto type = lenient(tw::enum_row<&cfg_template::template_type, types>("template_type"));
constexpr auto dummy_field = lenient(tw::string_row<&cfg_template::dummy_field>("dummy_field"));

constexpr tw::load_list load_common({name, description, type});
constexpr tw::load_list load_dummy({dummy_field});
constexpr tw::store_list save_common({name, description, type});
constexpr tw::store_list save_dummy({dummy_field});

constexpr tw::named_list lists[] = {
    {"template load, every type", load_common},
    {"template load, dummy", load_dummy},
    {"template save, every type", save_common},
    {"template save, dummy", save_dummy},
};

// NULL is ignored, other than "": callers pass on what they were given, and NULL is "no change" to them.
template <auto Member>
int set_text(cfg_template *record, const char *text) noexcept {
  return text && tw::replace<Member>(record, text);
}

bool set_up_type(cfg_template &record) noexcept {
  switch (record.template_type) {
    case CFG_TEMPLATE_USERS_GROUPS:
      return cfg_ugt_new_setup(&record);
    case CFG_TEMPLATE_AUTH:
      return cfg_auth_new_setup(&record);
    case CFG_TEMPLATE_SCRIPT:
      return cfg_script_template_new_setup(&record);
    default:
      return true;
  }
}

bool load_type(cfg_template &record, cfg_elem *elem) noexcept {
  switch (record.template_type) {
    case CFG_TEMPLATE_DUMMY:
      return tw::load(load_dummy, record, elem);
    case CFG_TEMPLATE_USERS_GROUPS:
      return cfg_ugt_load_from_config(&record, elem);
    case CFG_TEMPLATE_AUTH:
      return cfg_auth_load_from_config(&record, elem);
    case CFG_TEMPLATE_SCRIPT:
      return cfg_script_template_load_from_config(&record, elem);
    default:
      return true;
  }
}

void save_type(cfg_template &record, cfg_elem *elem) noexcept {
  switch (record.template_type) {
    case CFG_TEMPLATE_DUMMY:
      tw::store_each(save_dummy, record, record.cfg, elem);
      break;
    case CFG_TEMPLATE_USERS_GROUPS:
      cfg_ugt_save_to_config(&record, elem);
      break;
    case CFG_TEMPLATE_AUTH:
      cfg_auth_save_to_config(&record, elem);
      break;
    case CFG_TEMPLATE_SCRIPT:
      cfg_script_template_save_to_config(&record, elem);
      break;
    default:
      break;
  }
}

// Lets go of what callers were given one by one, but not of the block that it stood in, which none was.
template <class Operation>
void leave(tw::operations<Operation> &entries) noexcept {
  for (auto &entry : entries) static_cast<void>(entry.release());
  tw::operations<Operation>().swap(entries);
}

}  // namespace

const tw::tables tw::template_tables = lists;

const char *cfg_template_type_enum_to_string(int32_t value) noexcept { return types.to_string(value); }
int32_t cfg_template_type_string_to_enum(const char *text) noexcept { return types.from_string(text); }

cfg_template *cfg_template_new(cfg *store, const char *text, int32_t value) noexcept {
  if (!text) return nullptr;
  auto record = tw::new_view<cfg_template>(store);
  if (!record || !record->name.set(text)) return nullptr;
  record->template_type = value;
  return set_up_type(*record) ? record.release() : nullptr;
}

cfg_template *cfg_template_get_by_id(cfg *store, const char *id) noexcept {
  const tw::memory_watch memory;
  cfg_elem *elem = cfg_get_by_id(store, id);
  auto record = tw::new_view<cfg_template>(store, elem);
  if (!record) return nullptr;
  record->template_type = CFG_TEMPLATE_INVALID;
  if (!tw::load(load_common, *record, elem) || !load_type(*record, elem)) return nullptr;
  return memory.ran_short() ? nullptr : record.release();
}

// A save goes on behind a value that the store does not take, and tells only of memory that ran short:
// callers save a template that someone else has deleted without being told.
int cfg_template_save(cfg_template *record) noexcept {
  if (!record) return 0;
  const tw::memory_watch memory;
  cfg_elem *elem = record->uuid ? tw::element_of(*record) : tw::append_new_element(*record, "templates");
  if (!record->uuid) return 0;
  tw::store_each(save_common, *record, record->cfg, elem);
  save_type(*record, elem);
  return !memory.ran_short();
}

int cfg_template_delete(cfg_template *record) noexcept {
  return record && cfg_delete_element(record->cfg, tw::element_of(*record));
}

void cfg_template_free(cfg_template *record) noexcept {
  if (!record) return;
  record->name.clear();
  leave(record->user_operations);
  leave(record->group_operations);
  record->membership_users.leave_texts();
  record->membership_groups.leave_texts();
  // No destructor: callers keep the ID, the description and what the type carries beyond the record's life,
  // without having copied them.
  ::operator delete(record);
}

void cfg_template_dispose(cfg_template *record) noexcept { delete record; }

const char *cfg_template_get_uuid(cfg_template *record) noexcept {
  return record ? tw::refreshed_uuid(*record) : nullptr;
}

const char *cfg_template_get_name(const cfg_template *record) noexcept {
  return tw::get<&cfg_template::name>(record);
}
int cfg_template_set_name(cfg_template *record, const char *text) noexcept {
  return set_text<&cfg_template::name>(record, text);
}

const char *cfg_template_get_description(const cfg_template *record) noexcept {
  return tw::get<&cfg_template::description>(record);
}
int cfg_template_set_description(cfg_template *record, const char *text) noexcept {
  return set_text<&cfg_template::description>(record, text);
}

int32_t cfg_template_get_type(const cfg_template *record) noexcept {
  return record ? record->template_type : CFG_TEMPLATE_INVALID;
}
int cfg_template_set_type(cfg_template *record, int32_t value) noexcept {
  return tw::set<&cfg_template::template_type>(record, value);
}

const char *cfg_dummy_template_get_dummy_field(const cfg_template *record) noexcept {
  return tw::get<&cfg_template::dummy_field>(record);
}
int cfg_dummy_template_set_dummy_field(cfg_template *record, const char *text) noexcept {
  return set_text<&cfg_template::dummy_field>(record, text);
}
