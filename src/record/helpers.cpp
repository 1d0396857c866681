#include "record/helpers.hpp"

#include <twconfig/store.h>

namespace tw {

// What is no map holds no key: the one failure that leaves nothing to remove.
int delete_map_key(cfg *store, cfg_elem *map, const char *key) noexcept {
  return cfg_map_delete_key(store, map, key) || cfg_error_code(store) == CFG_E_ARGUMENT;
}

int store_map_string(cfg *store, cfg_elem *map, const char *key, const char *value) noexcept {
  if (value) return cfg_map_set_string(store, map, key, value);
  return delete_map_key(store, map, key);
}

int store_map_reference(cfg *store, cfg_elem *map, const char *key, const char *id) noexcept {
  if (id) return cfg_map_set_reference(store, map, key, id);
  return delete_map_key(store, map, key);
}

int store_map_blob(cfg *store, cfg_elem *map, const char *key, const void *data, size_t length) noexcept {
  if (data) return cfg_map_set_blob(store, map, key, data, length);
  return delete_map_key(store, map, key);
}

int get_child_string(cfg *store, cfg_elem *elem, const char *path, text *out) noexcept {
  cfg_elem *child = cfg_get_child_by_path(store, elem, path);
  char *chars = nullptr;
  if (child && !cfg_string_value(child, &chars)) return 0;
  out->adopt(chars);
  return child != nullptr;
}

int get_child_int(cfg *store, cfg_elem *elem, const char *path, int32_t *out) noexcept {
  if (cfg_elem *child = cfg_get_child_by_path(store, elem, path)) return cfg_int_value(child, out);
  *out = 0;
  return 0;
}

int get_child_bool(cfg *store, cfg_elem *elem, const char *path, int32_t *out) noexcept {
  if (cfg_elem *child = cfg_get_child_by_path(store, elem, path)) return cfg_bool_value(child, out);
  *out = 0;
  return 0;
}

char *trim(char *chars) noexcept {
  constexpr char blanks[] = " \t\n\v\f\r";
  chars += std::strspn(chars, blanks);
  size_t length = std::strlen(chars);
  while (length > 0 && std::strchr(blanks, chars[length - 1])) --length;
  chars[length] = '\0';
  return chars;
}

}  // namespace tw
