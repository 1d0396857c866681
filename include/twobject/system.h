/* System settings: host name, idle time-outs, time zone, intervals, SSH port and VPN MTU of the appliance. */
#ifndef TWOBJECT_SYSTEM_H
#define TWOBJECT_SYSTEM_H

#include <twobject/common.h>

TW_BEGIN

/*
 * Each setting is one key of the store; there is no record. Getters give 1, or 0 with `out` untouched when
 * the handle or `out` is NULL, the key is absent or its value is of another kind. The library supplies no
 * defaults: a caller whose getter fails applies its own.
 *
 * Setters change the caller's edit and give 1, or 0 when nothing could be set. String setters refuse NULL
 * with 0 and store any other text as it is, the empty one included. Integer setters store every value,
 * negative ones and zero included; units and ranges are the caller's affair.
 */

/** Host name of the appliance: "system.hostname". The setter creates the map "system" when it is absent. */
TW_API int cfg_system_get_hostname(cfg *store, char **out) TW_NOEXCEPT;
TW_API int cfg_system_set_hostname(cfg *store, const char *hostname) TW_NOEXCEPT;

/** Idle time-out of the web interface: "system.webui_session_timeout". The setter creates "system". */
TW_API int cfg_system_get_webui_session_timeout(cfg *store, int32_t *out) TW_NOEXCEPT;
TW_API int cfg_system_set_webui_session_timeout(cfg *store, int32_t timeout) TW_NOEXCEPT;

/** Idle time-out of the command line: "system.cli_session_timeout". The setter creates "system". */
TW_API int cfg_system_get_cli_session_timeout(cfg *store, int32_t *out) TW_NOEXCEPT;
TW_API int cfg_system_set_cli_session_timeout(cfg *store, int32_t timeout) TW_NOEXCEPT;

/** Time zone of the appliance: "system.timezone". The setter creates "system". */
TW_API int cfg_system_get_timezone(cfg *store, char **out) TW_NOEXCEPT;
TW_API int cfg_system_set_timezone(cfg *store, const char *timezone) TW_NOEXCEPT;

/**
 * Ping interval of third-party nodes: "system.third_party.ping_interval". When no such map is found the
 * setter creates it at the root under the one literal key "system.third_party", where existing stores have
 * it; the path reads the same either way.
 */
TW_API int cfg_system_get_ping_interval(cfg *store, int32_t *out) TW_NOEXCEPT;
TW_API int cfg_system_set_ping_interval(cfg *store, int32_t interval) TW_NOEXCEPT;

/** Sync interval of third-party nodes: "system.third_party.sync_interval", stored like the ping interval. */
TW_API int cfg_system_get_sync_interval(cfg *store, int32_t *out) TW_NOEXCEPT;
TW_API int cfg_system_set_sync_interval(cfg *store, int32_t interval) TW_NOEXCEPT;

/** Port of the appliance's SSH server: "system.net.ssh_port". The setter fails without the map "system.net".
 */
TW_API int cfg_net_get_ssh_port(cfg *store, int32_t *out) TW_NOEXCEPT;
TW_API int cfg_net_set_ssh_port(cfg *store, int32_t port) TW_NOEXCEPT;

/**
 * MTU of the appliance's own VPN server: "services.fhvpn.server.mtu". The setter fails without the map
 * "services.fhvpn.server".
 */
TW_API int cfg_system_get_fhvpn_mtu(cfg *store, int32_t *out) TW_NOEXCEPT;
TW_API int cfg_system_set_fhvpn_mtu(cfg *store, int32_t mtu) TW_NOEXCEPT;

TW_END
#endif
