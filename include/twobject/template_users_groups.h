/* Templates that change users and groups. */
#ifndef TWOBJECT_TEMPLATE_USERS_GROUPS_H
#define TWOBJECT_TEMPLATE_USERS_GROUPS_H

#include <twobject/common.h>
#include <twobject/template.h>

TW_BEGIN

/*
 * What a template of type CFG_TEMPLATE_USERS_GROUPS carries: one operation on the local users and groups of
 * nodes. cfg_template_new() and cfg_template_get_by_id() set it up and read it for that type alone; the
 * record of any other type has the operation CFG_UGT_NONE and nothing else.
 */

/** One user of an operation. */
typedef struct cfg_ugt_user_operation cfg_ugt_user_operation;
/** One group of an operation. */
typedef struct cfg_ugt_group_operation cfg_ugt_group_operation;

/** Operations, with their texts in the store. */
enum {
  CFG_UGT_NONE = 0,           /**< nothing; written as "unknown" */
  CFG_UGT_USER_ADD = 1,       /**< "user_add" */
  CFG_UGT_USER_MODIFY = 2,    /**< "user_modify" */
  CFG_UGT_USER_REMOVE = 3,    /**< "user_remove" */
  CFG_UGT_USER_SET_LIST = 4,  /**< "user_set_list" */
  CFG_UGT_GROUP_ADD = 5,      /**< "group_add" */
  CFG_UGT_GROUP_MODIFY = 6,   /**< "group_modify" */
  CFG_UGT_GROUP_REMOVE = 7,   /**< "group_remove" */
  CFG_UGT_GROUP_SET_LIST = 8, /**< "group_set_list" */
  CFG_UGT_MEMBERSHIP = 9      /**< "membership": which users are in which groups */
};

/** The text of an operation; a constant, "unknown" for CFG_UGT_NONE and any number that is none. */
TW_API const char *cfg_ugt_op_type_to_string(int32_t operation) TW_NOEXCEPT;
/** The operation with this text, compared exactly; CFG_UGT_NONE for others and NULL. */
TW_API int32_t cfg_ugt_string_to_op_type(const char *text) TW_NOEXCEPT;

/* ---- The template ---- */

/** Operation: "ug_operation_type". The setter keeps any number. */
TW_API int32_t cfg_ugt_get_operation(const cfg_template *record) TW_NOEXCEPT;
TW_API int cfg_ugt_set_operation(cfg_template *record, int32_t operation) TW_NOEXCEPT;

/**
 * Puts a user behind the others: one entry of "ug_user_changes". The template takes the user over, once.
 * @return 1; 0 for NULL and when memory is short, and the user is still the caller's
 */
TW_API int cfg_ugt_add_user_operation(cfg_template *record, cfg_ugt_user_operation *user) TW_NOEXCEPT;
/** Number of users. */
TW_API int32_t cfg_ugt_get_user_operations_count(const cfg_template *record) TW_NOEXCEPT;
/**
 * The user at a 0-based index, which belongs to the template and may be changed; NULL outside the list.
 * cfg_template_free() leaves it to the caller.
 */
TW_API cfg_ugt_user_operation *cfg_ugt_get_user_operation(const cfg_template *record,
                                                          int32_t index) TW_NOEXCEPT;
/** Frees all users of the template. NULL is allowed. */
TW_API void cfg_ugt_clear_user_operations(cfg_template *record) TW_NOEXCEPT;

/** The same for groups: one entry of "ug_group_changes". */
TW_API int cfg_ugt_add_group_operation(cfg_template *record, cfg_ugt_group_operation *group) TW_NOEXCEPT;
/** Number of groups. */
TW_API int32_t cfg_ugt_get_group_operations_count(const cfg_template *record) TW_NOEXCEPT;
/**
 * The group at a 0-based index, which belongs to the template and may be changed; NULL outside the list.
 * cfg_template_free() leaves it to the caller.
 */
TW_API cfg_ugt_group_operation *cfg_ugt_get_group_operation(const cfg_template *record,
                                                            int32_t index) TW_NOEXCEPT;
/** Frees all groups of the template. NULL is allowed. */
TW_API void cfg_ugt_clear_group_operations(cfg_template *record) TW_NOEXCEPT;

