/* Smart groups: saved searches, whose members are whatever matches when one asks. */
#ifndef TWOBJECT_SMART_GROUPS_H
#define TWOBJECT_SMART_GROUPS_H

#include <twobject/common.h>

TW_BEGIN

/**
 * A smart group over objects of one type: the view of one element of the list "smart_groups.<type>_groups".
 * Types are those of the search service, such as "nodes". A path of more than 127 bytes is cut.
 */
typedef struct cfg_smartgroup cfg_smartgroup;
/** The smart groups of one type: the IDs that the list held when it was made. */
typedef struct cfg_smartgroup_list cfg_smartgroup_list;

/** A new record without element; NULL when a text is NULL. */
TW_API cfg_smartgroup *cfg_smartgroup_new(cfg *store, const char *type, const char *name,
                                          const char *query) TW_NOEXCEPT;
/** Loads a group; NULL when the element is missing or has no "name" or no "query", and for a NULL type. */
TW_API cfg_smartgroup *cfg_smartgroup_get_by_id(cfg *store, const char *type, const char *id) TW_NOEXCEPT;
/** Loads the first group of a type that has this name exactly; NULL when there is none. */
TW_API cfg_smartgroup *cfg_smartgroup_get_by_name(cfg *store, const char *type, const char *name) TW_NOEXCEPT;

/** ID of the element, looked up anew: the final one once a commit has given it. NULL without element. */
TW_API const char *cfg_smartgroup_get_uuid(cfg_smartgroup *group) TW_NOEXCEPT;

/** Display name: "name". */
TW_API const char *cfg_smartgroup_get_name(const cfg_smartgroup *group) TW_NOEXCEPT;
TW_API int cfg_smartgroup_set_name(cfg_smartgroup *group, const char *name) TW_NOEXCEPT;

/** What the members match: "query", a condition as JSON text that json_dump_to_condition() reads. */
TW_API const char *cfg_smartgroup_get_query(const cfg_smartgroup *group) TW_NOEXCEPT;
TW_API int cfg_smartgroup_set_query(cfg_smartgroup *group, const char *query) TW_NOEXCEPT;

/**
 * Writes the group. One that is new becomes an entry of its type's list at once, not a pending one. 0 for a
 * NULL group, one without name or query, and a new one whose list is missing.
 */
TW_API int cfg_smartgroup_save(cfg_smartgroup *group) TW_NOEXCEPT;
/** Deletes the element; 0 when there is none. The record stays. */
TW_API int cfg_smartgroup_delete(cfg_smartgroup *group) TW_NOEXCEPT;
/** Frees the record. NULL is allowed. */
TW_API void cfg_smartgroup_free(cfg_smartgroup *group) TW_NOEXCEPT;

/**
 * Has the search service find the members.
 * @return the ID of the result for twsearch_fetch(), a heap string; NULL also for a group without query, for
 * which the service is not asked
 */
TW_API char *cfg_smartgroup_create_search(const cfg_smartgroup *group) TW_NOEXCEPT;
/**
 * Finds the members.
 * @param members receives their IDs, a heap array of heap strings with NULL behind the last, or NULL when
 * there are none: free each, then the array. Untouched on failure.
 * @return the number of matches that the service reports; 0 on failure, which looks like no match
 */
TW_API int32_t cfg_smartgroup_evaluate(const cfg_smartgroup *group, char ***members) TW_NOEXCEPT;

/** The groups of a type; none when the type has no list yet. NULL for a NULL type. */
TW_API cfg_smartgroup_list *cfg_smartgroup_list_new(cfg *store, const char *type) TW_NOEXCEPT;
/** Number of groups in the list. */
TW_API int32_t cfg_smartgroup_list_count(const cfg_smartgroup_list *list) TW_NOEXCEPT;
/** Loads the group at a 0-based index; NULL outside the list. */
TW_API cfg_smartgroup *cfg_smartgroup_list_get_smartgroup(const cfg_smartgroup_list *list,
                                                          int32_t index) TW_NOEXCEPT;
/** Frees the list but, by design, not the bare array of its IDs. NULL is allowed. */
TW_API void cfg_smartgroup_list_free(cfg_smartgroup_list *list) TW_NOEXCEPT;
/** Frees the list with the array, which nobody else can. NULL is allowed. */
TW_API void cfg_smartgroup_list_dispose(cfg_smartgroup_list *list) TW_NOEXCEPT;

TW_END
#endif
