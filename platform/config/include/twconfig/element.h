/* Elements: navigation, lists, maps, creating, changing and reading values. */
#ifndef TWCONFIG_ELEMENT_H
#define TWCONFIG_ELEMENT_H

#include <twconfig/types.h>

CFG_BEGIN

/*
 * IDs. A committed list entry is named "<list path, dots as underscores>-<number>": "nodes-12",
 * "system_net_conns-3", "nodes-12_ports-7". Its number is never used again in that list. Everything below a
 * map is named by its keys behind a dot: "nodes-12.ssh.port", "system.net.conns". A new element has a
 * provisional ID that begins with "{"; commit gives it its final one, and both are understood by
 * cfg_get_by_id() for as long as the handle is open. The ID of anything but a list entry is the name of a
 * place: a new element under the same key gets the same ID, and a handle of what was replaced leads to it.
 * List entries are never confused with one another, nor is what stands in them.
 */

/* ---- Navigation ---- */

/** The root map. */
CFG_API cfg_elem *cfg_root(cfg *store) CFG_NOEXCEPT;
/**
 * The element at a dotted path ("system.net.physifs"), or NULL when a step is missing. The path is resolved
 * against what the maps hold: a key that itself contains dots is found as well.
 */
CFG_API cfg_elem *cfg_get_by_path(cfg *store, const char *path) CFG_NOEXCEPT;
/** The same, relative to an element. */
CFG_API cfg_elem *cfg_get_child_by_path(cfg *store, cfg_elem *elem, const char *path) CFG_NOEXCEPT;
/** The element with this ID (final or provisional), or NULL; a NULL ID gives NULL. */
CFG_API cfg_elem *cfg_get_by_id(cfg *store, const char *id) CFG_NOEXCEPT;
/**
 * Says that the element with this ID will be asked for soon, so that the processor can fetch it meanwhile. A
 * first call fetches the way to the element, a second one, some work later, the element. It changes nothing
 * but the time that it takes; it never fails, and whether there is such an element is not looked at.
 */
CFG_API void cfg_expect(cfg *store, const char *id) CFG_NOEXCEPT;
/**
 * The elements of `count` IDs, in order, in a heap array that ends with NULL and is freed by the caller (not
 * the elements). IDs that name nothing are left out. NULL on failure.
 */
CFG_API cfg_elem **cfg_get_by_ids(cfg *store, const char *const *ids, int32_t count) CFG_NOEXCEPT;
/** A heap copy of the element's present ID: the final one once it is committed. */
CFG_API int cfg_elem_uuid(cfg_elem *elem, char **id) CFG_NOEXCEPT;
/** The map or list that holds the element; NULL for the root and for an element that is attached nowhere. */
CFG_API cfg_elem *cfg_get_parent_elem(cfg *store, cfg_elem *elem) CFG_NOEXCEPT;
/** The ID of the child under a key, or NULL when the key is absent. */
CFG_API const char *cfg_get_mapelem(cfg_elem *map, const char *key) CFG_NOEXCEPT;
/** The child under a key, or NULL. */
CFG_API cfg_elem *cfg_simple_get_mapelem(cfg *store, cfg_elem *map, const char *key) CFG_NOEXCEPT;
/** The ID of the committed entry at a 0-based index, or NULL past the end. */
CFG_API const char *cfg_get_listelem(cfg_elem *list, int32_t index) CFG_NOEXCEPT;
/** The committed entry at a 0-based index, or NULL past the end. */
CFG_API cfg_elem *cfg_simple_get_listelem(cfg *store, cfg_elem *list, int32_t index) CFG_NOEXCEPT;
/** Prepares a list for size and index calls. 1 for a list, else 0. */
CFG_API int cfg_get_list(cfg *store, cfg_elem *list) CFG_NOEXCEPT;
/** What the element is; CFG_NONE for NULL and for an element that is gone. */
CFG_API cfg_kind cfg_elem_kind(cfg_elem *elem) CFG_NOEXCEPT;

/* ---- Lists ---- */

/** The number of committed entries. */
CFG_API int cfg_list_size(cfg_elem *list, int32_t *size) CFG_NOEXCEPT;
/** The number of pending entries: those appended with cfg_append_future_listelem() and not yet committed. */
CFG_API int cfg_list_future_size(cfg_elem *list, int32_t *size) CFG_NOEXCEPT;
/** The pending entry at a 0-based index (readable as its ID), or NULL. */
CFG_API cfg_elem *cfg_get_future_listelem(cfg_elem *list, int32_t index) CFG_NOEXCEPT;
/** Appends an unattached element as an entry that this handle's list reads see at once. */
CFG_API int cfg_add_listelem(cfg *store, cfg_elem *list, cfg_elem *elem) CFG_NOEXCEPT;
/**
 * Appends an unattached element as a pending entry: ordinary list reads see it after commit. This is how new
 * records join their collection, so it gives a map what the entries of that list begin with
 * (docs/store-format.md) and the map does not have yet. A list that is itself attached nowhere is no
 * collection.
 */
