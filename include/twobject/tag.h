/* Tags and their values: what nodes are marked with. */
#ifndef TWOBJECT_TAG_H
#define TWOBJECT_TAG_H

#include <twobject/common.h>

TW_BEGIN

/** A tag: the view of one element of the list of its kind. */
typedef struct cfg_tag cfg_tag;
/** One of the values that a tag can have: the view of one element of the tag's list "values". */
typedef struct cfg_tag_value cfg_tag_value;
/** The IDs of all tags of a kind. */
typedef struct cfg_tag_list cfg_tag_list;

/** Kinds of tag; each has a list in the store. Any other number stands for no kind. */
enum { CFG_TAG_NODE = 0, CFG_TAG_UNKNOWN = 1 };

/** The path of a kind's list, "tags.node_tags"; a constant, or NULL when there is no such kind. */
TW_API const char *cfg_tag_type_to_path(int32_t type) TW_NOEXCEPT;
/** The kind whose list has this path, compared without regard to case; CFG_TAG_UNKNOWN for others and NULL.
 */
TW_API int32_t cfg_path_to_tag_type(const char *path) TW_NOEXCEPT;

/*
 * Arrays of IDs. The functions that give a whole array (tag_list_get_all_tags(), tag_get_all_values()) give
 * the record's own: it holds as many texts as the record counts, and is NULL when there never were any.
 * Freeing the record frees the texts but not the array's block: from then on this belongs to the caller, who
 * gives it to free().
 */

/* ---- All tags of a kind ---- */

/**
 * Reads the IDs of the committed tags of a kind, in list order.
 * @return a list of the caller's; NULL when there is no such kind or no such list in the store
 */
TW_API cfg_tag_list *cfg_get_tag_list(cfg *store, int32_t type) TW_NOEXCEPT;
/**
 * Frees the list with its IDs, but neither the block of tag_list_get_all_tags() nor the text of
 * tag_list_get_uuid(): both then belong to the caller. NULL is allowed.
 */
TW_API void cfg_tag_list_free(cfg_tag_list *list) TW_NOEXCEPT;

/** The store handle that the list was read from. */
TW_API cfg *tag_list_get_config(const cfg_tag_list *list) TW_NOEXCEPT;
/** ID of the store's list. The text stays when the record is freed, and is then the caller's. */
TW_API const char *tag_list_get_uuid(const cfg_tag_list *list) TW_NOEXCEPT;
/** Number of tags. */
TW_API int32_t tag_list_get_num_tags(const cfg_tag_list *list) TW_NOEXCEPT;
/** The IDs of all tags; see "Arrays of IDs". */
TW_API char **tag_list_get_all_tags(const cfg_tag_list *list) TW_NOEXCEPT;
/** ID of the tag at a 0-based index; NULL outside the list. */
TW_API const char *tag_list_get_tag(const cfg_tag_list *list, int32_t index) TW_NOEXCEPT;
/** Loads the tag at a 0-based index; NULL outside the list or when it cannot be loaded. */
TW_API cfg_tag *cfg_tag_list_get_tag(const cfg_tag_list *list, int32_t index) TW_NOEXCEPT;

/* ---- Tags ---- */

/** A new tag without element and values; NULL without a handle or a name. The name is copied. */
TW_API cfg_tag *cfg_tag_new(cfg *store, const char *name) TW_NOEXCEPT;
/** Loads a tag with the IDs of its committed values; NULL when the element is missing or has no "name". */
TW_API cfg_tag *cfg_get_tag_by_id(cfg *store, const char *id) TW_NOEXCEPT;
/**
 * Loads the first committed tag of a kind that has this name, compared exactly. NULL when there is none; a
 * tag that cannot be loaded ends the search.
 */
TW_API cfg_tag *cfg_get_tag_by_name(cfg *store, const char *name, int32_t type) TW_NOEXCEPT;
/**
 * Writes the tag's name. A tag without ID first joins the list of its kind as a pending entry; of a tag with
 * ID the kind is not looked at. Does not abort on NULL.
 * @return 1, or 0 for NULL, without a name, when the element or the list of a new tag's kind is missing, or
 * when a write fails
 */
