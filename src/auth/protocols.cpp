// The settings of the three protocols: one map each, "radius", "tacacs" and "ldap".
#include "auth/auth.hpp"
#include "record/engine.hpp"
#include "record/memory_watch.hpp"
#include "record/tables.hpp"

namespace {

using auth = cfg_auth;

constexpr auto radius_password = tw::string_row<&auth::radius_password>("password");

constexpr auto tacacs_password = tw::string_row<&auth::tacacs_password>("password");
constexpr auto tacacs_method = tw::string_row<&auth::tacacs_method>("method");
constexpr auto tacacs_service = tw::string_row<&auth::tacacs_service>("service");

constexpr auto base_dn = tw::string_row<&auth::ldap_base_dn>("baseDN");
constexpr auto bind_dn = tw::string_row<&auth::ldap_bind_dn>("bindDN");
constexpr auto username_attribute = tw::string_row<&auth::ldap_username_attribute>("usernameAttribute");
constexpr auto membership_attribute =
    tw::string_row<&auth::ldap_group_membership_attribute>("groupMembershipAttribute");
constexpr auto bind_password = tw::string_row<&auth::ldap_bind_password>("bindPassword");

// Settings must load whatever is in them: without them nobody could set them right.
constexpr tw::load_list load_radius({lenient(radius_password)});
constexpr tw::load_list load_tacacs({lenient(tacacs_password), lenient(tacacs_method),
                                     lenient(tacacs_service)});
constexpr tw::load_list load_ldap({lenient(base_dn), lenient(bind_dn), lenient(username_attribute),
                                   lenient(membership_attribute), lenient(bind_password)});

constexpr tw::store_list save_tacacs({tacacs_password, tacacs_method, tacacs_service});
constexpr tw::store_list save_radius({radius_password});
constexpr tw::store_list save_ldap({base_dn, bind_dn, username_attribute, membership_attribute,
                                    bind_password});

constexpr tw::named_list lists[] = {
    {"auth load, \"radius\"", load_radius}, {"auth load, \"tacacs\"", load_tacacs},
    {"auth load, \"ldap\"", load_ldap},     {"auth save, \"tacacs\"", save_tacacs},
    {"auth save, \"radius\"", save_radius}, {"auth save, \"ldap\"", save_ldap},
};

void load_servers(cfg *store, cfg_elem *map, const char *path, tw::text_array &out) noexcept {
  out.append_ids(cfg_get_child_by_path(store, map, path));
}

}  // namespace

const tw::tables tw::auth_protocol_tables = lists;

bool tw::load_protocols(auth &settings, cfg_elem *map) noexcept {
  if (cfg_elem_kind(map) != CFG_MAP) return false;
  const memory_watch memory;
  cfg *store = settings.cfg;
  load_servers(store, map, "radius.authenticationServers", settings.radius_authentication_servers);
  load_servers(store, map, "radius.accountingServers", settings.radius_accounting_servers);
  load_servers(store, map, "tacacs.authenticationServers", settings.tacacs_authentication_servers);
  load_servers(store, map, "ldap.authenticationServers", settings.ldap_authentication_servers);
  load_below(load_radius, settings, map, "radius");
  load_below(load_tacacs, settings, map, "tacacs");
  load_below(load_ldap, settings, map, "ldap");
  return !memory.ran_short();
}

// A protocol without a map is one that nobody logs in by: no reason to leave the others unwritten or to fail.
// Only memory that ran out is, because then there may well be a map.
bool tw::store_protocols(const auth &settings, cfg_elem *map) noexcept {
  const memory_watch memory;
  cfg *store = settings.cfg;
  const auto save = [&](const char *key, const auto &rows) {
    cfg_elem *protocol = need_map(store, map, key);
    return !protocol || tw::store(rows, settings, store, protocol);
  };
  return save("tacacs", save_tacacs) && save("radius", save_radius) && save("ldap", save_ldap) &&
         !memory.ran_short();
}
