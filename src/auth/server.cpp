// Remote authentication servers: entries of the four server lists.
#include "auth/auth.hpp"
#include "record/boundary.hpp"
#include "record/engine.hpp"
#include "record/memory_watch.hpp"
#include "record/tables.hpp"

struct cfg_auth_server : tw::object_view {
  tw::text hostname;
  int32_t port = 0;
};

namespace {

constexpr auto hostname_row = tw::string_row<&cfg_auth_server::hostname>("hostname");
constexpr auto port_row = tw::int_row<&cfg_auth_server::port>("port");

// As lenient as the settings: a server that could not be loaded could not be set right or deleted either.
constexpr tw::load_list load_keys({lenient(hostname_row), lenient(port_row)});
constexpr tw::store_list save_hostname({hostname_row});
constexpr tw::store_list save_port({port_row});

constexpr tw::named_list lists[] = {
    {"auth server load", load_keys},
    {"auth server save", save_hostname},
    {"auth server save, with its port", save_port},
};

cfg_auth_server *get_server(cfg *store, const char *id) noexcept {
  cfg_elem *elem = cfg_get_by_id(store, id);
  auto server = tw::new_view<cfg_auth_server>(store, elem);
  return server && tw::load(load_keys, *server, elem) ? server.release() : nullptr;
}

template <auto Servers>
int32_t count(const cfg_auth *auth) noexcept {
  return auth ? (auth->*Servers).count() : 0;
}

template <auto Servers>
cfg_auth_server *at(const cfg_auth *auth, int32_t index) noexcept {
  return auth ? get_server(auth->cfg, (auth->*Servers).at(index)) : nullptr;
}

// A list that is there is found by its path too, so that "radius.accountingServers" below a template's map is
// the list that its settings are read from and not a second one under a key with a dot in it.
cfg_elem *need_servers(cfg *store, cfg_elem *parent, const char *key) noexcept {
  const tw::memory_watch memory;
  if (cfg_elem *list = cfg_get_child_by_path(store, parent, key)) return list;
  return memory.ran_short() ? nullptr : tw::need_list(store, parent, key);
}

}  // namespace

const tw::tables tw::auth_server_tables = lists;

int32_t cfg_auth_get_radiusAuthenticationServerCount(const cfg_auth *auth) noexcept {
  return count<&cfg_auth::radius_authentication_servers>(auth);
}
int32_t cfg_auth_get_radiusAccountingServerCount(const cfg_auth *auth) noexcept {
  return count<&cfg_auth::radius_accounting_servers>(auth);
}
int32_t cfg_auth_get_tacacsAuthenticationServerCount(const cfg_auth *auth) noexcept {
  return count<&cfg_auth::tacacs_authentication_servers>(auth);
}
int32_t cfg_auth_get_ldapAuthenticationServerCount(const cfg_auth *auth) noexcept {
  return count<&cfg_auth::ldap_authentication_servers>(auth);
}

cfg_auth_server *cfg_auth_get_radiusAuthenticationServer(const cfg_auth *auth, int32_t index) noexcept {
  return at<&cfg_auth::radius_authentication_servers>(auth, index);
}
cfg_auth_server *cfg_auth_get_radiusAccountingServer(const cfg_auth *auth, int32_t index) noexcept {
  return at<&cfg_auth::radius_accounting_servers>(auth, index);
}
cfg_auth_server *cfg_auth_get_tacacsAuthenticationServer(const cfg_auth *auth, int32_t index) noexcept {
  return at<&cfg_auth::tacacs_authentication_servers>(auth, index);
}
cfg_auth_server *cfg_auth_get_ldapAuthenticationServer(const cfg_auth *auth, int32_t index) noexcept {
  return at<&cfg_auth::ldap_authentication_servers>(auth, index);
}

const char *cfg_auth_get_server_uuid(const cfg_auth_server *server) noexcept {
  return tw::get<&cfg_auth_server::uuid>(server);
}

const char *cfg_auth_get_server_hostname(const cfg_auth_server *server) noexcept {
  return tw::get<&cfg_auth_server::hostname>(server);
}
int cfg_auth_set_server_hostname(cfg_auth_server *server, const char *hostname) noexcept {
  return tw::replace<&cfg_auth_server::hostname>(server, hostname);
}

int32_t cfg_auth_get_server_port(const cfg_auth_server *server) noexcept {
  return tw::get<&cfg_auth_server::port>(server);
}
int cfg_auth_set_server_port(cfg_auth_server *server, int32_t port) noexcept {
  return tw::set<&cfg_auth_server::port>(server, port);
}

int cfg_auth_create_server(cfg_auth *auth, cfg_elem *parent, const char *key, const char *hostname,
                           int32_t port, int omit_port) noexcept {
  if (!auth || !parent || !key) return 0;
  auto server = tw::new_view<cfg_auth_server>(auth->cfg);
  if (!server || !server->hostname.set(hostname) || !server->hostname) return 0;
  server->port = port;
  cfg_elem *list = need_servers(auth->cfg, parent, key);
  cfg_elem *elem = list ? cfg_new_map(auth->cfg) : nullptr;
  return elem && tw::store(save_hostname, *server, auth->cfg, elem) &&
         (omit_port || tw::store(save_port, *server, auth->cfg, elem)) &&
         tw::append_element(*server, list, elem);
}

int cfg_auth_update_server(cfg_auth_server *server, int omit_port) noexcept {
  cfg_elem *elem = server ? tw::element_of(*server) : nullptr;
  if (!elem) return 0;
  const tw::memory_watch memory;
  bool written = tw::store(save_hostname, *server, server->cfg, elem);
  // Either write counts: callers change the one or the other, and what they did not change fails for nobody.
  if (omit_port)
    tw::delete_map_key(server->cfg, elem, port_row.key);
  else if (tw::store(save_port, *server, server->cfg, elem))
    written = true;
  return written && !memory.ran_short();
}

int cfg_auth_delete_server(cfg_auth_server *server) noexcept {
  return server && cfg_delete_element(server->cfg, tw::element_of(*server));
}

void cfg_auth_server_free(cfg_auth_server *server) noexcept { delete server; }
