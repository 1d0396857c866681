// Applying an enrollment bundle to the node of an enrolment.
#include <twobject/bundle.h>
#include <twobject/node_tag.h>

#include "nodes/enrollment.hpp"
#include "nodes/node.hpp"
#include "record/memory_watch.hpp"
#include "record/owned_tag.hpp"

namespace {

// The value of the tag "Bundle" that stands for the bundle, made and saved when there is none. Like every
// look-up of a tag, this sees what is committed.
tw::owned_tag_value value_of(cfg *store, const cfg_bundle *bundle) noexcept {
  tw::owned_tag tag(cfg_get_tag_by_name(store, "Bundle", CFG_TAG_NODE));
  if (!tag) {
    tag.reset(cfg_tag_new(store, "Bundle"));
    cfg_tag_save(tag.get(), CFG_TAG_NODE);
  }
  const char *name = cfg_bundle_get_name(bundle);
  tw::owned_tag_value value(cfg_get_tag_value_by_name(store, tag.get(), name));
  if (!value) {
    value.reset(cfg_tag_value_new(store, name));
    cfg_tag_value_save(tag.get(), value.get());
  }
  return value;
}

}  // namespace

int cfg_enrollment_set_bundle(cfg_enrollment *enrollment, cfg_bundle *bundle) noexcept {
  if (!enrollment || !bundle) return 0;
  const tw::memory_watch memory;
  cfg *store = enrollment->cfg;
  cfg_elem *elem = cfg_get_by_id(store, cfg_enrollment_get_uuid(enrollment));
  const std::unique_ptr<cfg_node> node = tw::load_node(store, elem);
  if (!node) return 0;
  cfg_node_set_approved(node.get(), cfg_bundle_get_auto_approve(bundle));
  cfg_node_set_bundle_id(node.get(), cfg_bundle_get_uuid(bundle));
  // A node that was just enrolled has no list of tags yet.
  tw::need_list(store, elem, "tags");
  for (int32_t i = 0; i < cfg_bundle_get_automatic_tag_count(bundle); ++i) {
    const tw::owned_tag_value value(cfg_bundle_get_automatic_tag(bundle, i));
    cfg_node_save_tag(node.get(), value.get());
  }
  cfg_node_save_tag(node.get(), value_of(store, bundle).get());
  return cfg_node_save(node.get()) && !memory.ran_short();
}
