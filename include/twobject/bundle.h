/* Enrollment bundles: named sets of defaults for the nodes that are enrolled with them. */
#ifndef TWOBJECT_BUNDLE_H
#define TWOBJECT_BUNDLE_H

#include <twobject/common.h>
#include <twobject/tag.h>
#include <twobject/template.h>

TW_BEGIN

/** An enrollment bundle: the view of one element of the list "enrollment.bundles". */
typedef struct cfg_bundle cfg_bundle;
/** The IDs of all bundles. */
typedef struct cfg_bundle_list cfg_bundle_list;

/* ---- Creating, loading, saving ---- */

/**
 * A new bundle without element, tags and templates.
 * @param name, token copied; without one of them there is no bundle
 * @param auto_approve as for cfg_bundle_set_auto_approve()
 * @return a record of the caller's; NULL without name or token. A NULL handle gives one that cannot be saved.
 */
TW_API cfg_bundle *cfg_bundle_new(cfg *store, const char *name, const char *token,
                                  int32_t auto_approve) TW_NOEXCEPT;
/** Loads a bundle; NULL when the element is missing. All its keys are optional. */
TW_API cfg_bundle *cfg_bundle_get_by_id(cfg *store, const char *id) TW_NOEXCEPT;
/** Loads the first bundle that has this name, compared exactly; NULL when there is none. */
TW_API cfg_bundle *cfg_bundle_get_by_name(cfg *store, const char *name) TW_NOEXCEPT;
/**
 * Writes the bundle. One without ID first joins "enrollment.bundles" at once, not as a pending entry, with an
 * empty list "automatic_tags". "templates" is written whole, from the templates that the record has read or
 * was given: to keep those of the store, ask for cfg_bundle_get_template_count() before the save. The
 * automatic tags stay as they are.
 * @return 1, or 0 when the list or the element is missing, when a write fails or when a template's ID is NULL
 */
TW_API int cfg_bundle_save(cfg_bundle *bundle) TW_NOEXCEPT;
/** Deletes the element; 0 when there is none. The record stays. */
TW_API int cfg_bundle_delete(cfg_bundle *bundle) TW_NOEXCEPT;
/** Frees the bundle. NULL is allowed. */
TW_API void cfg_bundle_free(cfg_bundle *bundle) TW_NOEXCEPT;

/** ID of the element, looked up anew: the final one once a commit has given it. NULL until it is saved. */
TW_API const char *cfg_bundle_get_uuid(cfg_bundle *bundle) TW_NOEXCEPT;

/** Name: "name". The setter ignores NULL, answering 0. */
TW_API const char *cfg_bundle_get_name(const cfg_bundle *bundle) TW_NOEXCEPT;
TW_API int cfg_bundle_set_name(cfg_bundle *bundle, const char *name) TW_NOEXCEPT;

/** What nodes present to be enrolled with the bundle: "token", a secret. The setter ignores NULL, answering
 * 0. */
TW_API const char *cfg_bundle_get_token(const cfg_bundle *bundle) TW_NOEXCEPT;
TW_API int cfg_bundle_set_token(cfg_bundle *bundle, const char *token) TW_NOEXCEPT;

/** Whether nodes are approved at once, 0 or 1: "auto_approve". Any value but 0 is kept as 1. */
TW_API int32_t cfg_bundle_get_auto_approve(const cfg_bundle *bundle) TW_NOEXCEPT;
TW_API int cfg_bundle_set_auto_approve(cfg_bundle *bundle, int32_t auto_approve) TW_NOEXCEPT;

/* ---- Automatic tags: the tag values that nodes are given ---- */

/*
 * The list "automatic_tags" holds references to tag values. Their IDs are read when they are first asked for,
 * the committed ones and behind them the pending ones; an empty list is read again each time. The functions
 * that change references work on the store: the record does not notice.
 */

/** Number of references. */
TW_API int32_t cfg_bundle_get_automatic_tag_count(cfg_bundle *bundle) TW_NOEXCEPT;
/** ID of the reference at a 0-based index; NULL outside the list. */
TW_API const char *cfg_bundle_get_automatic_tag_ref_uuid(cfg_bundle *bundle, int32_t index) TW_NOEXCEPT;
/** Loads the value that the reference at a 0-based index leads to; NULL outside the list or without value. */
TW_API cfg_tag_value *cfg_bundle_get_automatic_tag(cfg_bundle *bundle, int32_t index) TW_NOEXCEPT;
/** Loads the value that a reference leads to; NULL when it is none of the bundle's or leads nowhere. */
TW_API cfg_tag_value *cfg_bundle_get_automatic_tag_by_ref_uuid(cfg_bundle *bundle,
                                                               const char *ref) TW_NOEXCEPT;
