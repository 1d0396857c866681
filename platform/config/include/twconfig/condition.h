/* Condition trees, their JSON form, and searching a collection. */
#ifndef TWCONFIG_CONDITION_H
#define TWCONFIG_CONDITION_H

#include <jansson.h>
#include <twconfig/types.h>

CFG_BEGIN

/** A search filter: a leaf that tests one key, or an and-node that holds when all its children hold. */
typedef struct cfg_condition cfg_condition;

/** Operator codes. A leaf with another code cannot be made. */
enum {
  CFG_OP_EQUAL = 1,
  CFG_OP_NOT_EQUAL = 2, /**< also holds when the key is absent */
  CFG_OP_ABSENT = 11    /**< without a value: holds when the key is absent */
};

/**
 * The key of a condition is a dotted path below the entry that is tested. The makers copy their arguments.
 * They return NULL for a NULL key or value, an operator that does not fit, or no memory.
 */
CFG_API cfg_condition *cfg_new_string_condition(const char *key, int32_t op, const char *value) CFG_NOEXCEPT;
CFG_API cfg_condition *cfg_new_reference_condition(const char *key, int32_t op, const char *id) CFG_NOEXCEPT;
CFG_API cfg_condition *cfg_new_untyped_condition(const char *key, int32_t op) CFG_NOEXCEPT;
CFG_API cfg_condition *cfg_new_and_condition(void) CFG_NOEXCEPT;
/** Gives `child` to the and-node, which owns it from then on. 0 (nothing given) when it cannot be attached.
 */
CFG_API int cfg_condition_add_child(cfg_condition *node, cfg_condition *child) CFG_NOEXCEPT;
/** Frees a whole tree; NULL is allowed. */
CFG_API void cfg_free_conditions(cfg_condition *root) CFG_NOEXCEPT;

/**
 * Reads a tree from JSON text. At most 1 MiB of text, 32 levels and 4,096 nodes; anything that is not exactly
 * a condition is refused with NULL.
 * @param flags must be 0
 */
CFG_API cfg_condition *json_dump_to_condition(const char *text, int32_t flags) CFG_NOEXCEPT;
/** The tree as a new JSON value, released with json_decref(); NULL on failure. */
CFG_API json_t *condition_to_json(const cfg_condition *condition) CFG_NOEXCEPT;

/**
 * The committed entries of a collection for which the tree holds, in list order.
 * @param collection a list's path with dots as underscores: "nodes", "system_net_conns"
 * @param condition stays the caller's
 * @return a list (cfg_list_size(), cfg_get_listelem()) that lives until cfg_refresh(), cfg_commit(),
 * cfg_abandon(), cfg_park() or cfg_close(); NULL when the collection does not exist.
 */
CFG_API cfg_elem *cfg_search(cfg *store, const char *collection, const cfg_condition *condition) CFG_NOEXCEPT;

/** 1 when the tree holds for an element, as it would for an entry that is searched; else 0. */
CFG_API int cfg_condition_holds(cfg *store, cfg_elem *elem, const cfg_condition *condition) CFG_NOEXCEPT;

CFG_END
#endif
