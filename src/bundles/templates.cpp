// The templates that are pushed to the nodes of a bundle.
#include <twconfig/read.h>

#include "bundles/bundle.hpp"
#include "record/memory_watch.hpp"

namespace {

// The ID that a reference leads to; NULL for anything else.
const char *target_of(cfg_elem *reference) noexcept {
  cfg_value value;
  return cfg_elem_read(reference, &value) && value.kind == CFG_REFERENCE ? value.data : nullptr;
}

bool read(cfg_bundle &bundle, tw::text_array &ids) noexcept {
  cfg_elem *list = cfg_simple_get_mapelem(bundle.cfg, tw::element_of(bundle), "templates");
  int32_t committed = 0, pending = 0;
  cfg_list_size(list, &committed);
  cfg_list_future_size(list, &pending);
  if (!ids.grow(committed) || !ids.grow(pending)) return false;
  for (int32_t i = 0; i < committed; ++i) {
    if (!ids.set(i, target_of(cfg_simple_get_listelem(bundle.cfg, list, i)))) return false;
  }
  // From the front again, unlike the automatic tags: callers find what was added last in the first places,
  // and the last places empty.
  for (int32_t i = 0; i < pending; ++i) {
    if (!ids.set(i, target_of(cfg_get_future_listelem(list, i)))) return false;
  }
  return true;
}

// The bundle's templates. "None" is not remembered, so that a bundle without templates sees those that it is
// given elsewhere.
const tw::text_array &templates_of(cfg_bundle &bundle) noexcept {
  if (bundle.templates.count() == 0) {
    const tw::memory_watch memory;
    tw::text_array ids;
    if (read(bundle, ids) && !memory.ran_short()) bundle.templates = std::move(ids);
  }
  return bundle.templates;
}

}  // namespace

bool tw::store_templates(const cfg_bundle &bundle, cfg_elem *elem) noexcept {
  cfg_elem *list = cfg_new_list(bundle.cfg);
  for (int32_t i = 0; i < bundle.templates.count(); ++i) {
    if (!cfg_add_listelem(bundle.cfg, list, cfg_new_reference(bundle.cfg, bundle.templates.at(i))))
      return false;
  }
  return cfg_add_mapelem(bundle.cfg, elem, "templates", list);
}

int32_t cfg_bundle_get_template_count(cfg_bundle *bundle) noexcept {
  return bundle ? templates_of(*bundle).count() : 0;
}

const char *cfg_bundle_get_template_uuid(cfg_bundle *bundle, int32_t index) noexcept {
  return bundle ? templates_of(*bundle).at(index) : nullptr;
}

cfg_template *cfg_bundle_get_template(cfg_bundle *bundle, int32_t index) noexcept {
  return bundle ? cfg_template_get_by_id(bundle->cfg, templates_of(*bundle).at(index)) : nullptr;
}

int cfg_bundle_clear_templates(cfg_bundle *bundle) noexcept {
  if (!bundle) return 0;
  bundle->templates.clear();
  return 1;
}

int cfg_bundle_add_template(cfg_bundle *bundle, const char *id) noexcept {
  return bundle && id && bundle->templates.append(id);
}
