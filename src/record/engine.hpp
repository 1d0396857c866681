// The engine that runs over rows.
#ifndef TW_RECORD_ENGINE_HPP
#define TW_RECORD_ENGINE_HPP

#include "record/row.hpp"

namespace tw {

// The untyped engine; use the templates below, which keep rows and records of one type together.
bool load_all(const load_rows &list, void *record, cfg_elem *map) noexcept;
bool load_all_below(const load_rows &list, void *record, cfg_elem *map, const char *child) noexcept;
bool load_all_within(const load_rows &list, void *record, cfg *store, const cfg_value &map) noexcept;
bool load_values(const load_rows &list, void *record, const cfg_value *values) noexcept;
bool store_all(const store_rows &list, const void *record, cfg *store, cfg_elem *map) noexcept;
void store_each_of(const store_rows &list, const void *record, cfg *store, cfg_elem *map) noexcept;

// Reads every key of the list from the map, in one pass, and gives it to its row in list order. False when
// the map is none, a row's presence rule is broken or a row fails; the record is then half filled: free it.
template <class Record, std::size_t N>
bool load(const load_list<Record, N> &list, Record &record, cfg_elem *map) noexcept {
  return load_all(list, &record, map);
}

// The same from the map under a key of `map`, without a handle for it.
template <class Record, std::size_t N>
bool load_below(const load_list<Record, N> &list, Record &record, cfg_elem *map, const char *child) noexcept {
  return load_all_below(list, &record, map, child);
}

// The same from a map that was itself read as a value, of a record that keeps its handle as `cfg`.
template <class Record, std::size_t N>
bool load_within(const load_list<Record, N> &list, Record &record, const cfg_value &map) noexcept {
  return load_all_within(list, &record, record.cfg, map);
}

// The same from values that were read with the list's keys.
template <class Record, std::size_t N>
bool load_from(const load_list<Record, N> &list, Record &record, const cfg_value *values) noexcept {
  return load_values(list, &record, values);
}

// A map within the map: its keys have a list of their own, which fills the same record. Read only; a record
// that keeps its handle as `cfg` can have it.
template <const auto &List, class Record, std::size_t N>
constexpr row<Record> map_row_of(const load_list<Record, N> &, const char *key) {
  return {{key, CFG_MAP, presence::optional,
           [](void *record, const cfg_value &map) {
             return load_all_within(List, record, static_cast<Record *>(record)->cfg, map);
           },
           nullptr, "has its own list"}};
}
template <const auto &List>
constexpr auto map_row(const char *key) {
  return map_row_of<List>(List, key);
}

// Writes every row of the list to the map, in list order, up to the first write that fails.
template <class Record, std::size_t N>
bool store(const store_list<Record, N> &list, const Record &record, cfg *store, cfg_elem *map) noexcept {
  return store_all(list, &record, store, map);
}

// The same, but also writes the rows behind a write that fails. For records that are saved as far as the
// store takes them, which is then not told.
template <class Record, std::size_t N>
void store_each(const store_list<Record, N> &list, const Record &record, cfg *store, cfg_elem *map) noexcept {
  store_each_of(list, &record, store, map);
}

}  // namespace tw

#endif
