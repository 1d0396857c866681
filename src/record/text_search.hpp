// Finding an entry of a collection by one of its texts.
#ifndef TW_RECORD_TEXT_SEARCH_HPP
#define TW_RECORD_TEXT_SEARCH_HPP

#include <twconfig/read.h>

namespace tw {

// The first committed entry of the list at `path` whose text equals `wanted` byte for byte. `key` is a set of
// one key. Entries are judged by that key alone; those without it, or with another kind of value, are passed
// over. NULL when there is no such entry, for a NULL text, and when memory is short.
cfg_elem *find_by_text(cfg *store, const char *path, const cfg_keyset &key, const char *wanted) noexcept;

}  // namespace tw

#endif
