/* The appliance's own addresses: what its connections are called by the operating system, and where it is
 * reached. */
#ifndef TWOBJECT_NET_ADDRESS_H
#define TWOBJECT_NET_ADDRESS_H

#include <twconfig/condition.h>
#include <twobject/common.h>

TW_BEGIN

/*
 * The operating system labels the address of each connection device:label, for example "eth0:dhcp" or
 * "eth1:static2", the number being that of the connection's ID. A label has at most 15 characters: one that
 * is longer than the room behind the device's name fails, one that just fills it loses its last character. A
 * device whose name has other characters than letters, digits and ".", "_", "-", ":" has no label here: its
 * name comes from the store and would get into a shell's command.
 */

/** The mode of the first connection with exactly this name: "dhcp", "static" or "unknown", constant. NULL
 * when there is none or it cannot be loaded. */
TW_API const char *cfg_get_conn_mode_from_conn_name(cfg *store, const char *name) TW_NOEXCEPT;
/** The label of the first connection with exactly this name; a heap string, or NULL. */
TW_API char *cfg_get_interface_name_from_conn_name(cfg *store, const char *name) TW_NOEXCEPT;

/**
 * The labels of all connections for which a condition holds, a space before each, in one heap string that is
 * empty when there are none. NULL when a connection, its interface or its label cannot be had, and when the
 * store has no list of connections.
 * @param condition stays the caller's, with one exception: it is freed when the store has no list of
 * connections
 */
TW_API char *cfg_get_interfaces_list_from_condition(cfg *store, cfg_condition *condition) TW_NOEXCEPT;
/** The same for the connections of a mode, "dhcp" or "static". */
TW_API char *cfg_get_interfaces_list_from_mode(cfg *store, const char *mode) TW_NOEXCEPT;
/** The same without the connections of one name. */
TW_API char *cfg_get_interfaces_list_from_mode_exclude_default(cfg *store, const char *mode,
                                                               const char *name) TW_NOEXCEPT;

/**
 * The appliance's IPv4 address as the operating system has it, in dotted decimal, a heap string: the first
 * address of a connection of mode dhcp other than "default-conn-2", of mode static other than
 * "default-conn-1", of these two defaults themselves, and at last the address of the interface towards the
 * default gateway. NULL when there is none. Runs the ip tool through a shell and waits for it.
 */
TW_API char *cfg_net_external_address_from_os(cfg *store) TW_NOEXCEPT;
/** The address of the first external endpoint, whatever it is; the operating system's when there is none. */
TW_API char *cfg_net_get_external_address_from_cfg_or_os(cfg *store) TW_NOEXCEPT;

TW_END
#endif
