// Lists of records: the IDs of all entries of a collection, each loaded when it is asked for.
#ifndef TW_RECORD_ID_LIST_HPP
#define TW_RECORD_ID_LIST_HPP

#include <twconfig/element.h>

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

}  // namespace tw

#endif
