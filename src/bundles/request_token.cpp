// The token of nodes that ask to be enrolled without a bundle: one for the whole appliance.
#include <twconfig/element.h>

#include "bundles/bundle.hpp"

namespace {

constexpr char key[] = "request_token";

cfg_elem *enrollment(cfg *store) noexcept { return cfg_get_by_path(store, "enrollment"); }

}  // namespace

char *cfg_bundle_get_global_request_token(cfg *store) noexcept {
  char *token = nullptr;
  return cfg_map_get_string(store, enrollment(store), key, &token) ? token : nullptr;
}

int cfg_bundle_set_global_request_token(cfg *store, const char *token) noexcept {
  return cfg_map_set_string(store, enrollment(store), key, token);
}

int cfg_bundle_delete_global_request_token(cfg *store) noexcept {
  return cfg_map_delete_key(store, enrollment(store), key);
}
