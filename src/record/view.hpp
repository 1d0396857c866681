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

// The same for an element that was just found; the ID may stand in a block.
inline bool take_uuid(text &id, cfg_elem *elem, text_block &block) noexcept {
  // A handle reads as the ID that it was given out with, the present one unless it was a provisional one.
  const char *chars = reinterpret_cast<const char *>(elem);
  return *chars == '{' ? take_uuid(id, elem) : id.assign(chars, std::strlen(chars), &block);
}

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

// Gives a new record its element: one that was just made joins a list as a pending entry, and the record
// takes its ID. NULL, with the record unchanged, when list or element is missing or it cannot be appended.
cfg_elem *append_element(object_view &view, cfg_elem *list, cfg_elem *elem) noexcept;

// The same with an empty map, for a list or the list at `path`.
cfg_elem *append_new_element(object_view &view, cfg_elem *list) noexcept;
cfg_elem *append_new_element(object_view &view, const char *path) noexcept;
// The same, but the entry is one of the list's at once: reads within the same edit see it.
cfg_elem *add_new_element(object_view &view, const char *path) noexcept;

// The map at `path`; when it is absent, a new one attached to the root under `path` as one literal key, dots
// included. Existing stores have such keys, and path look-up finds them under the same spelling.
cfg_elem *map_at(cfg *store, const char *path) noexcept;

// What most saves begin with: the record's element, or a new one in the list at `path` for a new record. NULL
// when the element is gone or cannot be made.
cfg_elem *element_to_save(object_view &view, const char *path) noexcept;

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
