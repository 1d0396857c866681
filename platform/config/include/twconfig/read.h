/* Reading many values at once without copies: what record loaders and scans are built on. */
#ifndef TWCONFIG_READ_H
#define TWCONFIG_READ_H

#include <twconfig/types.h>

CFG_BEGIN

/**
 * A value as the store holds it. Borrowed until the next change, commit, abandon, refresh, park or close.
 *
 * A map or list that was read from its map or list tells where it stands: its members are for
 * cfg_value_read(), cfg_value_entries() and cfg_value_scan() alone.
 */
typedef struct cfg_value {
  cfg_kind kind;    /**< CFG_NONE when the key is absent */
  int32_t number;   /**< the integer, or 0 or 1 for a boolean */
  const char *data; /**< string, reference (both end with NUL) or blob; NULL for integers and booleans */
  size_t length;    /**< bytes of `data`, the NUL not counted */
} cfg_value;

/**
 * A fixed list of keys that one piece of code reads together. Keep it in static storage: a handle remembers,
 * per key set, where maps of one shape keep these keys, and finds that again by the address of the set.
 */
typedef struct cfg_keyset {
  const char *const *keys; /**< keys, taken literally */
  size_t count;            /**< how many */
} cfg_keyset;

/** Reads all keys of a set from a map into `values` (room for set->count). 0 when `map` is no map. */
CFG_API int cfg_map_read(cfg_elem *map, const cfg_keyset *set, cfg_value *values) CFG_NOEXCEPT;

/** The same for the map under a key of a map, without making a handle for it. 0 when there is no such map. */
CFG_API int cfg_child_read(cfg_elem *map, const char *child, const cfg_keyset *set,
                           cfg_value *values) CFG_NOEXCEPT;

/** cfg_map_read() of a map that was itself read as a value. 0 when it is no map. */
CFG_API int cfg_value_read(cfg *store, const cfg_value *map, const cfg_keyset *set,
                           cfg_value *values) CFG_NOEXCEPT;

/**
 * Reads the committed entries of a list that was itself read as a value into `entries`, in list order, as
 * many as there is room for; CFG_NONE for one that cannot be read. Returns how many the list has, -1 when it
 * is no list.
 */
CFG_API int32_t cfg_value_entries(cfg *store, const cfg_value *list, cfg_value *entries,
                                  int32_t room) CFG_NOEXCEPT;

/** Called with each entry of a list; CFG_NONE for one that cannot be read. Returns 0 to end the scan. */
typedef int (*cfg_value_visitor)(void *context, const cfg_value *entry);
/**
 * Reads the committed entries of a list that was itself read as a value, in list order, making no handles.
 * The visitor must not change the store. 1 when every entry was visited or the visitor ended it, 0 when it is
 * no list.
 */
CFG_API int cfg_value_scan(cfg *store, const cfg_value *list, cfg_value_visitor visit,
                           void *context) CFG_NOEXCEPT;

/**
 * Called with the values of each entry of a list, NULL for an entry that is no map. Returns 0 to end the
 * scan.
 */
typedef int (*cfg_map_visitor)(void *context, const cfg_value *values);
/**
 * Reads a key set from every committed entry of a list that was itself read as a value, in list order, making
 * no handles. The visitor must not change the store. 1 when every entry was visited or the visitor ended it,
 * 0 when it is no list.
 */
CFG_API int cfg_value_scan_maps(cfg *store, const cfg_value *list, const cfg_keyset *set,
                                cfg_map_visitor visit, void *context) CFG_NOEXCEPT;

/** 1 when the map holds the key; makes no handle for it. */
CFG_API int cfg_map_has(cfg_elem *map, const char *key) CFG_NOEXCEPT;

/** The value of a scalar element without a copy; kind only for maps and lists. */
CFG_API int cfg_elem_read(cfg_elem *elem, cfg_value *value) CFG_NOEXCEPT;

/**
 * Called with each committed entry's index and its values; all are CFG_NONE for an entry that is no map.
 * Returns 0 to end the scan.
 */
typedef int (*cfg_scan_visitor)(void *context, int32_t index, const cfg_value *values);
/**
 * Reads a key set from every committed entry of a list, in list order, making no handles: the cost of a scan
 * of those keys. The visitor must not change the store. 1 when every entry was visited or the visitor ended
 * it.
 */
CFG_API int cfg_list_scan(cfg_elem *list, const cfg_keyset *set, cfg_scan_visitor visit,
                          void *context) CFG_NOEXCEPT;

/**
 * The same scan, for finding one entry: the result is the entry at which the visitor ended it by returning 0,
 * NULL when it never did.
 */
CFG_API cfg_elem *cfg_list_find(cfg_elem *list, const cfg_keyset *set, cfg_scan_visitor visit,
                                void *context) CFG_NOEXCEPT;

/**
 * Called with each entry's ID, borrowed for the length of the callback, and its values, NULL for an entry
 * that is no map. Returns 0 to end the scan.
 */
typedef int (*cfg_entry_visitor)(void *context, const char *id, const cfg_value *values);
/**
 * cfg_list_scan() over the list under a key of a map, with the entries' IDs and without a handle for the
 * list. 0 when there is no such list.
 */
CFG_API int cfg_child_scan(cfg_elem *map, const char *child, const cfg_keyset *set, cfg_entry_visitor visit,
                           void *context) CFG_NOEXCEPT;

/** Called with an entry's index and ID, borrowed for the length of the callback. Returns 0 to end the visit.
 */
typedef int (*cfg_id_visitor)(void *context, int32_t index, const char *id);
/**
 * Shows the IDs that cfg_get_listelem() gives for a list's indexes, in order, without making handles for the
 * entries of a list that is not edited. NULL stands for an entry that is gone. The visitor must not change
 * the store. 1 when every entry was visited or the visitor ended it, 0 when it is no list.
 */
CFG_API int cfg_list_ids(cfg_elem *list, cfg_id_visitor visit, void *context) CFG_NOEXCEPT;

CFG_END
#endif
