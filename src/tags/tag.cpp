// Tags: a name, and the IDs of the values that it can have.
#include "tags/tag.hpp"

#include "record/boundary.hpp"
#include "record/engine.hpp"
#include "record/memory_watch.hpp"
#include "record/tables.hpp"

namespace {

constexpr auto name_row = tw::string_row<&cfg_tag::name>("name");
constexpr tw::load_list load_keys({mandatory(name_row)});
constexpr tw::store_list save_keys({name_row});

constexpr tw::named_list lists[] = {{"tag load", load_keys}, {"tag save", save_keys}};

}  // namespace

const tw::tables tw::tag_tables = lists;

// Values that are pending are not the tag's yet: they are told once they are committed.
std::unique_ptr<cfg_tag> tw::load_tag(cfg *store, cfg_elem *elem) noexcept {
  const memory_watch memory;
  auto tag = new_view<cfg_tag>(store, elem);
  if (!tag || !load(load_keys, *tag, elem)) return nullptr;
  if (!tag->values.append_ids(cfg_simple_get_mapelem(store, elem, "values"))) return nullptr;
  return memory.ran_short() ? nullptr : std::move(tag);
}

cfg_tag *cfg_tag_new(cfg *store, const char *name) noexcept {
  if (!store || !name) return nullptr;
  auto tag = tw::new_view<cfg_tag>(store);
  return tag && tag->name.set(name) ? tag.release() : nullptr;
}

cfg_tag *cfg_get_tag_by_id(cfg *store, const char *id) noexcept {
  return tw::load_tag(store, cfg_get_by_id(store, id)).release();
}

cfg_tag *cfg_get_tag_by_name(cfg *store, const char *name, int32_t type) noexcept {
  cfg_elem *list = cfg_get_by_path(store, cfg_tag_type_to_path(type));
  for (int32_t i = 0;; ++i) {
    auto tag = tw::load_tag(store, cfg_simple_get_listelem(store, list, i));
    if (!tag || tw::same(tag->name.c_str(), name)) return tag.release();
  }
}

int cfg_tag_save(cfg_tag *tag, int32_t type) noexcept {
  if (!tag || !tag->name) return 0;
  cfg_elem *elem =
      tag->uuid ? tw::element_of(*tag) : tw::append_new_element(*tag, cfg_tag_type_to_path(type));
  return elem && tw::store(save_keys, *tag, tag->cfg, elem);
}

int cfg_tag_delete(cfg *store, const cfg_tag *tag) noexcept {
  return tag && cfg_delete_element(store, cfg_get_by_id(store, tag->uuid.c_str()));
}

void cfg_tag_free(cfg_tag *tag) noexcept {
  if (!tag) return;
  // Whoever asked for tag_get_all_values() frees the array, after the tag.
  tag->values.leave_block();
  delete tag;
}

cfg *tag_get_config(const cfg_tag *tag) noexcept { return tag ? tag->cfg : nullptr; }
const char *tag_get_uuid(const cfg_tag *tag) noexcept { return tw::get<&cfg_tag::uuid>(tag); }

const char *tag_get_name(const cfg_tag *tag) noexcept { return tw::get<&cfg_tag::name>(tag); }
int tag_set_name(cfg_tag *tag, const char *name) noexcept { return tw::replace<&cfg_tag::name>(tag, name); }

int32_t tag_get_num_values(const cfg_tag *tag) noexcept { return tag ? tag->values.count() : 0; }
char **tag_get_all_values(const cfg_tag *tag) noexcept { return tag ? tag->values.texts() : nullptr; }
const char *tag_get_value(const cfg_tag *tag, int32_t index) noexcept {
  return tag ? tag->values.at(index) : nullptr;
}
cfg_tag_value *cfg_tag_get_value(const cfg_tag *tag, int32_t index) noexcept {
  return tag ? cfg_get_tag_value_by_id(tag->cfg, tag->values.at(index)) : nullptr;
}
