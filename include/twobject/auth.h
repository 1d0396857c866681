/* Authentication: how logins are checked, here or by RADIUS, TACACS+ and LDAP servers. */
#ifndef TWOBJECT_AUTH_H
#define TWOBJECT_AUTH_H

#include <twobject/common.h>

TW_BEGIN

/** Authentication settings: the view of the map "auth", or of the settings in an authentication template. */
typedef struct cfg_auth cfg_auth;
/** One remote server: the view of an entry of one of the four server lists. */
typedef struct cfg_auth_server cfg_auth_server;

/* ---- Settings ---- */

/**
 * Reads the settings and the IDs of all committed servers from "auth".
 * @return a record of the caller's; NULL when "auth" does not exist. All keys are optional, and one with a
 * value of another kind reads as NULL.
 */
TW_API cfg_auth *cfg_get_auth(cfg *store) TW_NOEXCEPT;
/**
 * Writes the settings to "auth", which is made when it is missing: the mode, then the maps "tacacs", "radius"
 * and "ldap", each made when it is missing. NULL deletes a key. Servers are not written here. Does not abort
 * on NULL.
 * @return 1, or 0 for NULL, when "auth" cannot be made, when a key cannot be written and when memory runs
 * out. A map within it that the store refuses to make is passed over and no failure.
 */
TW_API int cfg_auth_update(cfg_auth *auth) TW_NOEXCEPT;
/** Frees the record with its secrets and IDs; servers that were read through it stay. NULL is allowed. */
TW_API void cfg_auth_free(cfg_auth *auth) TW_NOEXCEPT;

/** How logins are checked: "mode" ("auth_mode" in a template). Any text is kept as it is. */
TW_API const char *cfg_auth_get_mode(const cfg_auth *auth) TW_NOEXCEPT;
TW_API int cfg_auth_set_mode(cfg_auth *auth, const char *mode) TW_NOEXCEPT;

/** Secret shared with the RADIUS servers: "radius.password". */
TW_API const char *cfg_auth_get_radiusPassword(const cfg_auth *auth) TW_NOEXCEPT;
TW_API int cfg_auth_set_radiusPassword(cfg_auth *auth, const char *password) TW_NOEXCEPT;

/** Secret shared with the TACACS+ servers: "tacacs.password". */
TW_API const char *cfg_auth_get_tacacsPassword(const cfg_auth *auth) TW_NOEXCEPT;
TW_API int cfg_auth_set_tacacsPassword(cfg_auth *auth, const char *password) TW_NOEXCEPT;

/** TACACS+ authentication method: "tacacs.method". Any text is kept as it is. */
TW_API const char *cfg_auth_get_tacacsMethod(const cfg_auth *auth) TW_NOEXCEPT;
TW_API int cfg_auth_set_tacacsMethod(cfg_auth *auth, const char *method) TW_NOEXCEPT;

/** TACACS+ service that is asked for: "tacacs.service". Any text is kept as it is. */
TW_API const char *cfg_auth_get_tacacsService(const cfg_auth *auth) TW_NOEXCEPT;
TW_API int cfg_auth_set_tacacsService(cfg_auth *auth, const char *service) TW_NOEXCEPT;

/** Where LDAP users are searched: "ldap.baseDN". */
TW_API const char *cfg_auth_get_ldapBaseDN(const cfg_auth *auth) TW_NOEXCEPT;
TW_API int cfg_auth_set_ldapBaseDN(cfg_auth *auth, const char *dn) TW_NOEXCEPT;

/** Whom the appliance binds as to search them: "ldap.bindDN". */
TW_API const char *cfg_auth_get_ldapBindDN(const cfg_auth *auth) TW_NOEXCEPT;
TW_API int cfg_auth_set_ldapBindDN(cfg_auth *auth, const char *dn) TW_NOEXCEPT;

/** Attribute that holds the login name: "ldap.usernameAttribute". */
TW_API const char *cfg_auth_get_ldapUsernameAttribute(const cfg_auth *auth) TW_NOEXCEPT;
TW_API int cfg_auth_set_ldapUsernameAttribute(cfg_auth *auth, const char *attribute) TW_NOEXCEPT;

