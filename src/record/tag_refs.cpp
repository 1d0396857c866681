#include "record/tag_refs.hpp"

#include <twconfig/read.h>

#include "record/memory_watch.hpp"
#include "record/owned_tag.hpp"

namespace tw {

namespace {

cfg_tag_value *load_behind(cfg *store, const char *id) noexcept {
  cfg_value reference;
  if (!cfg_elem_read(cfg_get_by_id(store, id), &reference) || reference.kind != CFG_REFERENCE) return nullptr;
  return cfg_get_tag_value_by_id(store, reference.data);
}

}  // namespace

const text_array &tag_refs::read(const object_view &owner) noexcept {
  if (ids_.count() > 0) return ids_;
  const memory_watch memory;
  cfg_elem *list = cfg_simple_get_mapelem(owner.cfg, element_of(owner), key_);
  text_array ids;
  if (ids.append_ids(list) && ids.append_pending_ids(list) && !memory.ran_short()) ids_ = std::move(ids);
  return ids_;
}

cfg_tag_value *tag_refs::value(const object_view &owner, std::int32_t index) noexcept {
  return load_behind(owner.cfg, id(owner, index));
}

cfg_tag_value *tag_refs::value_behind(const object_view &owner, const char *id) noexcept {
  const text_array &ids = read(owner);
  for (std::int32_t i = 0; i < ids.count(); ++i) {
    if (same(ids.at(i), id)) return load_behind(owner.cfg, id);
  }
  return nullptr;
}

const char *tag_refs::find(const object_view &owner, const cfg_tag_value *value) noexcept {
  const memory_watch memory;
  const text_array &ids = read(owner);
  for (std::int32_t i = 0; i < ids.count() && !memory.ran_short(); ++i) {
    const owned_tag_value behind(load_behind(owner.cfg, ids.at(i)));
    if (same(tag_value_get_uuid(behind.get()), tag_value_get_uuid(value))) return ids.at(i);
  }
  return nullptr;
}

int tag_refs::append(const object_view &owner, const cfg_tag_value *value) const noexcept {
  cfg_elem *list = cfg_simple_get_mapelem(owner.cfg, element_of(owner), key_);
  if (!list) return 0;
  return cfg_append_future_listelem(owner.cfg, list, cfg_new_reference(owner.cfg, tag_value_get_uuid(value)));
}

int update_tag_ref(cfg *store, const char *id, const cfg_tag_value *value) noexcept {
  return cfg_set_reference(store, cfg_get_by_id(store, id), tag_value_get_uuid(value));
}

// Only references: an ID that got mixed up must not take a node or a tag with it.
int delete_tag_ref(cfg *store, const char *id) noexcept {
  cfg_elem *reference = cfg_get_by_id(store, id);
  return cfg_elem_kind(reference) == CFG_REFERENCE && cfg_delete_element(store, reference);
}

}  // namespace tw
