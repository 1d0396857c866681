// The small string and value helpers that all families share.
#ifndef TW_RECORD_HELPERS_HPP
#define TW_RECORD_HELPERS_HPP

#include <twconfig/element.h>

#include "record/assertion.hpp"
#include "record/text.hpp"

namespace tw {

// ---- Setting a string field: NULL and "" clear it, anything else is copied. 1, or 0 without memory. ----

// The setter of all families but the node family. Setting a field to the very pointer it holds changes
// nothing: 1.
template <bool Wiped>
int _set_string(basic_text<Wiped> *dest, const char *value) noexcept {
  TW_ASSERT(dest, "src/network");
  if (value == dest->c_str()) return 1;
  return dest->set(value);
}

// The setter of the node family. The same, but setting a field to the very pointer it holds answers 0:
// callers of node setters learn from it that nothing has changed.
template <bool Wiped>
int set_string(basic_text<Wiped> *dest, const char *value) noexcept {
  TW_ASSERT(dest, "src/nodes");
  if (value == dest->c_str()) return 0;
  return dest->set(value);
}

// ---- Writing a key: NULL deletes it, which succeeds when the key is absent, or the map. 1 or 0. ----

int delete_map_key(cfg *store, cfg_elem *map, const char *key) noexcept;
int store_map_string(cfg *store, cfg_elem *map, const char *key, const char *value) noexcept;
int store_map_reference(cfg *store, cfg_elem *map, const char *key, const char *id) noexcept;
int store_map_blob(cfg *store, cfg_elem *map, const char *key, const void *data, size_t length) noexcept;

// ---- Reading a value below an element. A missing child reads as NULL or 0 and answers 0; a value of another
// kind answers 0 and leaves `out` alone. ----

int get_child_string(cfg *store, cfg_elem *elem, const char *path, text *out) noexcept;
int get_child_int(cfg *store, cfg_elem *elem, const char *path, int32_t *out) noexcept;
int get_child_bool(cfg *store, cfg_elem *elem, const char *path, int32_t *out) noexcept;

// ---- Texts ----

// Cuts white space from both ends, in place; the result points into `chars`.
char *trim(char *chars) noexcept;

}  // namespace tw

#endif
