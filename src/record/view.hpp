// What every record begins with, and what records do with their elements and collections.
#ifndef TW_RECORD_VIEW_HPP
#define TW_RECORD_VIEW_HPP

#include <twconfig/element.h>

#include <memory>
#include <new>

#include "record/text.hpp"

namespace tw {

// The head of every record: the store handle that it came from (borrowed) and the ID of its element, NULL
// until there is one.
struct object_view {
  ::cfg *cfg = nullptr;
  text uuid;
};

// A new, empty record that works on `store`, which may be NULL. NULL without memory.
template <class Record>
std::unique_ptr<Record> new_view(::cfg *store) noexcept {
  std::unique_ptr<Record> view(new (std::nothrow) Record);
  if (view) view->cfg = store;
  return view;
}

// Makes `id` the element's present ID. False without memory or for an element that is gone.
bool take_uuid(text &id, cfg_elem *elem) noexcept;

// What every loader begins with: a new record that has the element's ID. NULL without an element or memory.
template <class Record>
std::unique_ptr<Record> new_view(::cfg *store, cfg_elem *elem) noexcept {
  if (!elem) return nullptr;
  std::unique_ptr<Record> view = new_view<Record>(store);
  if (view && !take_uuid(view->uuid, elem)) return nullptr;
  return view;
}

// The record's element, or NULL. IDs that a commit has replaced are still understood.
inline cfg_elem *element_of(const object_view &view) noexcept {
  return cfg_get_by_id(view.cfg, view.uuid.c_str());
}

// The record's ID as the store now names it: once a commit has replaced a provisional ID, the record takes
// the final one. NULL for a record without element.
const char *refreshed_uuid(object_view &view) noexcept;

// Gives a new record its element: an empty map that joins a list, or the list at `path`, as a pending entry.
// NULL, with the record unchanged, when the list is missing or nothing can be appended.
cfg_elem *append_new_element(object_view &view, cfg_elem *list) noexcept;
cfg_elem *append_new_element(object_view &view, const char *path) noexcept;
// The same, but the entry is one of the list's at once: reads within the same edit see it.
cfg_elem *add_new_element(object_view &view, const char *path) noexcept;

// The map at `path`; when it is absent, a new one attached to the root under `path` as one literal key, dots
// included. Existing stores have such keys, and path look-up finds them under the same spelling.
cfg_elem *map_at(cfg *store, const char *path) noexcept;

// The map under a key of another map, made and attached when the key is absent. NULL when it cannot be made,
// when the key holds something that cannot be opened, and when memory is too short to tell.
cfg_elem *need_map(cfg *store, cfg_elem *parent, const char *key) noexcept;
// The same for a list.
cfg_elem *need_list(cfg *store, cfg_elem *parent, const char *key) noexcept;

// Number of committed entries of the list at `path`. The two failures differ, and callers tell them apart: 0
// without such an element, -1 when it is there and its size cannot be read, or memory is too short to tell.
int32_t collection_count(cfg *store, const char *path) noexcept;

// The committed entry at a 0-based index of the list at `path`, or NULL.
cfg_elem *collection_entry(cfg *store, const char *path, int32_t index) noexcept;

}  // namespace tw

#endif
