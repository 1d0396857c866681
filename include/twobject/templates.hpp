/* The C++ face of templates and enrollment bundles. */
#ifndef TWOBJECT_TEMPLATES_HPP
#define TWOBJECT_TEMPLATES_HPP

#include <twobject/bundle.h>
#include <twobject/template.h>
#include <twobject/template_auth.h>
#include <twobject/template_script.h>
#include <twobject/template_users_groups.h>
#include <twobject/owner.hpp>
#include <twobject/tags.hpp>

namespace twobject {

/// Frees a user or a group of a users-groups template with its block, which the C interface's functions keep.
inline void release_user_operation(cfg_ugt_user_operation *user) noexcept {
  cfg_ugt_free_user_operation(user);
  release_heap(user);
}
inline void release_group_operation(cfg_ugt_group_operation *group) noexcept {
  cfg_ugt_free_group_operation(group);
  release_heap(group);
}

/// A user or a group that no template has: one that is new, or was read by itself.
using user_operation_record = owner<cfg_ugt_user_operation, release_user_operation>;
using group_operation_record = owner<cfg_ugt_group_operation, release_group_operation>;

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

/* Users and groups of a users-groups template, which stay the template's; names of members, nothing for an
 * entry that is no text. */

inline auto user_operations(const cfg_template *record) {
  return indexed(cfg_ugt_get_user_operations_count(record),
                 [record](int32_t i) { return cfg_ugt_get_user_operation(record, i); });
}
inline auto group_operations(const cfg_template *record) {
  return indexed(cfg_ugt_get_group_operations_count(record),
                 [record](int32_t i) { return cfg_ugt_get_group_operation(record, i); });
}
inline auto membership_users(const cfg_template *record) {
  return indexed(cfg_ugt_get_membership_users_count(record),
                 [record](int32_t i) { return text_of(cfg_ugt_get_membership_user(record, i)); });
}
inline auto membership_groups(const cfg_template *record) {
  return indexed(cfg_ugt_get_membership_groups_count(record),
                 [record](int32_t i) { return text_of(cfg_ugt_get_membership_group(record, i)); });
}
/// The groups of such a user, and the roles of such a group.
inline auto groups(const cfg_ugt_user_operation *user) {
  return indexed(cfg_ugt_user_operation_get_groups_count(user),
                 [user](int32_t i) { return text_of(cfg_ugt_user_operation_get_group(user, i)); });
}
inline auto roles(const cfg_ugt_group_operation *group) {
  return indexed(cfg_ugt_group_operation_get_roles_count(group),
                 [group](int32_t i) { return text_of(cfg_ugt_group_operation_get_role(group, i)); });
}

/// Gives a user or a group to a template. On failure the owner keeps it.
inline bool add_user_operation(cfg_template *record, user_operation_record &user) noexcept {
  if (!cfg_ugt_add_user_operation(record, user.get())) return false;
  static_cast<void>(user.release());
  return true;
}
inline bool add_group_operation(cfg_template *record, group_operation_record &group) noexcept {
  if (!cfg_ugt_add_group_operation(record, group.get())) return false;
  static_cast<void>(group.release());
  return true;
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
