/* Roles: names of bundles of rights, which groups refer to. What a name stands for is known elsewhere. */
#ifndef TWOBJECT_ROLE_H
#define TWOBJECT_ROLE_H

#include <twobject/common.h>

TW_BEGIN

/** A role: the view of one element of the list "roles". */
typedef struct cfg_role cfg_role;
/** The IDs of all roles. */
typedef struct cfg_role_list cfg_role_list;

/** A new role without element; NULL without a name. A NULL handle gives one that cannot be saved. */
TW_API cfg_role *cfg_role_new(cfg *store, const char *rolename) TW_NOEXCEPT;

/** Loads a role; NULL when the element is missing or has no "rolename". */
TW_API cfg_role *cfg_role_get_by_id(cfg *store, const char *id) TW_NOEXCEPT;
/**
 * Loads the first committed role whose "rolename" equals a name exactly, letter case included. NULL when
 * there is none, also while the list "roles" is missing.
 */
TW_API cfg_role *cfg_role_get_by_rolename(cfg *store, const char *rolename) TW_NOEXCEPT;

/** ID of the element, looked up anew: the final one once a commit has given it. NULL without element. */
TW_API const char *cfg_role_get_uuid(cfg_role *role) TW_NOEXCEPT;

/**
 * Name: "rolename". Setting NULL keeps the old name, answers 0 and adds an "unexpected" message to the edit;
 * a role whose name was set to "" cannot be saved.
 */
TW_API const char *cfg_role_get_rolename(const cfg_role *role) TW_NOEXCEPT;
TW_API int cfg_role_set_rolename(cfg_role *role, const char *rolename) TW_NOEXCEPT;

/**
 * Writes the name. A role without ID first joins "roles" as a pending entry and gets its ID. 1, or 0: without
 * a name or the list "roles", when the role's element is gone, or when the write fails.
 */
TW_API int cfg_role_save(cfg_role *role) TW_NOEXCEPT;
/**
 * Deletes the element, when there is one. The record stays, and groups that refer to the role are not
 * touched: their references then lead nowhere.
 */
TW_API void cfg_role_delete(cfg_role *role) TW_NOEXCEPT;
/** Frees the record. NULL is allowed. */
TW_API void cfg_role_free(cfg_role *role) TW_NOEXCEPT;

/**
 * Reads the IDs of all committed roles, in list order. Without the list "roles" there are none.
 * @return a list of the caller's; NULL when memory is short
 */
TW_API cfg_role_list *cfg_role_list_new(cfg *store) TW_NOEXCEPT;
/** Number of roles in the list. */
TW_API int32_t cfg_role_list_count(const cfg_role_list *list) TW_NOEXCEPT;
/** Loads the role at a 0-based index; NULL outside the list or when it cannot be loaded any more. */
TW_API cfg_role *cfg_role_list_get_role(const cfg_role_list *list, int32_t index) TW_NOEXCEPT;
/** Frees the list; roles that were loaded through it stay. NULL is allowed. */
TW_API void cfg_role_list_free(cfg_role_list *list) TW_NOEXCEPT;

TW_END
#endif