/** Attribute that holds the groups: "ldap.groupMembershipAttribute". */
TW_API const char *cfg_auth_get_ldapGroupMembershipAttribute(const cfg_auth *auth) TW_NOEXCEPT;
TW_API int cfg_auth_set_ldapGroupMembershipAttribute(cfg_auth *auth, const char *attribute) TW_NOEXCEPT;

/** Password of the bind DN: "ldap.bindPassword". */
TW_API const char *cfg_auth_get_ldapBindPassword(const cfg_auth *auth) TW_NOEXCEPT;
TW_API int cfg_auth_set_ldapBindPassword(cfg_auth *auth, const char *password) TW_NOEXCEPT;

/* ---- Server lists ---- */

/** Number of servers in each list at the time when the settings were read; 0 without the list. */
TW_API int32_t cfg_auth_get_radiusAuthenticationServerCount(const cfg_auth *auth) TW_NOEXCEPT;
TW_API int32_t cfg_auth_get_radiusAccountingServerCount(const cfg_auth *auth) TW_NOEXCEPT;
TW_API int32_t cfg_auth_get_tacacsAuthenticationServerCount(const cfg_auth *auth) TW_NOEXCEPT;
TW_API int32_t cfg_auth_get_ldapAuthenticationServerCount(const cfg_auth *auth) TW_NOEXCEPT;

/**
 * Reads the server at a 0-based index of "radius.authenticationServers", "radius.accountingServers",
 * "tacacs.authenticationServers" or "ldap.authenticationServers" from its element.
 * @return a record of the caller's, released with cfg_auth_server_free(), also after the settings are freed;
 * NULL outside the list or when the element is gone
 */
TW_API cfg_auth_server *cfg_auth_get_radiusAuthenticationServer(const cfg_auth *auth,
                                                                int32_t index) TW_NOEXCEPT;
TW_API cfg_auth_server *cfg_auth_get_radiusAccountingServer(const cfg_auth *auth, int32_t index) TW_NOEXCEPT;
TW_API cfg_auth_server *cfg_auth_get_tacacsAuthenticationServer(const cfg_auth *auth,
                                                                int32_t index) TW_NOEXCEPT;
TW_API cfg_auth_server *cfg_auth_get_ldapAuthenticationServer(const cfg_auth *auth,
                                                              int32_t index) TW_NOEXCEPT;

/**
 * Appends a server to a list as a pending entry: the lists show it after the commit.
 * @param auth the settings, for their store handle; their counts stay
 * @param parent the map that holds the list, for example that of "auth.radius"
 * @param key the list's key or, for a list that is there, its path below the parent; made when it is missing
 * @param omit_port not 0: the server is stored without its port
 * @return 1, or 0: without auth, parent, key or host name, or when something cannot be written
 */
TW_API int cfg_auth_create_server(cfg_auth *auth, cfg_elem *parent, const char *key, const char *hostname,
                                  int32_t port, int omit_port) TW_NOEXCEPT;

/* ---- Servers ---- */

/** ID of the element that the server was read from. */
TW_API const char *cfg_auth_get_server_uuid(const cfg_auth_server *server) TW_NOEXCEPT;

/** Host name or address: "hostname". */
TW_API const char *cfg_auth_get_server_hostname(const cfg_auth_server *server) TW_NOEXCEPT;
TW_API int cfg_auth_set_server_hostname(cfg_auth_server *server, const char *hostname) TW_NOEXCEPT;

/** Port: "port"; 0 when the key is absent. */
TW_API int32_t cfg_auth_get_server_port(const cfg_auth_server *server) TW_NOEXCEPT;
TW_API int cfg_auth_set_server_port(cfg_auth_server *server, int32_t port) TW_NOEXCEPT;

/**
 * Writes the server's host name (NULL deletes the key) and its port, or deletes "port" when `omit_port` is
 * not 0. Does not abort on NULL.
 * @return with the port, 1 when either of the two was written; without, 1 when the host name was. 0 for NULL,
 * when the element is gone or memory runs out.
 */
TW_API int cfg_auth_update_server(cfg_auth_server *server, int omit_port) TW_NOEXCEPT;
/** Deletes the server's element. The record stays. 1, or 0 for NULL or when the element is gone. */
TW_API int cfg_auth_delete_server(cfg_auth_server *server) TW_NOEXCEPT;
/** Frees the server's record; the element stays. NULL is allowed. */
TW_API void cfg_auth_server_free(cfg_auth_server *server) TW_NOEXCEPT;

TW_END
#endif
