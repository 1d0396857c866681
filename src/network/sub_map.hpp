// The sub-maps of interfaces and connections: which of them a record needs depends on what it is.
#ifndef TW_NETWORK_SUB_MAP_HPP
#define TW_NETWORK_SUB_MAP_HPP

#include "record/engine.hpp"
#include "record/memory_watch.hpp"
#include "record/view.hpp"

namespace tw {

// The map under a key: opened where the key is there, made where it is not and the record needs it. NULL when
// the key holds no map, and when there is none to write.
inline cfg_elem *sub_map(cfg *store, cfg_elem *elem, const char *key, bool needed) noexcept {
  if (cfg_map_has(elem, key)) {
    cfg_elem *map = cfg_simple_get_mapelem(store, elem, key);
    return cfg_elem_kind(map) == CFG_MAP ? map : nullptr;
  }
  return needed ? need_map(store, elem, key) : nullptr;
}

// Writes a sub-map. One that the record does not need is written where it exists, which mostly deletes keys,
// and passed over where it does not. `map` receives it, or NULL.
template <class Record, std::size_t N>
bool store_sub_map(const store_list<Record, N> &list, const Record &record, cfg_elem *elem, const char *key,
                   bool needed, cfg_elem **map) noexcept {
  const memory_watch memory;
  *map = sub_map(record.cfg, elem, key, needed);
  if (!*map) return !needed && !memory.ran_short();
  return store(list, record, record.cfg, *map);
}

}  // namespace tw

#endif
