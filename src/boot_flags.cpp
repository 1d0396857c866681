// Boot flags: named switches that the appliance looks at when it starts.
#include <twobject/boot_flag.h>

#include "record/boundary.hpp"
#include "record/engine.hpp"
#include "record/memory_watch.hpp"
#include "record/tables.hpp"
#include "record/text_search.hpp"
#include "record/view.hpp"

struct cfg_boot_flag : tw::object_view {
  tw::text name;
  tw::text flag_type;
  int32_t is_set = 0;
};

namespace {

using flag = cfg_boot_flag;

constexpr char flags[] = "boot_flags";

// Whatever a key holds, the flag can be loaded.
constexpr auto name = lenient(tw::string_row<&flag::name>("name"));
constexpr auto flag_type = lenient(tw::string_row<&flag::flag_type>("flag_type"));
constexpr auto is_set = lenient(tw::bool_row<&flag::is_set>("is_set"));

constexpr tw::load_list load_flag({name, flag_type, is_set});
constexpr tw::store_list save_flag({name, flag_type, is_set});

constexpr tw::named_list lists[] = {{"boot flag load", load_flag}, {"boot flag save", save_flag}};

constexpr const char *name_keys[] = {"name"};
constexpr cfg_keyset by_name{name_keys, 1};

// Keeps a text as it is given; unlike other setters, NULL keeps the old one and "" stays "".
template <auto Member>
int replace(flag *record, const char *value) noexcept {
  if (!record) return 0;
  return !value || (record->*Member).assign(value, std::strlen(value));
}

}  // namespace

const tw::tables tw::boot_flag_tables = lists;

cfg_boot_flag *cfg_boot_flag_new(cfg *store, const char *name_, const char *type) noexcept {
  if (!name_ || !type) return nullptr;
  auto record = tw::new_view<flag>(store);
  if (!record || !replace<&flag::name>(record.get(), name_) || !replace<&flag::flag_type>(record.get(), type))
    return nullptr;
  record->is_set = 1;
  return record.release();
}

cfg_boot_flag *cfg_boot_flag_get_by_id(cfg *store, const char *id) noexcept {
  cfg_elem *elem = cfg_get_by_id(store, id);
  auto record = tw::new_view<flag>(store, elem);
  if (!record) return nullptr;
  // An entry that is no map has no keys to read.
  return cfg_elem_kind(elem) != CFG_MAP || tw::load(load_flag, *record, elem) ? record.release() : nullptr;
}

cfg_boot_flag *cfg_boot_flag_get_by_name(cfg *store, const char *wanted) noexcept {
  cfg_elem *elem = tw::find_by_text(store, flags, by_name, wanted);
  tw::text id;
  return tw::take_uuid(id, elem) ? cfg_boot_flag_get_by_id(store, id.c_str()) : nullptr;
}

const char *cfg_boot_flag_get_uuid(const cfg_boot_flag *record) noexcept {
  return tw::get<&flag::uuid>(record);
}

const char *cfg_boot_flag_get_name(const cfg_boot_flag *record) noexcept {
  return tw::get<&flag::name>(record);
}
int cfg_boot_flag_set_name(cfg_boot_flag *record, const char *text) noexcept {
  return replace<&flag::name>(record, text);
}

const char *cfg_boot_flag_get_flag_type(const cfg_boot_flag *record) noexcept {
  return tw::get<&flag::flag_type>(record);
}
int cfg_boot_flag_set_flag_type(cfg_boot_flag *record, const char *text) noexcept {
  return replace<&flag::flag_type>(record, text);
}

int32_t cfg_boot_flag_get_isset(const cfg_boot_flag *record) noexcept {
  return tw::get<&flag::is_set>(record);
}
int cfg_boot_flag_set_isset(cfg_boot_flag *record, int32_t value) noexcept {
  return tw::set<&flag::is_set>(record, value);
}

int cfg_boot_flag_save(cfg_boot_flag *record) noexcept {
  if (!record || !record->name || !record->flag_type) return 0;
  cfg_elem *elem = record->uuid ? tw::element_of(*record) : tw::add_new_element(*record, flags);
  return elem && tw::store(save_flag, *record, record->cfg, elem);
}

void cfg_boot_flag_free(cfg_boot_flag *record) noexcept { delete record; }