CFG_API int cfg_append_future_listelem(cfg *store, cfg_elem *list, cfg_elem *elem) CFG_NOEXCEPT;
/** Empties a list, pending entries included, and returns it for refilling; NULL when it is no list. */
CFG_API cfg_elem *cfg_set_list(cfg *store, cfg_elem *list) CFG_NOEXCEPT;

/* ---- Maps ---- */

/** Readers fail when the key is absent or of another kind. */
CFG_API int cfg_map_get_string(cfg *store, cfg_elem *map, const char *key, char **out) CFG_NOEXCEPT;
CFG_API int cfg_map_get_int(cfg *store, cfg_elem *map, const char *key, int32_t *out) CFG_NOEXCEPT;
/** Writes 0 or 1. */
CFG_API int cfg_map_get_bool(cfg *store, cfg_elem *map, const char *key, int32_t *out) CFG_NOEXCEPT;
/** `data` is a heap copy with a NUL behind its `length` bytes (the NUL is not counted). */
CFG_API int cfg_map_get_blob(cfg *store, cfg_elem *map, const char *key, void **data,
                             size_t *length) CFG_NOEXCEPT;
CFG_API int cfg_map_get_reference(cfg *store, cfg_elem *map, const char *key, char **id) CFG_NOEXCEPT;

/** Writers create or replace the key, whatever kind it had. A NULL value fails. */
CFG_API int cfg_map_set_string(cfg *store, cfg_elem *map, const char *key, const char *value) CFG_NOEXCEPT;
CFG_API int cfg_map_set_int(cfg *store, cfg_elem *map, const char *key, int32_t value) CFG_NOEXCEPT;
CFG_API int cfg_map_set_bool(cfg *store, cfg_elem *map, const char *key, int32_t value) CFG_NOEXCEPT;
CFG_API int cfg_map_set_blob(cfg *store, cfg_elem *map, const char *key, const void *data,
                             size_t length) CFG_NOEXCEPT;
CFG_API int cfg_map_set_reference(cfg *store, cfg_elem *map, const char *key, const char *id) CFG_NOEXCEPT;
/** Removes the key and what is below it. An absent key is no failure. */
CFG_API int cfg_map_delete_key(cfg *store, cfg_elem *map, const char *key) CFG_NOEXCEPT;
/** The number of keys and, unless `keys` is NULL, a heap array of heap strings: free each, then the array. */
CFG_API int cfg_map_keys(cfg_elem *map, char ***keys, int32_t *count) CFG_NOEXCEPT;
/** Attaches an unattached element under a key, taken literally (dots included); what was there is replaced.
 */
CFG_API int cfg_add_mapelem(cfg *store, cfg_elem *map, const char *key, cfg_elem *elem) CFG_NOEXCEPT;

/* ---- Creating and changing ---- */

/** A new element, empty and attached nowhere; one that is never attached is gone after commit or abandon. */
CFG_API cfg_elem *cfg_new_map(cfg *store) CFG_NOEXCEPT;
CFG_API cfg_elem *cfg_new_list(cfg *store) CFG_NOEXCEPT;
CFG_API cfg_elem *cfg_new_string(cfg *store, const char *value) CFG_NOEXCEPT;
CFG_API cfg_elem *cfg_new_reference(cfg *store, const char *id) CFG_NOEXCEPT;

/** Replace the value of an element of that kind. */
CFG_API int cfg_set_string(cfg *store, cfg_elem *elem, const char *value) CFG_NOEXCEPT;
CFG_API int cfg_set_blob(cfg *store, cfg_elem *elem, const void *data, size_t length) CFG_NOEXCEPT;
CFG_API int cfg_set_reference(cfg *store, cfg_elem *elem, const char *id) CFG_NOEXCEPT;
/** Removes the element from its parent and the store. The root cannot be removed. */
CFG_API int cfg_delete_element(cfg *store, cfg_elem *elem) CFG_NOEXCEPT;

/* ---- Reading scalar elements ---- */

/** Readers fail when the element is NULL, gone or of another kind. */
CFG_API int cfg_string_value(cfg_elem *elem, char **out) CFG_NOEXCEPT;
CFG_API int cfg_int_value(cfg_elem *elem, int32_t *out) CFG_NOEXCEPT;
CFG_API int cfg_bool_value(cfg_elem *elem, int32_t *out) CFG_NOEXCEPT;
CFG_API int cfg_blob_value(cfg_elem *elem, void **data, size_t *length) CFG_NOEXCEPT;
CFG_API int cfg_reference_value(cfg_elem *elem, char **id) CFG_NOEXCEPT;

CFG_END
#endif
