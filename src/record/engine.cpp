#include "record/engine.hpp"

namespace tw {

bool load_all(const load_rows &list, void *record, cfg_elem *map) noexcept {
  cfg_value values[max_rows];
  return cfg_map_read(map, &list.keys, values) && load_values(list, record, values);
}

bool load_all_below(const load_rows &list, void *record, cfg_elem *map, const char *child) noexcept {
  cfg_value values[max_rows];
  return cfg_child_read(map, child, &list.keys, values) && load_values(list, record, values);
}

bool load_all_within(const load_rows &list, void *record, cfg *store, const cfg_value &map) noexcept {
  cfg_value values[max_rows];
  return cfg_value_read(store, &map, &list.keys, values) && load_values(list, record, values);
}

bool load_values(const load_rows &list, void *record, const cfg_value *values) noexcept {
  for (std::size_t i = 0; i < list.count; ++i) {
    const row_data &row = list.rows[i];
    if (values[i].kind == row.kind) {
      if (!row.load(record, values[i])) return false;
    } else if (row.need == presence::mandatory ||
               (row.need == presence::optional && values[i].kind != CFG_NONE)) {
      return false;
    }
  }
  return true;
}

bool store_all(const store_rows &list, const void *record, cfg *store, cfg_elem *map) noexcept {
  for (std::size_t i = 0; i < list.count; ++i) {
    const row_data &row = list.rows[i];
    if (!row.store(store, map, row.key, record)) return false;
  }
  return true;
}

void store_each_of(const store_rows &list, const void *record, cfg *store, cfg_elem *map) noexcept {
  for (std::size_t i = 0; i < list.count; ++i) list.rows[i].store(store, map, list.rows[i].key, record);
}

}  // namespace tw
