// The list of all bundles.
#include "bundles/bundle.hpp"
#include "record/id_list.hpp"

struct cfg_bundle_list : tw::id_list {};

cfg_bundle_list *cfg_bundle_list_new(cfg *store) noexcept {
  return tw::new_id_list<cfg_bundle_list>(store, "enrollment.bundles").release();
}

int32_t cfg_bundle_list_count(const cfg_bundle_list *list) noexcept { return list ? list->ids.count() : 0; }

cfg_bundle *cfg_bundle_list_get_bundle(const cfg_bundle_list *list, int32_t index) noexcept {
  return list ? cfg_bundle_get_by_id(list->cfg, list->ids.at(index)) : nullptr;
}

void cfg_bundle_list_free(cfg_bundle_list *list) noexcept { delete list; }
