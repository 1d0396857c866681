// The name of a node's enrollment bundle, which its tags tell.
#include <twobject/node_tag.h>

#include "nodes/node.hpp"
#include "record/memory_watch.hpp"
#include "record/owned_tag.hpp"

namespace {

// The text of the value whose tag is named "Bundle"; of several the last.
tw::text bundle_of(cfg_node &node) noexcept {
  tw::text name;
  for (int32_t i = 0; i < cfg_node_get_tag_count(&node); ++i) {
    const tw::owned_tag_value value(cfg_node_get_tag(&node, i));
    const tw::owned_tag tag(cfg_tag_value_get_parent_tag(value.get()));
    if (tw::same(tag_get_name(tag.get()), "Bundle")) name.set(tag_value_get_value(value.get()));
  }
  return name;
}

}  // namespace

const char *cfg_node_get_enrollment_bundle(cfg_node *node) noexcept {
  if (!node) return nullptr;
  if (!node->enrollment_bundle) {
    const tw::memory_watch memory;
    tw::text name = bundle_of(*node);
    if (!name) name.set("Global");
    if (memory.ran_short()) return nullptr;
    node->enrollment_bundle = std::move(name);
  }
  return node->enrollment_bundle.c_str();
}
