#include "record/texts_row.hpp"

#include <iterator>
#include <memory>
#include <new>

namespace tw {

bool load_texts(text_array &texts, cfg *store, const cfg_value &list, text_block *block) noexcept {
  cfg_value few[16];
  const std::int32_t count = cfg_value_entries(store, &list, few, std::size(few));
  if (count < 0) return false;
  if (static_cast<std::size_t>(count) <= std::size(few)) return texts.assign(few, count, block);
  const std::unique_ptr<cfg_value[]> all(new (std::nothrow) cfg_value[static_cast<std::size_t>(count)]);
  return all && cfg_value_entries(store, &list, all.get(), count) == count &&
         texts.assign(all.get(), count, block);
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
