/* Users: the local accounts of the appliance. */
#ifndef TWOBJECT_USER_H
#define TWOBJECT_USER_H

#include <twobject/common.h>

TW_BEGIN

/** A user: the view of one element of the list "users". */
typedef struct cfg_user cfg_user;
/** The IDs of all users. */
typedef struct cfg_user_list cfg_user_list;

/* ---- Records ---- */

/**
 * A new record without element: enabled, with no password, in no group. NULL without a name. A NULL handle
 * gives a record that cannot be saved and takes no password.
 */
TW_API cfg_user *cfg_user_new(cfg *store, const char *username) TW_NOEXCEPT;

/** Loads a user; NULL when the element is missing or has no "username". */
TW_API cfg_user *cfg_user_get_by_id(cfg *store, const char *id) TW_NOEXCEPT;
/**
 * Loads the first committed user whose "username" equals a name exactly. NULL when there is none, also while
 * the list "users" is missing.
 */
TW_API cfg_user *cfg_user_get_by_username(cfg *store, const char *username) TW_NOEXCEPT;

/** ID of the element, looked up anew: the final one once a commit has given it. NULL without element. */
TW_API const char *cfg_user_get_uuid(cfg_user *user) TW_NOEXCEPT;

/**
 * Writes the user. A record without ID gets an element, which joins "users" as a pending entry. "username" is
 * written then and never again: a user cannot be renamed. A NULL description leaves the stored one; no
 * password hash deletes "hashed_password". The list "groups" is written anew with the record's groups, in
 * their order; the groups themselves, which list their members, are not touched.
 * @return 1, or 0: for a new record without name or without the list "users", when the element is gone, or
 * when a write fails; the list "groups" may then be written in part
 */
TW_API int cfg_user_save(cfg_user *user) TW_NOEXCEPT;
/**
 * Deletes the element, when there is one. The record stays. Groups that list the user are not touched: their
 * references then lead nowhere.
 * @return 1, also without element; 0 for NULL, when memory is short, and for the user "root", by the record's
 * name or the stored one, who is never deleted
 */
TW_API int cfg_user_delete(cfg_user *user) TW_NOEXCEPT;
/** Frees the record and wipes its password hash. NULL is allowed. */
TW_API void cfg_user_free(cfg_user *user) TW_NOEXCEPT;

/* ---- Fields ---- */

/** Login name: "username". A change stays in the record: no save writes it. */
TW_API const char *cfg_user_get_username(const cfg_user *user) TW_NOEXCEPT;
TW_API int cfg_user_set_username(cfg_user *user, const char *username) TW_NOEXCEPT;

/** Description: "description". A save with NULL leaves what is stored. */
TW_API const char *cfg_user_get_description(const cfg_user *user) TW_NOEXCEPT;
TW_API int cfg_user_set_description(cfg_user *user, const char *description) TW_NOEXCEPT;

/** Whether the user may log in: "enabled", kept as it is set. An absent key reads as 0, a new record has 1.
 */
TW_API int32_t cfg_user_get_enabled(const cfg_user *user) TW_NOEXCEPT;
TW_API int cfg_user_set_enabled(cfg_user *user, int32_t enabled) TW_NOEXCEPT;

/** Whether the user logs in without a password: "no_password", kept as it is set. */
TW_API int32_t cfg_user_get_no_password(const cfg_user *user) TW_NOEXCEPT;
TW_API int cfg_user_set_no_password(cfg_user *user, int32_t no_password) TW_NOEXCEPT;

/**
 * Gives the user a new password: "hashed_password", its hash by the SHA-256 method of crypt() with a fresh
 * random salt ("$5$", 16 characters, "$", the hash). The clear text is not kept. "" takes the password away.
 * The function answers nothing; a NULL password, which changes nothing, and a salt or a hash that cannot be
 * made (a password of 512 bytes or more), which leaves the user without password, each add an "unexpected"
 * message to the edit. A NULL record, or one without a store handle, is left alone.
 */
TW_API void cfg_user_set_password(cfg_user *user, const char *password) TW_NOEXCEPT;

/* ---- Groups ---- */

/*
 * The IDs of the groups that the user belongs to, in the order in which they were added: the references of
 * the list "groups"; entries that are no references are passed over, and a save does not keep them. No ID is
 * in the record twice.
 */

/** Adds a group; one that is there already stays where it is. 1; 0 for NULL or when memory is short. */
TW_API int cfg_user_add_group(cfg_user *user, const char *group) TW_NOEXCEPT;
/** Removes a group, when it is there. */
TW_API void cfg_user_remove_group(cfg_user *user, const char *group) TW_NOEXCEPT;
/** Removes all groups. */
TW_API void cfg_user_free_groups(cfg_user *user) TW_NOEXCEPT;
/** Number of groups. */
TW_API int32_t cfg_user_get_groups_count(const cfg_user *user) TW_NOEXCEPT;
/**
 * The ID of the next group: as many calls as there are groups give each once, and the next call begins again
 * with the first. The record remembers how far it got, also while groups are added and removed. NULL without
 * groups. The ID is borrowed until that group is removed.
 */
TW_API const char *cfg_user_get_group(cfg_user *user) TW_NOEXCEPT;

/* ---- All users ---- */

/**
 * Reads the IDs of all committed users, in list order. Without the list "users" there are none.
 * @return a list of the caller's; NULL when memory is short
 */
TW_API cfg_user_list *cfg_user_list_new(cfg *store) TW_NOEXCEPT;
/** Number of users in the list. */
TW_API int32_t cfg_user_list_count(const cfg_user_list *list) TW_NOEXCEPT;
/** Loads the user at a 0-based index; NULL outside the list or when it cannot be loaded any more. */
TW_API cfg_user *cfg_user_list_get_user(const cfg_user_list *list, int32_t index) TW_NOEXCEPT;
/** Frees the list; users that were loaded through it stay. NULL is allowed. */
TW_API void cfg_user_list_free(cfg_user_list *list) TW_NOEXCEPT;

TW_END
#endif
