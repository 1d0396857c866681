/* The C++ face of users, groups, roles, access-control lists and authentication. */
#ifndef TWOBJECT_ACCESS_HPP
#define TWOBJECT_ACCESS_HPP

#include <twobject/acl.h>
#include <twobject/auth.h>
#include <twobject/group.h>
#include <twobject/role.h>
#include <twobject/user.h>
#include <twobject/owner.hpp>

#include <string>
#include <vector>

namespace twobject {

using user_record = owner<cfg_user, cfg_user_free>;
using user_list = owner<cfg_user_list, cfg_user_list_free>;
/// A user who was added to the group and has no ID yet must end after it: the group then holds the user's
/// pointer.
using group_record = owner<cfg_group, cfg_group_free>;
using group_list = owner<cfg_group_list, cfg_group_list_free>;
using group_member_list = owner<cfg_group_member_list, cfg_group_member_list_free>;
using role_record = owner<cfg_role, cfg_role_free>;
using role_list = owner<cfg_role_list, cfg_role_list_free>;
using acl_record = owner<cfg_acl, cfg_acl_free>;
using auth_record = owner<cfg_auth, cfg_auth_free>;
using auth_server_record = owner<cfg_auth_server, cfg_auth_server_free>;

/* The records of lists, loaded; NULL for one that cannot be loaded any more. */

inline auto entries(const cfg_user_list *list) {
  return indexed(cfg_user_list_count(list),
                 [list](int32_t i) { return user_record(cfg_user_list_get_user(list, i)); });
}
inline auto entries(const cfg_group_list *list) {
  return indexed(cfg_group_list_count(list),
                 [list](int32_t i) { return group_record(cfg_group_list_get_group(list, i)); });
}
inline auto entries(const cfg_group_member_list *list) {
  return indexed(cfg_group_get_member_count(list),
                 [list](int32_t i) { return user_record(cfg_group_member_list_get_user(list, i)); });
}
inline auto entries(const cfg_role_list *list) {
  return indexed(cfg_role_list_count(list),
                 [list](int32_t i) { return role_record(cfg_role_list_get_role(list, i)); });
}

/// The IDs of the groups that a user is in: copies, because the record gives them in turn and not by number.
inline std::vector<std::string> group_ids(cfg_user *user) {
  std::vector<std::string> ids;
  for (int32_t left = cfg_user_get_groups_count(user); left > 0; --left)
    ids.emplace_back(cfg_user_get_group(user));
  return ids;
}

/* What a group's roles are called, as stored; NULL where the way to them is broken. */

inline heap_text global_role(const cfg_group *group) noexcept {
  return heap_text(cfg_group_get_global_roles(group));
}
inline heap_text smart_group_role(const cfg_group *group) noexcept {
  return heap_text(cfg_group_get_smart_group_roles(group));
}
/// ID of the smart group that the group's role is limited to.
inline heap_text smart_group(const cfg_group *group) noexcept {
  return heap_text(cfg_group_get_smart_group(group));
}

/* The servers of the settings' four lists, loaded; NULL for one that is gone. */

inline auto radius_authentication_servers(const cfg_auth *auth) {
  return indexed(cfg_auth_get_radiusAuthenticationServerCount(auth), [auth](int32_t i) {
    return auth_server_record(cfg_auth_get_radiusAuthenticationServer(auth, i));
  });
}
inline auto radius_accounting_servers(const cfg_auth *auth) {
  return indexed(cfg_auth_get_radiusAccountingServerCount(auth), [auth](int32_t i) {
    return auth_server_record(cfg_auth_get_radiusAccountingServer(auth, i));
  });
}
inline auto tacacs_authentication_servers(const cfg_auth *auth) {
  return indexed(cfg_auth_get_tacacsAuthenticationServerCount(auth), [auth](int32_t i) {
    return auth_server_record(cfg_auth_get_tacacsAuthenticationServer(auth, i));
  });
}
inline auto ldap_authentication_servers(const cfg_auth *auth) {
  return indexed(cfg_auth_get_ldapAuthenticationServerCount(auth), [auth](int32_t i) {
    return auth_server_record(cfg_auth_get_ldapAuthenticationServer(auth, i));
  });
}

}  // namespace twobject

#endif
