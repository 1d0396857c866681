// The name of a node's enrollment bundle, which its tags tell.
//
// Tags have no records yet, so this file follows the references in the store itself; it becomes a loop over
// the node's tag values once they have.
#include <twconfig/read.h>

#include "nodes/node.hpp"
#include "record/memory_watch.hpp"

namespace {

// The text under a key of a map; NULL when it is no string.
const char *text_of(cfg_elem *map, const cfg_keyset &key) noexcept {
  cfg_value value;
  return cfg_map_read(map, &key, &value) && value.kind == CFG_STRING ? value.data : nullptr;
}

constexpr const char *value_key[] = {"value"};
constexpr const char *name_key[] = {"name"};
constexpr cfg_keyset value_text{value_key, 1};
constexpr cfg_keyset tag_name{name_key, 1};

// Follows a reference to its tag value and, when the tag above that is named "Bundle", takes the value's
// text. A later match replaces an earlier one.
bool take_bundle(cfg *store, cfg_elem *reference, tw::text &name) noexcept {
  cfg_value target;
  if (!cfg_elem_read(reference, &target) || target.kind != CFG_REFERENCE) return true;
  cfg_elem *value = cfg_get_by_id(store, target.data);
  cfg_elem *tag = cfg_get_parent_elem(store, cfg_get_parent_elem(store, value));
  const char *bundle = text_of(value, value_text);
  if (!bundle || !tw::same(text_of(tag, tag_name), "Bundle")) return true;
  return name.assign(bundle, std::strlen(bundle));
}

// The tags as they will be after the commit: the committed references first, the pending ones behind them.
bool walk_tags(cfg *store, cfg_elem *tags, tw::text &name) noexcept {
  int32_t size = 0;
  if (cfg_list_size(tags, &size)) {
    for (int32_t i = 0; i < size; ++i) {
      if (!take_bundle(store, cfg_simple_get_listelem(store, tags, i), name)) return false;
    }
  }
  if (cfg_list_future_size(tags, &size)) {
    for (int32_t i = 0; i < size; ++i) {
      if (!take_bundle(store, cfg_get_future_listelem(tags, i), name)) return false;
    }
  }
  return true;
}

}  // namespace

const char *cfg_node_get_enrollment_bundle(cfg_node *node) noexcept {
  if (!node) return nullptr;
  if (!node->enrollment_bundle) {
    const tw::memory_watch memory;
    tw::text name;
    cfg_elem *tags = cfg_simple_get_mapelem(node->cfg, tw::element_of(*node), "tags");
    if (!walk_tags(node->cfg, tags, name) || memory.ran_short()) return nullptr;
    if (!name) name.set("Global");
    node->enrollment_bundle = std::move(name);
  }
  return node->enrollment_bundle.c_str();
}
