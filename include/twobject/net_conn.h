/* Network connections: how the appliance's interfaces are addressed, and their live status. */
#ifndef TWOBJECT_NET_CONN_H
#define TWOBJECT_NET_CONN_H

#include <twobject/common.h>
#include <twobject/net_physif.h>

TW_BEGIN

/**
 * A network connection, the addressing of one physical interface: the view of one element of the list
 * "system.net.conns". Connections are neither created nor deleted here.
 */
typedef struct cfg_net_conn cfg_net_conn;

/** Roles; stored as "wan", "lan", "wlan", "oobfo", "cellular" and "dialout". */
enum {
  CFG_NET_CONN_WAN = 1,
  CFG_NET_CONN_LAN = 2,
  CFG_NET_CONN_WLAN = 3,
  CFG_NET_CONN_OOBFO = 4,
  CFG_NET_CONN_CELLULAR = 5,
  CFG_NET_CONN_DIALOUT = 6
};

/** Modes; stored as "static" and "dhcp". */
enum { CFG_NET_CONN_STATIC = 1, CFG_NET_CONN_DHCP = 2 };

/** Live states of a connection. */
enum {
  CFG_NET_CONN_UNKNOWN = 0,
  CFG_NET_CONN_DOWN = 1,
  CFG_NET_CONN_STARTING = 2,
  CFG_NET_CONN_STOPPING = 3,
  CFG_NET_CONN_RUNNING = 4,
  CFG_NET_CONN_RELOADING = 5
};

/** The text of a role or mode; NULL for any other value. Constant. */
TW_API const char *cfg_net_conn_role_to_string(int32_t role) TW_NOEXCEPT;
TW_API const char *cfg_net_conn_mode_to_string(int32_t mode) TW_NOEXCEPT;
/** The role or mode of a text, compared without regard to case; 0 for NULL and any other text. */
TW_API int32_t cfg_net_conn_role_from_string(const char *text) TW_NOEXCEPT;
TW_API int32_t cfg_net_conn_mode_from_string(const char *text) TW_NOEXCEPT;
/** The text of a live state ("running"); "unknown" for any other value. Constant. */
TW_API const char *cfg_net_conn_runtime_status_to_string(int32_t status) TW_NOEXCEPT;

/** Number of connections; 0 without the list, -1 when its size cannot be read. */
TW_API int32_t cfg_get_net_conn_count(cfg *store) TW_NOEXCEPT;

/**
 * Loads a connection from its element. NULL when it lacks one of "name", "enabled", a known "role", a known
 * "mode" and the reference "physif".
 */
TW_API cfg_net_conn *cfg_net_conn_from_elem(cfg *store, cfg_elem *elem) TW_NOEXCEPT;
/** Loads the connection with an ID. */
TW_API cfg_net_conn *cfg_get_net_conn_by_id(cfg *store, const char *id) TW_NOEXCEPT;
/** Loads the connection at a 0-based index; NULL outside the list or when it cannot be loaded. */
TW_API cfg_net_conn *cfg_get_net_conn_by_index(cfg *store, int32_t index) TW_NOEXCEPT;

/** Loads the interface that a connection addresses; NULL without one. The caller frees it. */
TW_API cfg_net_physif *cfg_get_net_physif_by_net_conn(cfg *store, const cfg_net_conn *conn) TW_NOEXCEPT;

/** ID of the element. */
TW_API const char *cfg_net_conn_get_id(const cfg_net_conn *conn) TW_NOEXCEPT;

/** Display name, also the name under which the live state is published: "name". */
TW_API const char *cfg_net_conn_get_name(const cfg_net_conn *conn) TW_NOEXCEPT;
TW_API int cfg_net_conn_set_name(cfg_net_conn *conn, const char *name) TW_NOEXCEPT;

/** Whether the connection is to be up: "enabled". Setting makes any value but 0 a 1. */
TW_API int32_t cfg_net_conn_get_enabled(const cfg_net_conn *conn) TW_NOEXCEPT;
TW_API int cfg_net_conn_set_enabled(cfg_net_conn *conn, int32_t enabled) TW_NOEXCEPT;

/** Free text: "description". */
TW_API const char *cfg_net_conn_get_description(const cfg_net_conn *conn) TW_NOEXCEPT;
TW_API int cfg_net_conn_set_description(cfg_net_conn *conn, const char *description) TW_NOEXCEPT;

/** Its place in the appliance's network: "role". A value without text deletes the key on store. */
TW_API int32_t cfg_net_conn_get_role(const cfg_net_conn *conn) TW_NOEXCEPT;
TW_API int cfg_net_conn_set_role(cfg_net_conn *conn, int32_t role) TW_NOEXCEPT;

/** How it gets its address: "mode". A value without text deletes the key on store. */
TW_API int32_t cfg_net_conn_get_mode(const cfg_net_conn *conn) TW_NOEXCEPT;
TW_API int cfg_net_conn_set_mode(cfg_net_conn *conn, int32_t mode) TW_NOEXCEPT;

