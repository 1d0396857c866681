/* Authentication settings of nodes. */
#ifndef TWOBJECT_NODE_AUTH_H
#define TWOBJECT_NODE_AUTH_H

#include <twobject/common.h>
#include <twobject/node.h>

TW_BEGIN

/*
 * A "tarnwell" node's own authentication settings: the map "auth" of the node, read with it. Server fields
 * are one text each, as stored. A setter answers 0 for a NULL node and when memory is short; passwords are
 * secrets. All of them are written by cfg_node_save_auth() alone.
 */

/**
 * Writes the settings: "auth_method", "auth_type", "use_remote_groups", then the maps "radius", "tacacs" and
 * "ldap". The maps, and "auth" itself, are made when missing.
 * @return 1, or 0 when the node is NULL, its element is missing or at the first failed write
 */
TW_API int cfg_node_save_auth(cfg_node *node) TW_NOEXCEPT;

/** Method, for example "RADIUS": "auth_method". */
TW_API const char *cfg_node_get_auth_method(const cfg_node *node) TW_NOEXCEPT;
TW_API int cfg_node_set_auth_method(cfg_node *node, const char *text) TW_NOEXCEPT;

/** Type, for example "Local": "auth_type". */
TW_API const char *cfg_node_get_auth_type(const cfg_node *node) TW_NOEXCEPT;
TW_API int cfg_node_set_auth_type(cfg_node *node, const char *text) TW_NOEXCEPT;

/** Whether the groups that the servers tell count, 0 or 1: "use_remote_groups". Any value but 0 is kept as 1.
 */
TW_API int32_t cfg_node_get_use_remote_groups(const cfg_node *node) TW_NOEXCEPT;
TW_API int cfg_node_set_use_remote_groups(cfg_node *node, int32_t flag) TW_NOEXCEPT;

/** Servers that are asked: "radius"."authenticationServers". */
TW_API const char *cfg_node_get_radius_authentication_servers(const cfg_node *node) TW_NOEXCEPT;
TW_API int cfg_node_set_radius_authentication_servers(cfg_node *node, const char *text) TW_NOEXCEPT;

/** Servers that are told: "radius"."accountingServers". */
TW_API const char *cfg_node_get_radius_accounting_servers(const cfg_node *node) TW_NOEXCEPT;
TW_API int cfg_node_set_radius_accounting_servers(cfg_node *node, const char *text) TW_NOEXCEPT;

/** Shared secret: "radius"."password". */
TW_API const char *cfg_node_get_radius_password(const cfg_node *node) TW_NOEXCEPT;
TW_API int cfg_node_set_radius_password(cfg_node *node, const char *text) TW_NOEXCEPT;

/** Servers that are asked: "tacacs"."authenticationServers". */
TW_API const char *cfg_node_get_tacacs_authentication_servers(const cfg_node *node) TW_NOEXCEPT;
TW_API int cfg_node_set_tacacs_authentication_servers(cfg_node *node, const char *text) TW_NOEXCEPT;

/** Shared secret: "tacacs"."password". */
TW_API const char *cfg_node_get_tacacs_password(const cfg_node *node) TW_NOEXCEPT;
TW_API int cfg_node_set_tacacs_password(cfg_node *node, const char *text) TW_NOEXCEPT;

/** Method: "tacacs"."method". */
TW_API const char *cfg_node_get_tacacs_method(const cfg_node *node) TW_NOEXCEPT;
TW_API int cfg_node_set_tacacs_method(cfg_node *node, const char *text) TW_NOEXCEPT;

/** Service: "tacacs"."service". */
TW_API const char *cfg_node_get_tacacs_service(const cfg_node *node) TW_NOEXCEPT;
TW_API int cfg_node_set_tacacs_service(cfg_node *node, const char *text) TW_NOEXCEPT;

/** Servers that are asked: "ldap"."authenticationServers". */
TW_API const char *cfg_node_get_ldap_authentication_servers(const cfg_node *node) TW_NOEXCEPT;
TW_API int cfg_node_set_ldap_authentication_servers(cfg_node *node, const char *text) TW_NOEXCEPT;

/** Where the search for users begins: "ldap"."baseDN". */
TW_API const char *cfg_node_get_ldap_base_dn(const cfg_node *node) TW_NOEXCEPT;
TW_API int cfg_node_set_ldap_base_dn(cfg_node *node, const char *text) TW_NOEXCEPT;

/** Who searches: "ldap"."bindDN". */
TW_API const char *cfg_node_get_ldap_bind_dn(const cfg_node *node) TW_NOEXCEPT;
TW_API int cfg_node_set_ldap_bind_dn(cfg_node *node, const char *text) TW_NOEXCEPT;

/** Attribute with the user name: "ldap"."usernameAttribute". */
TW_API const char *cfg_node_get_ldap_username_attribute(const cfg_node *node) TW_NOEXCEPT;
TW_API int cfg_node_set_ldap_username_attribute(cfg_node *node, const char *text) TW_NOEXCEPT;

/** Attribute with the groups: "ldap"."groupMembershipAttribute". */
TW_API const char *cfg_node_get_ldap_group_attribute(const cfg_node *node) TW_NOEXCEPT;
TW_API int cfg_node_set_ldap_group_attribute(cfg_node *node, const char *text) TW_NOEXCEPT;

/** Password of who searches: "ldap"."bindPassword". */
TW_API const char *cfg_node_get_ldap_bind_password(const cfg_node *node) TW_NOEXCEPT;
TW_API int cfg_node_set_ldap_bind_password(cfg_node *node, const char *text) TW_NOEXCEPT;

TW_END
#endif
