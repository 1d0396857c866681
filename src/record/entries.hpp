// Records that hold the entries of a list: one entry, one slot.
#ifndef TW_RECORD_ENTRIES_HPP
#define TW_RECORD_ENTRIES_HPP

#include <twconfig/read.h>

#include <vector>

#include "record/boundary.hpp"
#include "record/memory_watch.hpp"

namespace tw {

// Shows each committed entry of the list under a key of a map to `take(id, values)`, in list order; `values`
// is NULL for an entry that is no map, which leaves an empty slot in its place. What `take` throws counts as
// false, which ends the reading. False only then and when memory is short: a key that holds no list has no
// entries.
template <class Take>
bool each_entry(cfg_elem *map, const char *key, const cfg_keyset &keys, Take take) noexcept {
  struct reading {
    Take take;
    bool complete = true;
  } state{std::move(take)};
  const memory_watch memory;
  cfg_child_scan(
      map, key, &keys,
      [](void *context, const char *id, const cfg_value *values) {
        auto &self = *static_cast<reading *>(context);
        self.complete = guarded([&] { return static_cast<bool>(self.take(id, values)); });
        return self.complete ? 1 : 0;
      },
      &state);
  return state.complete && !memory.ran_short();
}

// The same for a list that was read as a value, whose entries' IDs nobody asks for: shows `take(values)`.
template <class Take>
bool each_map(cfg *store, const cfg_value &list, const cfg_keyset &keys, Take take) noexcept {
  struct reading {
    Take take;
    bool complete = true;
  } state{std::move(take)};
  const memory_watch memory;
  cfg_value_scan_maps(
      store, &list, &keys,
      [](void *context, const cfg_value *values) {
        auto &self = *static_cast<reading *>(context);
        self.complete = guarded([&] { return static_cast<bool>(self.take(values)); });
        return self.complete ? 1 : 0;
      },
      &state);
  return state.complete && !memory.ran_short();
}

// Adds an empty slot. The lists of a record are short: the first slot makes room for a few.
template <class Slots>
auto &add_slot(Slots &slots) {
  if (slots.capacity() == 0) slots.reserve(4);
  return slots.emplace_back();
}

// The slot at a 0-based index as C callers give it; NULL outside the slots.
template <class Slots>
auto *slot_at(Slots &slots, std::int32_t index) noexcept {
  return index >= 0 && static_cast<std::size_t>(index) < slots.size()
             ? &slots[static_cast<std::size_t>(index)]
             : nullptr;
}

}  // namespace tw

#endif
