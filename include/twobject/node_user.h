/* Local users of nodes. */
#ifndef TWOBJECT_NODE_USER_H
#define TWOBJECT_NODE_USER_H

#include <twobject/common.h>
#include <twobject/node.h>

TW_BEGIN

/** A local user that a "tarnwell" node reports: one entry of its list "users". It is read and never written.
 */
typedef struct cfg_node_user cfg_node_user;

/** Number of users; they are read with a "tarnwell" node, and every other node has none. */
TW_API int32_t cfg_node_get_node_user_count(const cfg_node *node) TW_NOEXCEPT;
/**
 * The user at a 0-based index; NULL outside the list and for an entry that could not be read. It belongs to
 * the node and ends with it.
 */
TW_API cfg_node_user *cfg_node_get_node_user(const cfg_node *node, int32_t index) TW_NOEXCEPT;

/** Name: "username". */
TW_API const char *cfg_node_user_get_username(const cfg_node_user *record) TW_NOEXCEPT;
/** Free text: "description". */
TW_API const char *cfg_node_user_get_description(const cfg_node_user *record) TW_NOEXCEPT;
/** The integer "disabled", as stored. */
TW_API int32_t cfg_node_user_get_disabled(const cfg_node_user *record) TW_NOEXCEPT;
/** Number of groups that the user is in: the entries of the list "groups". */
TW_API int32_t cfg_node_user_get_group_count(const cfg_node_user *record) TW_NOEXCEPT;
/** Name of the group at a 0-based index; NULL outside the list and for an entry that is no text. */
TW_API const char *cfg_node_user_get_group(const cfg_node_user *record, int32_t index) TW_NOEXCEPT;

/** Frees a record of the caller's; never one that cfg_node_get_node_user() gave. NULL is allowed. */
TW_API void cfg_node_user_free(cfg_node_user *record) TW_NOEXCEPT;

TW_END
#endif
