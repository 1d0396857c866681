/* Templates: named pieces of configuration that are pushed to nodes. */
#ifndef TWOBJECT_TEMPLATE_H
#define TWOBJECT_TEMPLATE_H

#include <twobject/common.h>

TW_BEGIN

/**
 * A template: the view of one element of the list "templates". What it carries beside its name and
 * description depends on its type: twobject/template_users_groups.h, template_auth.h and template_script.h.
 */
typedef struct cfg_template cfg_template;
/** The IDs of all templates. */
typedef struct cfg_template_list cfg_template_list;

/** Types of template, with their texts in the store. */
enum {
  CFG_TEMPLATE_DUMMY = 0,        /**< "dummy": a text, for trying templates out */
  CFG_TEMPLATE_USERS_GROUPS = 1, /**< "users_groups": changes of users and groups */
  CFG_TEMPLATE_PORTS = 2,        /**< "ports": name and description only */
  CFG_TEMPLATE_NETWORK = 3,      /**< "network": name and description only */
  CFG_TEMPLATE_AUTH = 4,         /**< "auth": authentication settings */
  CFG_TEMPLATE_SCRIPT = 5,       /**< "script": a script to run */
  CFG_TEMPLATE_INVALID = 6       /**< no type; it has no text */
};

/** The text of a type; a constant, NULL for CFG_TEMPLATE_INVALID and any other number. */
TW_API const char *cfg_template_type_enum_to_string(int32_t type) TW_NOEXCEPT;
/** The type with this text, compared exactly; CFG_TEMPLATE_INVALID for others and NULL. */
TW_API int32_t cfg_template_type_string_to_enum(const char *text) TW_NOEXCEPT;

/* ---- Creating, loading, saving ---- */

/**
 * A new template without element, set up for its type.
 * @param name copied; NULL gives no record
 * @param type kept as it is
 * @return a record of the caller's; NULL without a name. A NULL handle gives one that cannot be saved.
 */
TW_API cfg_template *cfg_template_new(cfg *store, const char *name, int32_t type) TW_NOEXCEPT;
/**
 * Loads a template with what its type carries. Keys that are absent or of another kind read as NULL or 0, the
 * type as CFG_TEMPLATE_INVALID: nothing but a missing element makes this fail.
 */
TW_API cfg_template *cfg_template_get_by_id(cfg *store, const char *id) TW_NOEXCEPT;
/**
 * Writes "name", "description", "template_type" (deleted when the type has no text) and what the type
 * carries. A template without ID first joins "templates" as a pending entry. Does not abort on NULL.
 * @return 1, also when the store did not take one of the values or the element of a saved template is gone;
 * 0 for NULL, for a new template without the list "templates", and when memory is short
 */
TW_API int cfg_template_save(cfg_template *record) TW_NOEXCEPT;
/** Deletes the element. The record stays. 1, or 0 when there is no such element. */
TW_API int cfg_template_delete(cfg_template *record) TW_NOEXCEPT;
/**
 * Frees the record's block and its name, and nothing else: the other texts that were read from the record,
 * and all that its type carries, stay and belong to the caller, with the functions of the type to release
 * them. NULL is allowed.
 */
TW_API void cfg_template_free(cfg_template *record) TW_NOEXCEPT;
/** Frees the record with all that cfg_template_free() leaves, for who has kept none of it. NULL is allowed.
 */
TW_API void cfg_template_dispose(cfg_template *record) TW_NOEXCEPT;

/* ---- What every template has ---- */

/** ID of the element, looked up anew: the final one once a commit has given it. NULL until it is saved. */
TW_API const char *cfg_template_get_uuid(cfg_template *record) TW_NOEXCEPT;

/** Name: "name". The setter ignores NULL, answering 0. */
TW_API const char *cfg_template_get_name(const cfg_template *record) TW_NOEXCEPT;
TW_API int cfg_template_set_name(cfg_template *record, const char *name) TW_NOEXCEPT;

/** Description: "description". The setter ignores NULL, answering 0; "" clears. */
TW_API const char *cfg_template_get_description(const cfg_template *record) TW_NOEXCEPT;
TW_API int cfg_template_set_description(cfg_template *record, const char *description) TW_NOEXCEPT;

/**
 * Type: "template_type". The getter gives CFG_TEMPLATE_INVALID for NULL. The setter keeps any number and
 * changes nothing else: it does not set the record up for the new type as cfg_template_new() does.
 */
TW_API int32_t cfg_template_get_type(const cfg_template *record) TW_NOEXCEPT;
TW_API int cfg_template_set_type(cfg_template *record, int32_t type) TW_NOEXCEPT;

/** What a template of type CFG_TEMPLATE_DUMMY carries: "dummy_field". The setter ignores NULL, answering 0.
 */
TW_API const char *cfg_dummy_template_get_dummy_field(const cfg_template *record) TW_NOEXCEPT;
TW_API int cfg_dummy_template_set_dummy_field(cfg_template *record, const char *text) TW_NOEXCEPT;

/* ---- All templates ---- */

/** Reads the IDs of the committed templates, in list order; none without the list "templates". */
TW_API cfg_template_list *cfg_template_list_new(cfg *store) TW_NOEXCEPT;
/** Number of templates. */
TW_API int32_t cfg_template_list_count(const cfg_template_list *list) TW_NOEXCEPT;
/** Loads the template at a 0-based index; NULL outside the list or when its element is gone. */
TW_API cfg_template *cfg_template_list_get_template(const cfg_template_list *list, int32_t index) TW_NOEXCEPT;
/** Frees the list. NULL is allowed. */
TW_API void cfg_template_list_free(cfg_template_list *list) TW_NOEXCEPT;

TW_END
#endif
