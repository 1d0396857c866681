// A node's own authentication settings: the map "auth".
#include <twobject/node_auth.h>

#include "nodes/node.hpp"
#include "record/boundary.hpp"
#include "record/engine.hpp"
#include "record/memory_watch.hpp"
#include "record/tables.hpp"

namespace {

using node = cfg_node;

constexpr auto method = lenient(tw::string_row<&node::auth_method>("auth_method"));
constexpr auto type = lenient(tw::string_row<&node::auth_type>("auth_type"));
constexpr auto remote_groups = lenient(tw::bool_row<&node::use_remote_groups>("use_remote_groups"));
constexpr auto radius_authentication_servers =
    lenient(tw::string_row<&node::radius_authentication_servers>("authenticationServers"));
constexpr auto radius_accounting_servers =
    lenient(tw::string_row<&node::radius_accounting_servers>("accountingServers"));
constexpr auto radius_password = lenient(tw::string_row<&node::radius_password>("password"));
constexpr auto tacacs_authentication_servers =
    lenient(tw::string_row<&node::tacacs_authentication_servers>("authenticationServers"));
constexpr auto tacacs_password = lenient(tw::string_row<&node::tacacs_password>("password"));
constexpr auto tacacs_method = lenient(tw::string_row<&node::tacacs_method>("method"));
constexpr auto tacacs_service = lenient(tw::string_row<&node::tacacs_service>("service"));
constexpr auto ldap_authentication_servers =
    lenient(tw::string_row<&node::ldap_authentication_servers>("authenticationServers"));
constexpr auto ldap_password = lenient(tw::string_row<&node::ldap_password>("password"));
constexpr auto ldap_base_dn = lenient(tw::string_row<&node::ldap_base_dn>("baseDN"));
constexpr auto ldap_bind_dn = lenient(tw::string_row<&node::ldap_bind_dn>("bindDN"));
constexpr auto ldap_username_attribute =
    lenient(tw::string_row<&node::ldap_username_attribute>("usernameAttribute"));
constexpr auto ldap_group_attribute =
    lenient(tw::string_row<&node::ldap_group_attribute>("groupMembershipAttribute"));
constexpr auto ldap_bind_password = lenient(tw::string_row<&node::ldap_bind_password>("bindPassword"));

constexpr tw::load_list load_radius({radius_authentication_servers, radius_accounting_servers,
                                     radius_password});
constexpr tw::load_list load_tacacs({tacacs_authentication_servers, tacacs_password, tacacs_method,
                                     tacacs_service});
constexpr tw::load_list load_ldap({ldap_authentication_servers, ldap_password, ldap_base_dn, ldap_bind_dn,
                                   ldap_username_attribute, ldap_group_attribute, ldap_bind_password});
constexpr tw::load_list load_auth({method, type, remote_groups, lenient(tw::map_row<load_radius>("radius")),
                                   lenient(tw::map_row<load_tacacs>("tacacs")),
                                   lenient(tw::map_row<load_ldap>("ldap"))});

constexpr tw::store_list save_auth({method, type, remote_groups});
constexpr tw::store_list save_radius({radius_authentication_servers, radius_accounting_servers,
                                      radius_password});
constexpr tw::store_list save_tacacs({tacacs_authentication_servers, tacacs_password, tacacs_method,
                                      tacacs_service});
// The plain password is read and never written: the node made it, and nobody else may change it.
constexpr tw::store_list save_ldap({ldap_base_dn, ldap_bind_dn, ldap_authentication_servers,
                                    ldap_username_attribute, ldap_group_attribute, ldap_bind_password});

constexpr tw::named_list lists[] = {
    {"node auth load", load_auth},
    {"node auth load, \"radius\"", load_radius},
    {"node auth load, \"tacacs\"", load_tacacs},
    {"node auth load, \"ldap\"", load_ldap},
    {"node auth save", save_auth},
    {"node auth save, \"radius\"", save_radius},
    {"node auth save, \"tacacs\"", save_tacacs},
    {"node auth save, \"ldap\"", save_ldap},
};

// Writes a list to the map under a key, which is made when it is missing.
template <std::size_t N>
bool store_below(const tw::store_list<node, N> &list, const node &record, cfg_elem *map,
                 const char *key) noexcept {
  cfg_elem *child = tw::need_map(record.cfg, map, key);
  return child && tw::store(list, record, record.cfg, child);
}

}  // namespace

const tw::tables tw::node_auth_tables = lists;

bool tw::load_node_auth(cfg_node &node, const cfg_value &map) noexcept {
  const memory_watch memory;
  load_within(load_auth, node, map);
  return !memory.ran_short();
}

int cfg_node_save_auth(cfg_node *node) noexcept {
  cfg_elem *elem = node ? tw::element_of(*node) : nullptr;
  cfg_elem *auth = elem ? tw::need_map(node->cfg, elem, "auth") : nullptr;
  return auth && tw::store(save_auth, *node, node->cfg, auth) &&
         store_below(save_radius, *node, auth, "radius") && store_below(save_tacacs, *node, auth, "tacacs") &&
         store_below(save_ldap, *node, auth, "ldap");
}