/** ID of the bundle's first reference that leads to this value; NULL when there is none. */
TW_API const char *cfg_bundle_get_tag_ref_uuid_by_value(cfg_bundle *bundle,
                                                        const cfg_tag_value *value) TW_NOEXCEPT;
/** Appends a reference to a saved value, as a pending entry. 0 when the bundle is not saved or has no list.
 */
TW_API int cfg_bundle_save_automatic_tag(cfg_bundle *bundle, const cfg_tag_value *value) TW_NOEXCEPT;
/** Lets a reference lead to another saved value. 0 when there is no such reference, or for a NULL value. */
TW_API int cfg_bundle_update_automatic_tag(cfg *store, const char *ref,
                                           const cfg_tag_value *value) TW_NOEXCEPT;
/** Deletes a reference. 0 when there is no such reference. */
TW_API int cfg_bundle_delete_automatic_tag(cfg *store, const char *ref) TW_NOEXCEPT;

/* ---- Templates that are pushed to nodes ---- */

/*
 * The IDs of the templates are read when they are first asked for; "none" is not remembered, and is read
 * again each time, cleared templates as well until the bundle is saved. References in the list "templates"
 * that are pending stand in the first places, over those of committed ones, and as many places at the end are
 * empty.
 */

/** Number of templates. */
TW_API int32_t cfg_bundle_get_template_count(cfg_bundle *bundle) TW_NOEXCEPT;
/** ID of the template at a 0-based index; NULL outside the list and for an empty place. */
TW_API const char *cfg_bundle_get_template_uuid(cfg_bundle *bundle, int32_t index) TW_NOEXCEPT;
/** Loads the template at a 0-based index; NULL outside the list or without template. */
TW_API cfg_template *cfg_bundle_get_template(cfg_bundle *bundle, int32_t index) TW_NOEXCEPT;
/** Drops the record's templates; saved then, the bundle has none. 1; 0 for NULL. */
TW_API int cfg_bundle_clear_templates(cfg_bundle *bundle) TW_NOEXCEPT;
/** Adds a template to those that the record has, without reading the store's. 1; 0 for NULL. */
TW_API int cfg_bundle_add_template(cfg_bundle *bundle, const char *id) TW_NOEXCEPT;

/* ---- Nodes of the bundle, as the search service finds them ---- */

/*
 * They are asked for in the name of a security context (twobject/search.h), which may be NULL, when the
 * record has none; a bundle without nodes asks the service each time. A service that does not answer has
 * found none.
 */

/** Asks the service, whatever the record has. 1 when it has answered; 0 otherwise, and there are no nodes. */
TW_API int cfg_bundle_init_nodes(cfg_bundle *bundle, const char *secctxt) TW_NOEXCEPT;
/** Number of nodes. */
TW_API int32_t cfg_bundle_get_node_count(cfg_bundle *bundle, const char *secctxt) TW_NOEXCEPT;
/** ID of the node at a 0-based index; NULL outside the nodes. */
TW_API const char *cfg_bundle_get_node_id(cfg_bundle *bundle, int32_t index, const char *secctxt) TW_NOEXCEPT;

/* ---- The token of nodes that ask to be enrolled without a bundle ---- */

/** The appliance's request token, "enrollment.request_token", a secret: a heap copy, or NULL without. */
TW_API char *cfg_bundle_get_global_request_token(cfg *store) TW_NOEXCEPT;
/** Writes the request token. 0 for NULL and without the map "enrollment". */
TW_API int cfg_bundle_set_global_request_token(cfg *store, const char *token) TW_NOEXCEPT;
/** Removes the request token. 1, also when there was none; 0 without the map "enrollment". */
TW_API int cfg_bundle_delete_global_request_token(cfg *store) TW_NOEXCEPT;

/* ---- All bundles ---- */

/** Reads the IDs of the bundles, in list order; none without the list "enrollment.bundles". */
TW_API cfg_bundle_list *cfg_bundle_list_new(cfg *store) TW_NOEXCEPT;
/** Number of bundles. */
TW_API int32_t cfg_bundle_list_count(const cfg_bundle_list *list) TW_NOEXCEPT;
/** Loads the bundle at a 0-based index; NULL outside the list or when its element is gone. */
TW_API cfg_bundle *cfg_bundle_list_get_bundle(const cfg_bundle_list *list, int32_t index) TW_NOEXCEPT;
/** Frees the list. NULL is allowed. */
TW_API void cfg_bundle_list_free(cfg_bundle_list *list) TW_NOEXCEPT;

TW_END
#endif
