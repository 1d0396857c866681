#include "record/texts_row.hpp"

#include <utility>

namespace tw {

bool load_texts(text_array &texts, cfg *store, const cfg_value &list) noexcept {
  struct reading {
    text_array texts;
    bool complete = true;
  } state;
  const bool read = cfg_value_scan(
      store, &list,
      [](void *context, const cfg_value *entry) {
        auto &self = *static_cast<reading *>(context);
        // The store's texts end with NUL.
        self.complete = self.texts.append(entry->kind == CFG_STRING ? entry->data : nullptr);
        return self.complete ? 1 : 0;
      },
      &state);
  if (!read || !state.complete) return false;
  texts = std::move(state.texts);
  return true;
}

bool store_texts(const text_array &texts, cfg *store, cfg_elem *map, const char *key) noexcept {
  cfg_elem *list = cfg_new_list(store);
  bool complete = cfg_add_mapelem(store, map, key, list);
  for (std::int32_t i = 0; list && i < texts.count(); ++i) {
    if (texts.at(i) && !cfg_add_listelem(store, list, cfg_new_string(store, texts.at(i)))) complete = false;
  }
  return complete;
}

}  // namespace tw
