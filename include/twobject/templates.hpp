/* The C++ face of templates and enrollment bundles. */
#ifndef TWOBJECT_TEMPLATES_HPP
#define TWOBJECT_TEMPLATES_HPP

#include <twobject/bundle.h>
#include <twobject/template.h>
#include <twobject/owner.hpp>
#include <twobject/tags.hpp>

namespace twobject {

/// A template with all that its type carries: no text of it lives on, other than after cfg_template_free().
using template_record = owner<cfg_template, cfg_template_dispose>;
using template_list = owner<cfg_template_list, cfg_template_list_free>;
using bundle_record = owner<cfg_bundle, cfg_bundle_free>;
using bundle_list = owner<cfg_bundle_list, cfg_bundle_list_free>;

/// Loads the templates of a list; NULL for one that is gone.
inline auto entries(const cfg_template_list *list) {
  return indexed(cfg_template_list_count(list),
                 [list](int32_t i) { return template_record(cfg_template_list_get_template(list, i)); });
}

/// Loads the bundles of a list; NULL for one that is gone.
inline auto entries(const cfg_bundle_list *list) {
  return indexed(cfg_bundle_list_count(list),
                 [list](int32_t i) { return bundle_record(cfg_bundle_list_get_bundle(list, i)); });
}

/// Loads the tag values that a bundle gives to nodes; NULL for a reference that leads nowhere.
inline auto automatic_tags(cfg_bundle *bundle) {
  return indexed(cfg_bundle_get_automatic_tag_count(bundle),
                 [bundle](int32_t i) { return tag_value_record(cfg_bundle_get_automatic_tag(bundle, i)); });
}

/// Loads the templates of a bundle; NULL for one that is gone.
inline auto templates(cfg_bundle *bundle) {
  return indexed(cfg_bundle_get_template_count(bundle),
                 [bundle](int32_t i) { return template_record(cfg_bundle_get_template(bundle, i)); });
}

/// The IDs of a bundle's nodes, as the search service finds them; borrowed from the bundle, as is `secctxt`.
inline auto node_ids(cfg_bundle *bundle, const char *secctxt) {
  return indexed(cfg_bundle_get_node_count(bundle, secctxt), [bundle, secctxt](int32_t i) {
    return text_of(cfg_bundle_get_node_id(bundle, i, secctxt));
  });
}

/// The token of nodes that ask to be enrolled without a bundle; NULL without.
inline secret_text request_token(cfg *store) noexcept {
  return secret_text(cfg_bundle_get_global_request_token(store));
}

}  // namespace twobject

#endif
