/* Writing whole elements at once, with all that they hold: what imports are built on. */
#ifndef TWCONFIG_CONTENT_H
#define TWCONFIG_CONTENT_H

#include <twconfig/read.h>

CFG_BEGIN

/**
 * What an element is to hold, down to its last value. Everything that it points to is copied by the call that
 * it is given to, but for its key sets: these stand in static storage, as those that maps are read with, and
 * never change.
 */
typedef struct cfg_content {
  cfg_kind kind;                   /**< in a map, CFG_NONE leaves the key absent */
  int32_t number;                  /**< of an integer; of a boolean: 0 is false */
  const char *data;                /**< of a string, reference or blob; strings and references hold no NUL */
  size_t length;                   /**< bytes of `data`; of a list: how many entries it has */
  const cfg_keyset *keys;          /**< of a map: at most as many as a map may have, each once */
  const struct cfg_content *items; /**< of a map: one for each key; of a list: its entries */
} cfg_content;

/**
 * Appends a new pending entry to a list, as cfg_append_future_listelem() does, with all that it holds. The
 * outcome is that of a call for each value, at a small part of the cost, and it is made whole or not at all.
 * Readers of the same edit see the entries of the lists in it at once, like those of cfg_add_listelem().
 *
 * References to new elements are given their final IDs by the commit, as ever.
 * @return the new entry, NULL on failure
 */
CFG_API cfg_elem *cfg_append_content(cfg *store, cfg_elem *list, const cfg_content *content) CFG_NOEXCEPT;
/** Puts a new element with all that it holds under a key, taken literally; what was there is replaced. */
CFG_API int cfg_put_content(cfg *store, cfg_elem *map, const char *key,
                            const cfg_content *content) CFG_NOEXCEPT;

CFG_END
#endif
