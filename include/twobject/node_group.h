/* Local groups of nodes. */
#ifndef TWOBJECT_NODE_GROUP_H
#define TWOBJECT_NODE_GROUP_H

#include <twobject/common.h>
#include <twobject/node.h>

TW_BEGIN

/** A local group of a "tarnwell" node: one entry of the node's list "groups". */
typedef struct cfg_node_group cfg_node_group;

/* ---- The groups of a node ---- */

/** Number of groups; they are read with a "tarnwell" node, and every other node begins without. */
TW_API int32_t cfg_node_get_node_group_count(const cfg_node *node) TW_NOEXCEPT;
/**
 * The group at a 0-based index; NULL outside the list and for an entry that could not be read. It belongs to
 * the node and ends with it; it may be changed.
 */
TW_API cfg_node_group *cfg_node_get_node_group(const cfg_node *node, int32_t index) TW_NOEXCEPT;
/** A new group behind the node's others, which belongs to the node. NULL for a NULL name. */
TW_API cfg_node_group *cfg_node_new_group(cfg_node *node, const char *name) TW_NOEXCEPT;
/**
 * Takes a group out of the node's record. The group is not freed: from now on it is the caller's.
 * @return 1, or 0 with nothing changed when it is none of the node's or memory is short
 */
TW_API int cfg_node_delete_group(cfg_node *node, const cfg_node_group *group) TW_NOEXCEPT;
/**
 * Replaces the node's list "groups" by the groups of the record: for each, in order, "groupname",
 * "description", "system" and the list "roles".
 * @return 1, or 0 when the node is NULL, its element is missing or the list cannot be replaced. Deliberately
 * also 1 when single writes fail: a text that the store refuses is then left out.
 */
TW_API int cfg_node_save_groups(cfg_node *node) TW_NOEXCEPT;

/** Frees a group that cfg_node_delete_group() took out; never one that is still a node's. NULL is allowed. */
TW_API void cfg_node_group_free(cfg_node_group *group) TW_NOEXCEPT;

/* ---- A group ---- */

/** Name: "groupname". */
TW_API const char *cfg_node_group_get_groupname(const cfg_node_group *group) TW_NOEXCEPT;

/** Free text: "description". */
TW_API const char *cfg_node_group_get_description(const cfg_node_group *group) TW_NOEXCEPT;
TW_API int cfg_node_group_set_description(cfg_node_group *group, const char *description) TW_NOEXCEPT;

/** Whether the group is one of the node's own, 0 or 1: "system". Any value but 0 is kept as 1. */
TW_API int32_t cfg_node_group_get_system(const cfg_node_group *group) TW_NOEXCEPT;
TW_API int cfg_node_group_set_system(cfg_node_group *group, int32_t is_system) TW_NOEXCEPT;

/** Number of roles: the entries of the list "roles". */
TW_API int32_t cfg_node_group_get_role_count(const cfg_node_group *group) TW_NOEXCEPT;
/** The role at a 0-based index; NULL outside the list and for an entry that is no text. */
TW_API const char *cfg_node_group_get_role(const cfg_node_group *group, int32_t index) TW_NOEXCEPT;
/** Adds a role behind the others. 1, or 0 for NULL or when memory is short. */
TW_API int cfg_node_group_add_role(cfg_node_group *group, const char *role) TW_NOEXCEPT;

TW_END
#endif