TW_API int cfg_tag_save(cfg_tag *tag, int32_t type) TW_NOEXCEPT;
/** Deletes the tag's element with its values. The record stays. 1, or 0 when there is no such element. */
TW_API int cfg_tag_delete(cfg *store, const cfg_tag *tag) TW_NOEXCEPT;
/** Frees the tag with its IDs, but not the block of tag_get_all_values(). NULL is allowed. */
TW_API void cfg_tag_free(cfg_tag *tag) TW_NOEXCEPT;

/** The store handle that the tag works on. */
TW_API cfg *tag_get_config(const cfg_tag *tag) TW_NOEXCEPT;
/** ID of the element as it was when the tag was read or first saved; NULL before that. */
TW_API const char *tag_get_uuid(const cfg_tag *tag) TW_NOEXCEPT;

/** Name: "name". */
TW_API const char *tag_get_name(const cfg_tag *tag) TW_NOEXCEPT;
TW_API int tag_set_name(cfg_tag *tag, const char *name) TW_NOEXCEPT;

/* The values are those that were committed when the tag was loaded; values saved since are not among them. */

/** Number of values. */
TW_API int32_t tag_get_num_values(const cfg_tag *tag) TW_NOEXCEPT;
/** The IDs of all values; see "Arrays of IDs". */
TW_API char **tag_get_all_values(const cfg_tag *tag) TW_NOEXCEPT;
/** ID of the value at a 0-based index; NULL outside the values. */
TW_API const char *tag_get_value(const cfg_tag *tag, int32_t index) TW_NOEXCEPT;
/** Loads the value at a 0-based index; NULL outside the values or when it cannot be loaded. */
TW_API cfg_tag_value *cfg_tag_get_value(const cfg_tag *tag, int32_t index) TW_NOEXCEPT;

/* ---- Values ---- */

/** A new value without element; NULL without a text. The text is copied. A NULL handle gives a value that
 * cannot be saved. */
TW_API cfg_tag_value *cfg_tag_value_new(cfg *store, const char *text) TW_NOEXCEPT;
/** Loads a value; NULL when the element is missing or has no "value". */
TW_API cfg_tag_value *cfg_get_tag_value_by_id(cfg *store, const char *id) TW_NOEXCEPT;
/**
 * Loads the first of the tag's committed values that has this text, compared exactly. The store is asked, so
 * that values count which were committed since the tag was loaded. NULL when there is none; a value that
 * cannot be loaded ends the search.
 */
TW_API cfg_tag_value *cfg_get_tag_value_by_name(cfg *store, const cfg_tag *tag, const char *text) TW_NOEXCEPT;
/** Loads the tag that a saved value belongs to; NULL when the value has no element below a tag. */
TW_API cfg_tag *cfg_tag_value_get_parent_tag(const cfg_tag_value *value) TW_NOEXCEPT;
/**
 * Writes the value's text. A value without ID first joins the tag's list "values" as a pending entry; the
 * list is made when the tag has none. Does not abort on NULL.
 * @return 1, or 0 for NULL, without a text, for a tag without element, when the value's element is missing or
 * when a write fails
 */
TW_API int cfg_tag_value_save(const cfg_tag *tag, cfg_tag_value *value) TW_NOEXCEPT;
/** Deletes the value's element. The record stays. 1, or 0 when there is no such element. */
TW_API int cfg_tag_value_delete(cfg *store, const cfg_tag_value *value) TW_NOEXCEPT;
/** Frees the value. NULL is allowed. */
TW_API void cfg_tag_value_free(cfg_tag_value *value) TW_NOEXCEPT;

/** The store handle that the value works on. */
TW_API cfg *tag_value_get_config(const cfg_tag_value *value) TW_NOEXCEPT;
/** ID of the element as it was when the value was read or first saved; NULL before that. */
TW_API const char *tag_value_get_uuid(const cfg_tag_value *value) TW_NOEXCEPT;

/** Text: "value". */
TW_API const char *tag_value_get_value(const cfg_tag_value *value) TW_NOEXCEPT;
TW_API int tag_value_set_value(cfg_tag_value *value, const char *text) TW_NOEXCEPT;

TW_END
#endif
