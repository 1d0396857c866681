// The values of tags.
#include "record/boundary.hpp"
#include "record/engine.hpp"
#include "record/tables.hpp"
#include "tags/tag.hpp"

namespace {

constexpr auto value_row = tw::string_row<&cfg_tag_value::value>("value");
constexpr tw::load_list load_keys({mandatory(value_row)});
constexpr tw::store_list save_keys({value_row});

constexpr tw::named_list lists[] = {{"tag value load", load_keys}, {"tag value save", save_keys}};

std::unique_ptr<cfg_tag_value> load_value(cfg *store, cfg_elem *elem) noexcept {
  auto value = tw::new_view<cfg_tag_value>(store, elem);
  return value && tw::load(load_keys, *value, elem) ? std::move(value) : nullptr;
}

}  // namespace

const tw::tables tw::tag_value_tables = lists;

cfg_tag_value *cfg_tag_value_new(cfg *store, const char *text) noexcept {
  if (!text) return nullptr;
  auto value = tw::new_view<cfg_tag_value>(store);
  return value && value->value.set(text) ? value.release() : nullptr;
}

cfg_tag_value *cfg_get_tag_value_by_id(cfg *store, const char *id) noexcept {
  return load_value(store, cfg_get_by_id(store, id)).release();
}

// The store's list is asked, not the record's IDs: who made the tag finds the values that it was given since.
cfg_tag_value *cfg_get_tag_value_by_name(cfg *store, const cfg_tag *tag, const char *text) noexcept {
  if (!tag) return nullptr;
  cfg_elem *values = cfg_simple_get_mapelem(store, cfg_get_by_id(store, tag->uuid.c_str()), "values");
  for (int32_t i = 0;; ++i) {
    auto value = load_value(store, cfg_simple_get_listelem(store, values, i));
    if (!value || tw::same(value->value.c_str(), text)) return value.release();
  }
}

// The value's list and the tag that holds it are the two elements above.
cfg_tag *cfg_tag_value_get_parent_tag(const cfg_tag_value *value) noexcept {
  if (!value) return nullptr;
  cfg_elem *list = cfg_get_parent_elem(value->cfg, tw::element_of(*value));
  return tw::load_tag(value->cfg, cfg_get_parent_elem(value->cfg, list)).release();
}

int cfg_tag_value_save(const cfg_tag *tag, cfg_tag_value *value) noexcept {
  if (!tag || !value || !value->value) return 0;
  cfg_elem *values = tw::need_list(value->cfg, tw::element_of(*tag), "values");
  if (!values) return 0;
  cfg_elem *elem = value->uuid ? tw::element_of(*value) : tw::append_new_element(*value, values);
  return elem && tw::store(save_keys, *value, value->cfg, elem);
}

int cfg_tag_value_delete(cfg *store, const cfg_tag_value *value) noexcept {
  return value && cfg_delete_element(store, cfg_get_by_id(store, value->uuid.c_str()));
}

void cfg_tag_value_free(cfg_tag_value *value) noexcept { delete value; }

cfg *tag_value_get_config(const cfg_tag_value *value) noexcept { return value ? value->cfg : nullptr; }
const char *tag_value_get_uuid(const cfg_tag_value *value) noexcept {
  return tw::get<&cfg_tag_value::uuid>(value);
}

const char *tag_value_get_value(const cfg_tag_value *value) noexcept {
  return tw::get<&cfg_tag_value::value>(value);
}
int tag_value_set_value(cfg_tag_value *value, const char *text) noexcept {
  return tw::replace<&cfg_tag_value::value>(value, text);
}
