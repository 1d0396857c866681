// A node's tags: references to tag values.
#include <twobject/node_tag.h>

#include "nodes/node.hpp"

int32_t cfg_node_get_tag_count(cfg_node *node) noexcept { return node ? node->tag_refs.count(*node) : 0; }

cfg_tag_value *cfg_node_get_tag(cfg_node *node, int32_t index) noexcept {
  return node ? node->tag_refs.value(*node, index) : nullptr;
}

const char *cfg_node_get_tag_ref_uuid(cfg_node *node, int32_t index) noexcept {
  return node ? node->tag_refs.id(*node, index) : nullptr;
}

cfg_tag_value *cfg_node_get_tag_by_ref_uuid(cfg_node *node, const char *ref) noexcept {
  return node ? node->tag_refs.value_behind(*node, ref) : nullptr;
}

const char *cfg_node_get_tag_ref_uuid_by_value(cfg_node *node, const cfg_tag_value *value) noexcept {
  return node ? node->tag_refs.find(*node, value) : nullptr;
}

int cfg_node_save_tag(cfg_node *node, const cfg_tag_value *value) noexcept {
  return node && node->tag_refs.append(*node, value);
}

int cfg_node_update_tag(cfg *store, const char *ref, const cfg_tag_value *value) noexcept {
  return tw::update_tag_ref(store, ref, value);
}

int cfg_node_delete_tag(cfg *store, const char *ref) noexcept { return tw::delete_tag_ref(store, ref); }