const char *cfg_node_get_auth_method(const cfg_node *node) noexcept {
  return tw::get<&cfg_node::auth_method>(node);
}
int cfg_node_set_auth_method(cfg_node *node, const char *text) noexcept {
  return tw::replace<&cfg_node::auth_method>(node, text);
}

const char *cfg_node_get_auth_type(const cfg_node *node) noexcept {
  return tw::get<&cfg_node::auth_type>(node);
}
int cfg_node_set_auth_type(cfg_node *node, const char *text) noexcept {
  return tw::replace<&cfg_node::auth_type>(node, text);
}

int32_t cfg_node_get_use_remote_groups(const cfg_node *node) noexcept {
  return tw::get<&cfg_node::use_remote_groups>(node);
}
int cfg_node_set_use_remote_groups(cfg_node *node, int32_t flag) noexcept {
  return tw::set<&cfg_node::use_remote_groups>(node, flag != 0);
}

const char *cfg_node_get_radius_authentication_servers(const cfg_node *node) noexcept {
  return tw::get<&cfg_node::radius_authentication_servers>(node);
}
int cfg_node_set_radius_authentication_servers(cfg_node *node, const char *text) noexcept {
  return tw::replace<&cfg_node::radius_authentication_servers>(node, text);
}

const char *cfg_node_get_radius_accounting_servers(const cfg_node *node) noexcept {
  return tw::get<&cfg_node::radius_accounting_servers>(node);
}
int cfg_node_set_radius_accounting_servers(cfg_node *node, const char *text) noexcept {
  return tw::replace<&cfg_node::radius_accounting_servers>(node, text);
}

const char *cfg_node_get_radius_password(const cfg_node *node) noexcept {
  return tw::get<&cfg_node::radius_password>(node);
}
int cfg_node_set_radius_password(cfg_node *node, const char *text) noexcept {
  return tw::replace<&cfg_node::radius_password>(node, text);
}

const char *cfg_node_get_tacacs_authentication_servers(const cfg_node *node) noexcept {
  return tw::get<&cfg_node::tacacs_authentication_servers>(node);
}
int cfg_node_set_tacacs_authentication_servers(cfg_node *node, const char *text) noexcept {
  return tw::replace<&cfg_node::tacacs_authentication_servers>(node, text);
}

const char *cfg_node_get_tacacs_password(const cfg_node *node) noexcept {
  return tw::get<&cfg_node::tacacs_password>(node);
}
int cfg_node_set_tacacs_password(cfg_node *node, const char *text) noexcept {
  return tw::replace<&cfg_node::tacacs_password>(node, text);
}

const char *cfg_node_get_tacacs_method(const cfg_node *node) noexcept {
  return tw::get<&cfg_node::tacacs_method>(node);
}
int cfg_node_set_tacacs_method(cfg_node *node, const char *text) noexcept {
  return tw::replace<&cfg_node::tacacs_method>(node, text);
}

const char *cfg_node_get_tacacs_service(const cfg_node *node) noexcept {
  return tw::get<&cfg_node::tacacs_service>(node);
}
int cfg_node_set_tacacs_service(cfg_node *node, const char *text) noexcept {
  return tw::replace<&cfg_node::tacacs_service>(node, text);
}

const char *cfg_node_get_ldap_authentication_servers(const cfg_node *node) noexcept {
  return tw::get<&cfg_node::ldap_authentication_servers>(node);
}
int cfg_node_set_ldap_authentication_servers(cfg_node *node, const char *text) noexcept {
  return tw::replace<&cfg_node::ldap_authentication_servers>(node, text);
}

const char *cfg_node_get_ldap_base_dn(const cfg_node *node) noexcept {
  return tw::get<&cfg_node::ldap_base_dn>(node);
}
int cfg_node_set_ldap_base_dn(cfg_node *node, const char *text) noexcept {
  return tw::replace<&cfg_node::ldap_base_dn>(node, text);
}

const char *cfg_node_get_ldap_bind_dn(const cfg_node *node) noexcept {
  return tw::get<&cfg_node::ldap_bind_dn>(node);
}
int cfg_node_set_ldap_bind_dn(cfg_node *node, const char *text) noexcept {
  return tw::replace<&cfg_node::ldap_bind_dn>(node, text);
}

const char *cfg_node_get_ldap_username_attribute(const cfg_node *node) noexcept {
  return tw::get<&cfg_node::ldap_username_attribute>(node);
}
int cfg_node_set_ldap_username_attribute(cfg_node *node, const char *text) noexcept {
  return tw::replace<&cfg_node::ldap_username_attribute>(node, text);
}

const char *cfg_node_get_ldap_group_attribute(const cfg_node *node) noexcept {
  return tw::get<&cfg_node::ldap_group_attribute>(node);
}
int cfg_node_set_ldap_group_attribute(cfg_node *node, const char *text) noexcept {
  return tw::replace<&cfg_node::ldap_group_attribute>(node, text);
}

const char *cfg_node_get_ldap_bind_password(const cfg_node *node) noexcept {
  return tw::get<&cfg_node::ldap_bind_password>(node);
}
int cfg_node_set_ldap_bind_password(cfg_node *node, const char *text) noexcept {
  return tw::replace<&cfg_node::ldap_bind_password>(node, text);
}
