// Lists of references to other elements, within a record's element.
#ifndef TW_RECORD_REFERENCES_HPP
#define TW_RECORD_REFERENCES_HPP

#include <twconfig/element.h>
#include <twconfig/read.h>

#include "record/boundary.hpp"

namespace tw {

// Shows the ID that each committed reference of a list leads to, in list order, to `take(id)`; entries that
// are no references are passed over. What `take` throws counts as false, which ends the reading with false.
template <class Take>
bool each_reference(cfg *store, const cfg_value &list, Take take) noexcept {
  struct reading {
    Take take;
    bool complete = true;
  } state{std::move(take)};
  const auto visit = [](void *context, const cfg_value *entry) {
    auto &self = *static_cast<reading *>(context);
    if (entry->kind != CFG_REFERENCE) return 1;
    self.complete = guarded([&] { return static_cast<bool>(self.take(entry->data)); });
    return self.complete ? 1 : 0;
  };
  return cfg_value_scan(store, &list, visit, &state) && state.complete;
}

// Appends a reference that the list's readers see in this very edit: what is loaded and saved again before
// the commit keeps it. False for a NULL ID.
inline bool add_reference(cfg *store, cfg_elem *list, const char *id) noexcept {
  cfg_elem *reference = cfg_new_reference(store, id);
  return reference && cfg_add_listelem(store, list, reference);
}

}  // namespace tw

#endif
