// System settings: single keys, read and written straight in the store.
#include <twobject/system.h>

#include "record/view.hpp"

namespace {

constexpr char system_map[] = "system";
constexpr char third_party_map[] = "system.third_party";

int get_string(cfg *store, const char *path, char **out) noexcept {
  return cfg_string_value(cfg_get_by_path(store, path), out);
}

int get_int(cfg *store, const char *path, int32_t *out) noexcept {
  return cfg_int_value(cfg_get_by_path(store, path), out);
}

int set_string(cfg *store, const char *map, const char *key, const char *value) noexcept {
  if (!store || !value) return 0;  // before a map is made for nothing
  return cfg_map_set_string(store, tw::map_at(store, map), key, value);
}

int set_int(cfg *store, const char *map, const char *key, int32_t value) noexcept {
  return store && cfg_map_set_int(store, tw::map_at(store, map), key, value);
}

}  // namespace

int cfg_system_get_hostname(cfg *store, char **out) noexcept {
  return get_string(store, "system.hostname", out);
}
int cfg_system_set_hostname(cfg *store, const char *hostname) noexcept {
  return set_string(store, system_map, "hostname", hostname);
}

int cfg_system_get_webui_session_timeout(cfg *store, int32_t *out) noexcept {
  return get_int(store, "system.webui_session_timeout", out);
}
int cfg_system_set_webui_session_timeout(cfg *store, int32_t timeout) noexcept {
  return set_int(store, system_map, "webui_session_timeout", timeout);
}

int cfg_system_get_cli_session_timeout(cfg *store, int32_t *out) noexcept {
  return get_int(store, "system.cli_session_timeout", out);
}
int cfg_system_set_cli_session_timeout(cfg *store, int32_t timeout) noexcept {
  return set_int(store, system_map, "cli_session_timeout", timeout);
}

int cfg_system_get_timezone(cfg *store, char **out) noexcept {
  return get_string(store, "system.timezone", out);
}
int cfg_system_set_timezone(cfg *store, const char *zone) noexcept {
  return set_string(store, system_map, "timezone", zone);
}

int cfg_system_get_ping_interval(cfg *store, int32_t *out) noexcept {
  return get_int(store, "system.third_party.ping_interval", out);
}
int cfg_system_set_ping_interval(cfg *store, int32_t interval) noexcept {
  return set_int(store, third_party_map, "ping_interval", interval);
}

int cfg_system_get_sync_interval(cfg *store, int32_t *out) noexcept {
  return get_int(store, "system.third_party.sync_interval", out);
}
int cfg_system_set_sync_interval(cfg *store, int32_t interval) noexcept {
  return set_int(store, third_party_map, "sync_interval", interval);
}

// The network and VPN maps come from the appliance's provisioning: these two setters never make them, and a
// missing map is the store's failure for a NULL one.
int cfg_net_get_ssh_port(cfg *store, int32_t *out) noexcept {
  return get_int(store, "system.net.ssh_port", out);
}
int cfg_net_set_ssh_port(cfg *store, int32_t port) noexcept {
  return cfg_map_set_int(store, cfg_get_by_path(store, "system.net"), "ssh_port", port);
}

int cfg_system_get_fhvpn_mtu(cfg *store, int32_t *out) noexcept {
  return get_int(store, "services.fhvpn.server.mtu", out);
}
int cfg_system_set_fhvpn_mtu(cfg *store, int32_t mtu) noexcept {
  return cfg_map_set_int(store, cfg_get_by_path(store, "services.fhvpn.server"), "mtu", mtu);
}
