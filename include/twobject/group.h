/* Groups of users: their roles and members. */
#ifndef TWOBJECT_GROUP_H
#define TWOBJECT_GROUP_H

#include <twobject/common.h>
#include <twobject/user.h>

TW_BEGIN

/** A group: the view of one element of the list "groups". */
typedef struct cfg_group cfg_group;
/** A group's link to one of its members. */
typedef struct cfg_group_member cfg_group_member;
/** The IDs of all groups. */
typedef struct cfg_group_list cfg_group_list;
/** The IDs of the users who are members of a group. */
typedef struct cfg_group_member_list cfg_group_member_list;

/* ---- Records ---- */

/** A new record without element: enabled, without mode and members. NULL without a name. */
TW_API cfg_group *cfg_group_new(cfg *store, const char *groupname) TW_NOEXCEPT;

/** Loads a group with its members; NULL when the element is missing. It need not have a "groupname". */
TW_API cfg_group *cfg_group_get_by_id(cfg *store, const char *id) TW_NOEXCEPT;
/**
 * Loads the first committed group whose "groupname" equals a name exactly. NULL when there is none, also
 * while the list "groups" is missing.
 */
TW_API cfg_group *cfg_group_get_by_groupname(cfg *store, const char *groupname) TW_NOEXCEPT;

/** ID of the element, looked up anew: the final one once a commit has given it. NULL without element. */
TW_API const char *cfg_group_get_uuid(cfg_group *group) TW_NOEXCEPT;

/**
 * Writes the group. A record without ID gets an element, which joins "groups" as a pending entry. The stored
 * member list is replaced by an empty one, then name, description (NULL leaves the stored one), mode (NULL
 * leaves it) and "enabled" are written, and at last a reference for each member, the newest first. With a
 * mode, what belongs to the other modes is deleted: "global_roles" unless it is exactly "global",
 * "smart_group" unless it is exactly "smart_group". Loading and saving a group turns its stored member list
 * round each time.
 * @return 1, or 0: without the list "groups", when the element is gone, when a write fails, or at a member
 * who has not been saved. The member list may then be empty or incomplete: abandon the edit.
 */
TW_API int cfg_group_save(cfg_group *group) TW_NOEXCEPT;
/** Deletes the element, when there is one, also that of the group "admin". The record stays. */
TW_API void cfg_group_delete(cfg_group *group) TW_NOEXCEPT;
/**
 * Frees the record with all links that it ever had, those of removed members too. User records that were
 * given to it are not touched: they stay with whoever made them. NULL is allowed.
 */
TW_API void cfg_group_free(cfg_group *group) TW_NOEXCEPT;

/* ---- Fields ---- */

/**
 * Name: "groupname". Setting NULL keeps the old name, answers 0 and adds an "unexpected" message to the edit.
 */
TW_API const char *cfg_group_get_groupname(const cfg_group *group) TW_NOEXCEPT;
TW_API int cfg_group_set_groupname(cfg_group *group, const char *groupname) TW_NOEXCEPT;

/**
 * How the group's rights apply: "mode", "global" (everywhere) or "smart_group" (to the nodes of a smart
 * group); any other text is kept as it is. Setting NULL is answered as that of the name is.
 */
TW_API const char *cfg_group_get_mode(const cfg_group *group) TW_NOEXCEPT;
TW_API int cfg_group_set_mode(cfg_group *group, const char *mode) TW_NOEXCEPT;

/**
 * Description: "description". Setting NULL, and nothing else, deletes the stored one at once, without a save:
 * 1, or 0 when that cannot be done.
 */
TW_API const char *cfg_group_get_description(const cfg_group *group) TW_NOEXCEPT;
TW_API int cfg_group_set_description(cfg_group *group, const char *description) TW_NOEXCEPT;

/** Whether the group counts: "enabled", kept as it is set. An absent key reads as 0, a new record has 1. */
TW_API int32_t cfg_group_get_enabled(const cfg_group *group) TW_NOEXCEPT;
TW_API int cfg_group_set_enabled(cfg_group *group, int32_t enabled) TW_NOEXCEPT;

/* ---- Roles ---- */

/*
 * Roles are never kept in the record. The setters write the store at once, so the group must have been saved;
 * the getters read it, whatever the group's mode, and answer a heap string that the caller frees. A role name
 * that no committed role has makes a new role: a name that is used for the first time twice in one edit makes
 * two.
 */

/**
 * Lets "global_roles" refer to a role.
 * @return 1 once the role exists, also when the group has no element to attach the reference to; 0 without
 * group or memory, when the role cannot be made, and for a NULL name, which adds an "unexpected" message
 */