/** Puts a name behind the others of "ug_membership_users". 1, or 0 for NULL or when memory is short. */
TW_API int cfg_ugt_add_membership_user(cfg_template *record, const char *name) TW_NOEXCEPT;
/** Number of these names. */
TW_API int32_t cfg_ugt_get_membership_users_count(const cfg_template *record) TW_NOEXCEPT;
/**
 * The name at a 0-based index; NULL outside the list and for an entry that is no text. Borrowed;
 * cfg_template_free() leaves it to the caller.
 */
TW_API const char *cfg_ugt_get_membership_user(const cfg_template *record, int32_t index) TW_NOEXCEPT;
/** Frees all these names. NULL is allowed. */
TW_API void cfg_ugt_clear_membership_users(cfg_template *record) TW_NOEXCEPT;

/** The same for "ug_membership_groups". */
TW_API int cfg_ugt_add_membership_group(cfg_template *record, const char *name) TW_NOEXCEPT;
/** Number of these names. */
TW_API int32_t cfg_ugt_get_membership_groups_count(const cfg_template *record) TW_NOEXCEPT;
/**
 * The name at a 0-based index; NULL outside the list and for an entry that is no text. Borrowed;
 * cfg_template_free() leaves it to the caller.
 */
TW_API const char *cfg_ugt_get_membership_group(const cfg_template *record, int32_t index) TW_NOEXCEPT;
/** Frees all these names. NULL is allowed. */
TW_API void cfg_ugt_clear_membership_groups(cfg_template *record) TW_NOEXCEPT;

/**
 * Whether the users join the groups or leave them: "ug_add_membership". 1 in a new template of this type. Any
 * number is kept as it is.
 */
TW_API int32_t cfg_ugt_get_add_membership(const cfg_template *record) TW_NOEXCEPT;
TW_API int cfg_ugt_set_add_membership(cfg_template *record, int32_t add) TW_NOEXCEPT;

/* ---- One user ---- */

/** A new user without anything, for cfg_ugt_add_user_operation(). NULL when memory is short. */
TW_API cfg_ugt_user_operation *cfg_ugt_new_user_operation(void) TW_NOEXCEPT;
/**
 * Empties a user: its texts are freed, the password wiped. The record itself stays: one that no template has
 * taken, and one that cfg_template_free() left, goes with free() behind this. NULL is allowed.
 */
TW_API void cfg_ugt_free_user_operation(cfg_ugt_user_operation *user) TW_NOEXCEPT;

/** Login name: "username". */
TW_API const char *cfg_ugt_user_operation_get_username(const cfg_ugt_user_operation *user) TW_NOEXCEPT;
TW_API int cfg_ugt_user_operation_set_username(cfg_ugt_user_operation *user, const char *name) TW_NOEXCEPT;

/** Free text: "description". */
TW_API const char *cfg_ugt_user_operation_get_description(const cfg_ugt_user_operation *user) TW_NOEXCEPT;
TW_API int cfg_ugt_user_operation_set_description(cfg_ugt_user_operation *user,
                                                  const char *description) TW_NOEXCEPT;

/** Password: "password". It is kept as it is set; whether it is hashed is for the caller to know. */
TW_API const char *cfg_ugt_user_operation_get_password(const cfg_ugt_user_operation *user) TW_NOEXCEPT;
TW_API int cfg_ugt_user_operation_set_password(cfg_ugt_user_operation *user,
                                               const char *password) TW_NOEXCEPT;

/** Whether the user may not log in: "disabled", which is absent for 0. Any number is kept as it is. */
TW_API int32_t cfg_ugt_user_operation_get_disabled(const cfg_ugt_user_operation *user) TW_NOEXCEPT;
TW_API int cfg_ugt_user_operation_set_disabled(cfg_ugt_user_operation *user, int32_t disabled) TW_NOEXCEPT;

/** Number of the user's groups: the entries of the list "groups". */
TW_API int32_t cfg_ugt_user_operation_get_groups_count(const cfg_ugt_user_operation *user) TW_NOEXCEPT;
/** The group's name at a 0-based index; NULL outside the list and for an entry that is no text. */
TW_API const char *cfg_ugt_user_operation_get_group(const cfg_ugt_user_operation *user,
                                                    int32_t index) TW_NOEXCEPT;
/** Puts a group's name behind the others. 1, or 0 for NULL or when memory is short. */
TW_API int cfg_ugt_user_operation_add_group(cfg_ugt_user_operation *user, const char *group) TW_NOEXCEPT;
/** Frees all names of groups. NULL is allowed. */
TW_API void cfg_ugt_user_operation_clear_groups(cfg_ugt_user_operation *user) TW_NOEXCEPT;

