/* Network interfaces of nodes. */
#ifndef TWOBJECT_NODE_INTERFACE_H
#define TWOBJECT_NODE_INTERFACE_H

#include <twobject/common.h>
#include <twobject/node.h>

TW_BEGIN

/**
 * A network interface that a "tarnwell" node reports: the view of one entry of the node's list "interfaces".
 * It is read and never written.
 */
typedef struct cfg_node_interface cfg_node_interface;

/** A record with nothing but the handle. NULL when memory is short. */
TW_API cfg_node_interface *cfg_new_node_interface(cfg *store) TW_NOEXCEPT;
/**
 * Loads an interface; the record is the caller's. NULL when the element is missing, is no map or has no
 * element two levels above it, where an interface's node is. Of a key only a text counts.
 */
TW_API cfg_node_interface *cfg_get_node_interface_by_id(cfg *store, const char *id) TW_NOEXCEPT;
/** Frees a record of the caller's; never one that cfg_node_get_interface() gave. NULL is allowed. */
TW_API void cfg_node_interface_free(cfg_node_interface *record) TW_NOEXCEPT;

/** Number of interfaces; they are read with a "tarnwell" node, and every other node has none. */
TW_API int32_t cfg_node_get_interface_count(const cfg_node *node) TW_NOEXCEPT;
/**
 * The interface at a 0-based index; NULL outside the list and for an entry that could not be read. It belongs
 * to the node and ends with it.
 */
TW_API cfg_node_interface *cfg_node_get_interface(const cfg_node *node, int32_t index) TW_NOEXCEPT;

/** ID of the interface's element. */
TW_API const char *cfg_node_interface_get_uuid(const cfg_node_interface *record) TW_NOEXCEPT;
/** ID of the node's element. */
TW_API const char *cfg_node_interface_get_node_uuid(const cfg_node_interface *record) TW_NOEXCEPT;
/** Name: "name". */
TW_API const char *cfg_node_interface_get_name(const cfg_node_interface *record) TW_NOEXCEPT;
/** Addresses: "ipv4_address" and "ipv6_address". */
TW_API const char *cfg_node_interface_get_ipv4_addr(const cfg_node_interface *record) TW_NOEXCEPT;
TW_API const char *cfg_node_interface_get_ipv6_addr(const cfg_node_interface *record) TW_NOEXCEPT;

TW_END
#endif