/** ID of the physical interface: the reference "physif". */
TW_API const char *cfg_net_conn_get_physif_id(const cfg_net_conn *conn) TW_NOEXCEPT;
TW_API int cfg_net_conn_set_physif_id(cfg_net_conn *conn, const char *id) TW_NOEXCEPT;

/* Addresses in dotted decimal, not interpreted here: keys of the map "static". */

/** Own address: "static.address". */
TW_API const char *cfg_net_conn_get_static_address(const cfg_net_conn *conn) TW_NOEXCEPT;
TW_API int cfg_net_conn_set_static_address(cfg_net_conn *conn, const char *address) TW_NOEXCEPT;
/** Net mask: "static.netmask". */
TW_API const char *cfg_net_conn_get_static_netmask(const cfg_net_conn *conn) TW_NOEXCEPT;
TW_API int cfg_net_conn_set_static_netmask(cfg_net_conn *conn, const char *netmask) TW_NOEXCEPT;
/** Broadcast address: "static.broadcast". */
TW_API const char *cfg_net_conn_get_static_broadcast(const cfg_net_conn *conn) TW_NOEXCEPT;
TW_API int cfg_net_conn_set_static_broadcast(cfg_net_conn *conn, const char *broadcast) TW_NOEXCEPT;
/** Gateway: "static.gateway". */
TW_API const char *cfg_net_conn_get_static_gateway(const cfg_net_conn *conn) TW_NOEXCEPT;
TW_API int cfg_net_conn_set_static_gateway(cfg_net_conn *conn, const char *gateway) TW_NOEXCEPT;
/** First name server: "static.dns1". */
TW_API const char *cfg_net_conn_get_static_dns1(const cfg_net_conn *conn) TW_NOEXCEPT;
TW_API int cfg_net_conn_set_static_dns1(cfg_net_conn *conn, const char *dns) TW_NOEXCEPT;
/** Second name server: "static.dns2". */
TW_API const char *cfg_net_conn_get_static_dns2(const cfg_net_conn *conn) TW_NOEXCEPT;
TW_API int cfg_net_conn_set_static_dns2(cfg_net_conn *conn, const char *dns) TW_NOEXCEPT;

/** Vendor class that is sent to the DHCP server: "dhcp.vendor_class". */
TW_API const char *cfg_net_conn_get_dhcp_vendor_class(const cfg_net_conn *conn) TW_NOEXCEPT;
TW_API int cfg_net_conn_set_dhcp_vendor_class(cfg_net_conn *conn, const char *vendor_class) TW_NOEXCEPT;
/** Script that the DHCP client runs: "dhcp.udhcpc_script". */
TW_API const char *cfg_net_conn_get_dhcp_udhcpc_script(const cfg_net_conn *conn) TW_NOEXCEPT;
TW_API int cfg_net_conn_set_dhcp_udhcpc_script(cfg_net_conn *conn, const char *script) TW_NOEXCEPT;

/*
 * Live status, from the runtime information daemon. The first of these getters reads all of it; the record
 * keeps what could be read, also when that is nothing, and never asks again: load the connection anew for
 * newer figures. While the appliance reloads its network, every connection is "reloading".
 */

/** One of the live states; CFG_NET_CONN_UNKNOWN when it could not be read. */
TW_API int32_t cfg_net_conn_runtime_get_status(cfg_net_conn *conn) TW_NOEXCEPT;
/** When the state last changed, in seconds since the epoch; 0 when it could not be read. */
TW_API int64_t cfg_net_conn_runtime_get_last_status_change(cfg_net_conn *conn) TW_NOEXCEPT;
/** What the DHCP server gave to a connection of mode dhcp; NULL for others. */
TW_API const char *cfg_net_conn_runtime_get_dhcp_address(cfg_net_conn *conn) TW_NOEXCEPT;
TW_API const char *cfg_net_conn_runtime_get_dhcp_netmask(cfg_net_conn *conn) TW_NOEXCEPT;
TW_API const char *cfg_net_conn_runtime_get_dhcp_gateway(cfg_net_conn *conn) TW_NOEXCEPT;
TW_API const char *cfg_net_conn_runtime_get_dhcp_dns(cfg_net_conn *conn) TW_NOEXCEPT;

/**
 * Writes the connection back into its element. The map of its own mode, "static" or "dhcp", and one for which
 * a field is set are made when they are absent. A map that is not needed loses its keys, and is deleted when
 * it is then empty.
 * @return 1; 0 when the element is gone or a write fails. Aborts on NULL: "nc && nc->cfg".
 */
TW_API int cfg_net_conn_store(cfg_net_conn *conn) TW_NOEXCEPT;

/** Frees the record with its live status. NULL is allowed. */
TW_API void cfg_net_conn_free(cfg_net_conn *conn) TW_NOEXCEPT;

TW_END
#endif