/* ---- One group ---- */

/** A new group without anything, for cfg_ugt_add_group_operation(). NULL when memory is short. */
TW_API cfg_ugt_group_operation *cfg_ugt_new_group_operation(void) TW_NOEXCEPT;
/**
 * Empties a group: its texts are freed. The record itself stays: one that no template has taken, and one that
 * cfg_template_free() left, goes with free() behind this. NULL is allowed.
 */
TW_API void cfg_ugt_free_group_operation(cfg_ugt_group_operation *group) TW_NOEXCEPT;

/** Name: "groupname". */
TW_API const char *cfg_ugt_group_operation_get_groupname(const cfg_ugt_group_operation *group) TW_NOEXCEPT;
TW_API int cfg_ugt_group_operation_set_groupname(cfg_ugt_group_operation *group,
                                                 const char *name) TW_NOEXCEPT;

/** Free text: "description". */
TW_API const char *cfg_ugt_group_operation_get_description(const cfg_ugt_group_operation *group) TW_NOEXCEPT;
TW_API int cfg_ugt_group_operation_set_description(cfg_ugt_group_operation *group,
                                                   const char *description) TW_NOEXCEPT;

/** Number of the group's roles: the entries of the list "roles". */
TW_API int32_t cfg_ugt_group_operation_get_roles_count(const cfg_ugt_group_operation *group) TW_NOEXCEPT;
/** The role at a 0-based index; NULL outside the list and for an entry that is no text. */
TW_API const char *cfg_ugt_group_operation_get_role(const cfg_ugt_group_operation *group,
                                                    int32_t index) TW_NOEXCEPT;
/** Puts a role behind the others. 1, or 0 for NULL or when memory is short. */
TW_API int cfg_ugt_group_operation_add_role(cfg_ugt_group_operation *group, const char *role) TW_NOEXCEPT;
/** Frees all roles. NULL is allowed. */
TW_API void cfg_ugt_group_operation_clear_roles(cfg_ugt_group_operation *group) TW_NOEXCEPT;

/* ---- What the template functions do for this type ---- */

/** Makes the record one without operation, users, groups and names, that adds memberships. 1, or 0 for NULL.
 */
TW_API int cfg_ugt_new_setup(cfg_template *record) TW_NOEXCEPT;
/**
 * Reads "ug_operation_type" from a template's map and what that operation uses: "ug_user_changes",
 * "ug_group_changes", or the three keys of a membership. A list that is absent is empty. A map without the
 * operation changes nothing, one with an unknown operation nothing else.
 * @return 1; 0 for NULL and when memory is short
 */
TW_API int cfg_ugt_load_from_config(cfg_template *record, cfg_elem *map) TW_NOEXCEPT;
/**
 * Writes the operation to a template's map, "unknown" when it is none, and new lists of what it uses over
 * those that are there. What the map has of other operations stays. Does not abort on NULL.
 * @return 1, also when the store did not take one of the values; 0 for NULL and when memory is short
 */
TW_API int cfg_ugt_save_to_config(cfg_template *record, cfg_elem *map) TW_NOEXCEPT;

/**
 * Reads one user, or one group, from its map. All keys are optional.
 * @return a record of the caller's, like that of cfg_ugt_new_user_operation(); NULL for NULL and when memory
 * is short
 */
TW_API cfg_ugt_user_operation *cfg_ugt_load_user_operation_from_config(cfg *store, cfg_elem *map) TW_NOEXCEPT;
TW_API cfg_ugt_group_operation *cfg_ugt_load_group_operation_from_config(cfg *store,
                                                                         cfg_elem *map) TW_NOEXCEPT;
/**
 * Writes one user, or one group, to a new map. Texts that are NULL and a "disabled" of 0 have no key; the
 * list of groups, or roles, is always there. What the store does not take is left out.
 * @return the map, attached nowhere; NULL for NULL and when memory is short
 */
TW_API cfg_elem *cfg_ugt_save_user_operation_to_config(cfg *store,
                                                       const cfg_ugt_user_operation *user) TW_NOEXCEPT;
TW_API cfg_elem *cfg_ugt_save_group_operation_to_config(cfg *store,
                                                        const cfg_ugt_group_operation *group) TW_NOEXCEPT;

TW_END
#endif
