#include "layout.hpp"

#include <fmt/format.h>

#include <string>

#include "failure.hpp"

namespace twctl {

namespace {

enum class part { map, list, no };

struct place {
  const char *parent;  ///< path of the map that holds it; "" for the root
  const char *key;
  part what;
};

/// Parents stand before what they hold. Maps that their family makes on first use are not listed.
constexpr place places[] = {
    {"", "system", part::map},
    {"system", "net", part::map},
    {"system.net", "physifs", part::list},
    {"system.net", "conns", part::list},
    {"system.net", "external_endpoints", part::list},
    {"", "services", part::map},
    {"services", "ca", part::map},
    {"services", "https", part::map},
    {"services", "ntp", part::map},
    {"services.ntp", "enabled", part::no},
    {"services.ntp", "servers", part::list},
    {"services", "fhvpn", part::map},
    {"services.fhvpn", "server", part::map},
    {"", "boot_flags", part::list},
    {"", "nodes", part::list},
    {"", "certificates", part::list},
    {"", "enrollment", part::map},
    {"enrollment", "bundles", part::list},
    {"", "users", part::list},
    {"", "groups", part::list},
    {"", "roles", part::list},
    {"", "acls", part::list},
    {"", "auth", part::map},
    {"auth", "radius", part::map},
    {"auth.radius", "authenticationServers", part::list},
    {"auth.radius", "accountingServers", part::list},
    {"auth", "tacacs", part::map},
    {"auth.tacacs", "authenticationServers", part::list},
    {"auth", "ldap", part::map},
    {"auth.ldap", "authenticationServers", part::list},
    {"", "tags", part::map},
    {"tags", "node_tags", part::list},
    {"", "smart_groups", part::map},
    {"smart_groups", "nodes_groups", part::list},
    {"", "templates", part::list},
    {"", "cfg_push_exec_ctxts", part::list},
};

bool add(cfg *store, const place &one) {
  cfg_elem *parent = *one.parent ? cfg_get_by_path(store, one.parent) : cfg_root(store);
  switch (one.what) {
    case part::map:
      return cfg_add_mapelem(store, parent, one.key, cfg_new_map(store));
    case part::list:
      return cfg_add_mapelem(store, parent, one.key, cfg_new_list(store));
    case part::no:
      return cfg_map_set_bool(store, parent, one.key, 0);
  }
  return false;
}

}  // namespace

void lay_out(cfg *store) {
  for (const place &one : places)
    if (!add(store, one)) {
      std::string path = *one.parent ? fmt::format("{}.{}", one.parent, one.key) : one.key;
      throw store_failure(store, fmt::format("cannot add '{}' to the new store", path));
    }
}

}  // namespace twctl
