/* What a new store and its new entries hold before anything is written to them. */
#ifndef TWCONFIG_LAYOUT_H
#define TWCONFIG_LAYOUT_H

#include <twconfig/types.h>

CFG_BEGIN

/** An element that is there from the start: an empty map, an empty list, or a boolean that is false. */
typedef struct cfg_place {
  const char *path; /**< dotted; each step is a key */
  cfg_kind kind;    /**< CFG_MAP, CFG_LIST or CFG_BOOL */
} cfg_place;

/**
 * What the root of a new store holds, what holds something before what it holds. The store makes none of it
 * by itself: whoever sets an appliance up does, once.
 *
 * What the entries of a list hold is the store's own business: cfg_append_future_listelem() makes it.
 * @param count receives the number of places
 * @return a constant array; NULL when `count` is NULL
 */
CFG_API const cfg_place *cfg_base_layout(size_t *count) CFG_NOEXCEPT;

CFG_END
#endif
