// The nodes of a bundle: those that carry its name as value of the tag "Bundle".
#include <twobject/search.h>

#include "bundles/bundle.hpp"
#include "record/owned_condition.hpp"

namespace {

const tw::text_array &nodes_of(cfg_bundle &bundle, const char *secctxt) noexcept {
  if (bundle.nodes.count() == 0) cfg_bundle_init_nodes(&bundle, secctxt);
  return bundle.nodes;
}

}  // namespace

int cfg_bundle_init_nodes(cfg_bundle *bundle, const char *secctxt) noexcept {
  if (!bundle) return 0;
  bundle->nodes.clear();
  const tw::owned_condition tagged(
      cfg_new_string_condition("tag:Bundle", CFG_OP_EQUAL, bundle->name.c_str()));
  if (!tagged) return 0;
  tw::text search;
  search.adopt(twsearch_create("nodes", tagged.get(), 0, secctxt));
  if (!search) return 0;
  char **ids = nullptr;
  int32_t matches = 0;
  const int32_t found = twsearch_fetch(search.c_str(), 0, 0, &ids, &matches, 0, secctxt);
  if (found > 0) bundle->nodes.adopt(ids, found);
  return found >= 0;
}

int32_t cfg_bundle_get_node_count(cfg_bundle *bundle, const char *secctxt) noexcept {
  return bundle ? nodes_of(*bundle, secctxt).count() : 0;
}

const char *cfg_bundle_get_node_id(cfg_bundle *bundle, int32_t index, const char *secctxt) noexcept {
  return bundle ? nodes_of(*bundle, secctxt).at(index) : nullptr;
}
