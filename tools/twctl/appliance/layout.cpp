#include "appliance/layout.hpp"

#include <fmt/format.h>

#include <span>
#include <string>

#include "cli/failure.hpp"

namespace twctl {

namespace {

bool add(cfg *store, cfg_elem *parent, const char *key, cfg_kind kind) {
  if (kind == CFG_MAP) return cfg_add_mapelem(store, parent, key, cfg_new_map(store));
  if (kind == CFG_LIST) return cfg_add_mapelem(store, parent, key, cfg_new_list(store));
  return cfg_map_set_bool(store, parent, key, 0);
}

}  // namespace

void lay_out(cfg *store) {
  size_t count = 0;
  const cfg_place *places = cfg_base_layout(&count);
  for (const cfg_place &place : std::span(places, count)) {
    const std::string path = place.path;
    const size_t dot = path.rfind('.');
    cfg_elem *parent =
        dot == std::string::npos ? cfg_root(store) : cfg_get_by_path(store, path.substr(0, dot).c_str());
    const std::string key = dot == std::string::npos ? path : path.substr(dot + 1);
    if (!add(store, parent, key.c_str(), place.kind))
      throw store_failure(store, fmt::format("cannot add '{}' to the new store", path));
  }
}

}  // namespace twctl