TW_API int cfg_group_set_global_roles(cfg_group *group, const char *rolename) TW_NOEXCEPT;
/** Name of the role that "global_roles" refers to, a new string; NULL when the way to it is broken. */
TW_API char *cfg_group_get_global_roles(const cfg_group *group) TW_NOEXCEPT;

/**
 * Lets "smart_group" refer to a role and to a smart group.
 * @param smart_group ID of the smart group's element, which must exist
 * @return 1, or 0: when group, smart group or the group's element is missing, when role or references cannot
 * be made, and for a NULL name or ID, which adds an "unexpected" message. A role that was made for it stays.
 */
TW_API int cfg_group_set_smart_group_roles(cfg_group *group, const char *rolename,
                                           const char *smart_group) TW_NOEXCEPT;
/** Name of the role that "smart_group" refers to, a new string; NULL when the way to it is broken. */
TW_API char *cfg_group_get_smart_group_roles(const cfg_group *group) TW_NOEXCEPT;
/** ID that "smart_group" holds as its smart group, a new string; NULL when there is none. */
TW_API char *cfg_group_get_smart_group(const cfg_group *group) TW_NOEXCEPT;

/* ---- Members ---- */

/*
 * A record lists its members newest first: those that were added, then the stored ones, the last of the
 * stored list first.
 *
 * A stored member is known by the ID that its reference holds, and is not loaded: a member whose user is gone
 * or cannot be loaded stays a member, counts in member lists, can be removed by its ID, and its reference is
 * written back by a save. Entries of "members" that are no references are passed over, and a save drops them.
 *
 * Of a user who is added only the ID is kept. Of one that has no ID yet, because it was never saved, the
 * group keeps the pointer until it has: free such a user after the group, or save it and then the group
 * first.
 */

/**
 * Makes a user a member; one who has an ID and is a member already is left alone. Saves neither the group nor
 * the user's own list of groups, with one exception: when the group's stored global role is "FernhollowAdmin"
 * and its name is not "admin", the user is also made a member of the committed group "admin", and both that
 * group and the user are saved; a user without element gets it then. Without a group "admin" this is skipped.
 * @return 1; 0 for NULL, without memory, and when the group "admin" or the user cannot be saved: the user is
 * then no member, and the edit, which may hold a part of it, is to be abandoned
 */
TW_API int cfg_group_add_member(cfg_group *group, cfg_user *user) TW_NOEXCEPT;
/**
 * Removes a member: every link to the given user's ID. The links live on, out of the list, until the group is
 * freed. 1, or 0 when there was none, also for a user without ID.
 */
TW_API int cfg_group_delete_member(cfg_group *group, cfg_user *user) TW_NOEXCEPT;
/**
 * Puts a new link to a user at the head of the members, even when there is one already, and does nothing
 * else.
 * @param flag how the member came: 0 read from the store, 1 added; kept with the link
 * @return the link, which belongs to the group; NULL without group, user or memory
 */
TW_API cfg_group_member *cfg_group_load_member(cfg_group *group, cfg_user *user, int32_t flag) TW_NOEXCEPT;

/**
 * The user IDs of the group's present members, in the record's order; NULL stands for a user without ID.
 * @return a list of the caller's; NULL for NULL or when memory is short
 */
TW_API cfg_group_member_list *cfg_group_member_list_new(cfg_group *group) TW_NOEXCEPT;
/** Number of members in the list. */
TW_API int32_t cfg_group_get_member_count(const cfg_group_member_list *list) TW_NOEXCEPT;
/** Loads the user at a 0-based index; NULL outside the list or when it cannot be loaded. */
TW_API cfg_user *cfg_group_member_list_get_user(const cfg_group_member_list *list, int32_t index) TW_NOEXCEPT;
/** Frees the list; users that were loaded through it stay. NULL is allowed. */
TW_API void cfg_group_member_list_free(cfg_group_member_list *list) TW_NOEXCEPT;

/* ---- All groups ---- */

/**
 * Reads the IDs of all committed groups, in list order. Without the list "groups" there are none.
 * @return a list of the caller's; NULL when memory is short
 */
TW_API cfg_group_list *cfg_group_list_new(cfg *store) TW_NOEXCEPT;
/** Number of groups in the list. */
TW_API int32_t cfg_group_list_count(const cfg_group_list *list) TW_NOEXCEPT;
/** Loads the group at a 0-based index; NULL outside the list or when it cannot be loaded any more. */
TW_API cfg_group *cfg_group_list_get_group(const cfg_group_list *list, int32_t index) TW_NOEXCEPT;
/** Frees the list; groups that were loaded through it stay. NULL is allowed. */
TW_API void cfg_group_list_free(cfg_group_list *list) TW_NOEXCEPT;

TW_END
#endif
