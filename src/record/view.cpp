#include "record/view.hpp"

#include "record/memory_watch.hpp"

namespace tw {

bool take_uuid(text &id, cfg_elem *elem) noexcept {
  char *chars = nullptr;
  if (!cfg_elem_uuid(elem, &chars)) return false;
  id.adopt(chars);
  return true;
}

const char *refreshed_uuid(object_view &view) noexcept {
  if (!view.uuid) return nullptr;
  text present;
  if (take_uuid(present, element_of(view)) && !same(present.c_str(), view.uuid.c_str()))
    view.uuid = std::move(present);
  return view.uuid.c_str();
}

cfg_elem *append_new_element(object_view &view, const char *path) noexcept {
  return append_new_element(view, cfg_get_by_path(view.cfg, path));
}

namespace {

using append_entry = int (*)(cfg *, cfg_elem *, cfg_elem *);

cfg_elem *new_entry(object_view &view, cfg_elem *list, append_entry append) noexcept {
  if (!list) return nullptr;
  cfg_elem *elem = cfg_new_map(view.cfg);
  text id;
  if (!take_uuid(id, elem) || !append(view.cfg, list, elem)) return nullptr;
  view.uuid = std::move(id);
  return elem;
}

}  // namespace

cfg_elem *append_new_element(object_view &view, cfg_elem *list) noexcept {
  return new_entry(view, list, cfg_append_future_listelem);
}

cfg_elem *add_new_element(object_view &view, const char *path) noexcept {
  return new_entry(view, cfg_get_by_path(view.cfg, path), cfg_add_listelem);
}

cfg_elem *map_at(cfg *store, const char *path) noexcept {
  const memory_watch memory;
  if (cfg_elem *map = cfg_get_by_path(store, path)) return map;
  if (memory.ran_short()) return nullptr;  // or a new map would take the place of what is there
  cfg_elem *map = cfg_new_map(store);
  return map && cfg_add_mapelem(store, cfg_root(store), path, map) ? map : nullptr;
}

namespace {

cfg_elem *need(cfg *store, cfg_elem *parent, const char *key, cfg_elem *(*make)(cfg *)) noexcept {
  const memory_watch memory;
  if (cfg_get_mapelem(parent, key)) return cfg_simple_get_mapelem(store, parent, key);
  if (memory.ran_short()) return nullptr;
  cfg_elem *made = make(store);
  return made && cfg_add_mapelem(store, parent, key, made) ? made : nullptr;
}

}  // namespace

cfg_elem *need_map(cfg *store, cfg_elem *parent, const char *key) noexcept {
  return need(store, parent, key, cfg_new_map);
}

cfg_elem *need_list(cfg *store, cfg_elem *parent, const char *key) noexcept {
  return need(store, parent, key, cfg_new_list);
}

int32_t collection_count(cfg *store, const char *path) noexcept {
  const memory_watch memory;
  cfg_elem *list = cfg_get_by_path(store, path);
  if (!list) return memory.ran_short() ? -1 : 0;
  int32_t size = 0;
  return cfg_list_size(list, &size) ? size : -1;
}

cfg_elem *collection_entry(cfg *store, const char *path, int32_t index) noexcept {
  cfg_elem *list = cfg_get_by_path(store, path);
  return list && index >= 0 ? cfg_simple_get_listelem(store, list, index) : nullptr;
}

}  // namespace tw
