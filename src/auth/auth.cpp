// The appliance's authentication settings: the record of the map "auth".
#include "auth/auth.hpp"

#include "record/boundary.hpp"
#include "record/engine.hpp"
#include "record/memory_watch.hpp"
#include "record/tables.hpp"

namespace {

constexpr auto mode = tw::string_row<&cfg_auth::mode>("mode");

// A mode that is no text does not keep anyone from loading the settings and setting it right.
constexpr tw::load_list load_mode({lenient(mode)});
constexpr tw::store_list save_mode({mode});

constexpr tw::named_list lists[] = {{"auth load", load_mode}, {"auth save", save_mode}};

}  // namespace

const tw::tables tw::auth_tables = lists;

cfg_auth *cfg_get_auth(cfg *store) noexcept {
  cfg_elem *elem = cfg_get_by_path(store, "auth");
  auto auth = elem ? tw::new_view<cfg_auth>(store) : nullptr;
  return auth && tw::load(load_mode, *auth, elem) && tw::load_protocols(*auth, elem) ? auth.release()
                                                                                     : nullptr;
}

int cfg_auth_update(cfg_auth *auth) noexcept {
  if (!auth) return 0;
  cfg_elem *elem = tw::need_map(auth->cfg, cfg_root(auth->cfg), "auth");
  return elem && tw::store(save_mode, *auth, auth->cfg, elem) && tw::store_protocols(*auth, elem);
}

void cfg_auth_free(cfg_auth *auth) noexcept { delete auth; }

const char *cfg_auth_get_mode(const cfg_auth *auth) noexcept { return tw::get<&cfg_auth::mode>(auth); }
int cfg_auth_set_mode(cfg_auth *auth, const char *text) noexcept {
  return tw::replace<&cfg_auth::mode>(auth, text);
}

const char *cfg_auth_get_radiusPassword(const cfg_auth *auth) noexcept {
  return tw::get<&cfg_auth::radius_password>(auth);
}
int cfg_auth_set_radiusPassword(cfg_auth *auth, const char *password) noexcept {
  return tw::replace<&cfg_auth::radius_password>(auth, password);
}

const char *cfg_auth_get_tacacsPassword(const cfg_auth *auth) noexcept {
  return tw::get<&cfg_auth::tacacs_password>(auth);
}
int cfg_auth_set_tacacsPassword(cfg_auth *auth, const char *password) noexcept {
  return tw::replace<&cfg_auth::tacacs_password>(auth, password);
}

const char *cfg_auth_get_tacacsMethod(const cfg_auth *auth) noexcept {
  return tw::get<&cfg_auth::tacacs_method>(auth);
}
int cfg_auth_set_tacacsMethod(cfg_auth *auth, const char *method) noexcept {
  return tw::replace<&cfg_auth::tacacs_method>(auth, method);
}

const char *cfg_auth_get_tacacsService(const cfg_auth *auth) noexcept {
  return tw::get<&cfg_auth::tacacs_service>(auth);
}
int cfg_auth_set_tacacsService(cfg_auth *auth, const char *service) noexcept {
  return tw::replace<&cfg_auth::tacacs_service>(auth, service);
}

const char *cfg_auth_get_ldapBaseDN(const cfg_auth *auth) noexcept {
  return tw::get<&cfg_auth::ldap_base_dn>(auth);
}
int cfg_auth_set_ldapBaseDN(cfg_auth *auth, const char *dn) noexcept {
  return tw::replace<&cfg_auth::ldap_base_dn>(auth, dn);
}

const char *cfg_auth_get_ldapBindDN(const cfg_auth *auth) noexcept {
  return tw::get<&cfg_auth::ldap_bind_dn>(auth);
}
int cfg_auth_set_ldapBindDN(cfg_auth *auth, const char *dn) noexcept {
  return tw::replace<&cfg_auth::ldap_bind_dn>(auth, dn);
}

const char *cfg_auth_get_ldapUsernameAttribute(const cfg_auth *auth) noexcept {
  return tw::get<&cfg_auth::ldap_username_attribute>(auth);
}
int cfg_auth_set_ldapUsernameAttribute(cfg_auth *auth, const char *attribute) noexcept {
  return tw::replace<&cfg_auth::ldap_username_attribute>(auth, attribute);
}

const char *cfg_auth_get_ldapGroupMembershipAttribute(const cfg_auth *auth) noexcept {
  return tw::get<&cfg_auth::ldap_group_membership_attribute>(auth);
}
int cfg_auth_set_ldapGroupMembershipAttribute(cfg_auth *auth, const char *attribute) noexcept {
  return tw::replace<&cfg_auth::ldap_group_membership_attribute>(auth, attribute);
}

const char *cfg_auth_get_ldapBindPassword(const cfg_auth *auth) noexcept {
  return tw::get<&cfg_auth::ldap_bind_password>(auth);
}
int cfg_auth_set_ldapBindPassword(cfg_auth *auth, const char *password) noexcept {
  return tw::replace<&cfg_auth::ldap_bind_password>(auth, password);
}
