// The tag values that nodes are given when they are enrolled with a bundle.
#include "bundles/bundle.hpp"

int32_t cfg_bundle_get_automatic_tag_count(cfg_bundle *bundle) noexcept {
  return bundle ? bundle->automatic_tags.count(*bundle) : 0;
}

const char *cfg_bundle_get_automatic_tag_ref_uuid(cfg_bundle *bundle, int32_t index) noexcept {
  return bundle ? bundle->automatic_tags.id(*bundle, index) : nullptr;
}

cfg_tag_value *cfg_bundle_get_automatic_tag(cfg_bundle *bundle, int32_t index) noexcept {
  return bundle ? bundle->automatic_tags.value(*bundle, index) : nullptr;
}

cfg_tag_value *cfg_bundle_get_automatic_tag_by_ref_uuid(cfg_bundle *bundle, const char *ref) noexcept {
  return bundle ? bundle->automatic_tags.value_behind(*bundle, ref) : nullptr;
}

const char *cfg_bundle_get_tag_ref_uuid_by_value(cfg_bundle *bundle, const cfg_tag_value *value) noexcept {
  return bundle ? bundle->automatic_tags.find(*bundle, value) : nullptr;
}

int cfg_bundle_save_automatic_tag(cfg_bundle *bundle, const cfg_tag_value *value) noexcept {
  return bundle && bundle->automatic_tags.append(*bundle, value);
}

int cfg_bundle_update_automatic_tag(cfg *store, const char *ref, const cfg_tag_value *value) noexcept {
  return tw::update_tag_ref(store, ref, value);
}

int cfg_bundle_delete_automatic_tag(cfg *store, const char *ref) noexcept {
  return tw::delete_tag_ref(store, ref);
}
