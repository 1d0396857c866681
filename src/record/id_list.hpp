// Lists of records: the IDs of all entries of a collection, each loaded when it is asked for.
#ifndef TW_RECORD_ID_LIST_HPP
#define TW_RECORD_ID_LIST_HPP

#include <twconfig/element.h>

#include <cstdint>
#include <memory>
#include <new>

#include "record/memory_watch.hpp"
#include "record/text_array.hpp"

namespace tw {

// What the list record of a family derives from. It does not notice later changes in the store.
struct id_list {
  ::cfg *cfg = nullptr;
  text_array ids;
};

// A list of the committed entries of the collection at `path`, none when there is no such collection. NULL
// only when memory is short.
template <class List>
std::unique_ptr<List> new_id_list(::cfg *store, const char *path) noexcept {
  const memory_watch memory;
  std::unique_ptr<List> list(new (std::nothrow) List);
  if (!list) return nullptr;
  list->cfg = store;
  list->ids.append_ids(cfg_get_by_path(store, path));
  return memory.ran_short() ? nullptr : std::move(list);
}

inline std::int32_t entry_count(const id_list *list) noexcept { return list ? list->ids.count() : 0; }

// The record behind the ID at an index, read by its family's look-up. NULL outside the list.
template <class Record>
Record *load_entry(const id_list *list, std::int32_t index,
                   Record *(*by_id)(::cfg *, const char *)) noexcept {
  return list ? by_id(list->cfg, list->ids.at(index)) : nullptr;
}

}  // namespace tw

#endif
