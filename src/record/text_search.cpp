#include "record/text_search.hpp"

#include <twconfig/element.h>

#include <string_view>

namespace tw {

cfg_elem *find_by_text(cfg *store, const char *path, const cfg_keyset &key, const char *wanted) noexcept {
  if (!wanted) return nullptr;
  std::string_view text = wanted;
  const auto differs = [](void *context, int32_t, const cfg_value *value) {
    const auto &sought = *static_cast<const std::string_view *>(context);
    return value->kind != CFG_STRING || sought != std::string_view(value->data, value->length) ? 1 : 0;
  };
  return cfg_list_find(cfg_get_by_path(store, path), &key, differs, &text);
}

}  // namespace tw
