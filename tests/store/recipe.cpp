#include "recipe.hpp"

#include "tree.hpp"

Recipe text(std::string value) { return {.kind = CFG_STRING, .data = std::move(value)}; }
Recipe blob(std::string bytes) { return {.kind = CFG_BLOB, .data = std::move(bytes)}; }
Recipe refer(std::string id) { return {.kind = CFG_REFERENCE, .data = std::move(id)}; }
Recipe integer(std::int32_t value) { return {.kind = CFG_INT, .number = value}; }
Recipe boolean(bool value) { return {.kind = CFG_BOOL, .number = value ? 1 : 0}; }
Recipe list_of(std::vector<Recipe> entries) { return {.kind = CFG_LIST, .items = std::move(entries)}; }

Recipe map_of(std::vector<std::pair<std::string, Recipe>> values) {
  Recipe map{.kind = CFG_MAP};
  for (auto &[key, value] : values) {
    map.keys.push_back(key);
    map.items.push_back(std::move(value));
  }
  return map;
}

cfg_content Content::make(const Recipe &recipe) {
  cfg_content content{};
  content.kind = recipe.kind;
  content.number = recipe.number;
  if (recipe.kind == CFG_MAP || recipe.kind == CFG_LIST) {
    std::vector<cfg_content> items;
    for (const Recipe &item : recipe.items) items.push_back(make(item));
    items_.push_back(std::move(items));
    content.items = items_.back().data();
    if (recipe.kind == CFG_MAP) {
      content.keys = &keyset_of(recipe.keys);
    } else {
      content.length = recipe.items.size();
    }
  } else {
    content.data = recipe.data.data();
    content.length = recipe.data.size();
  }
  return content;
}

cfg_elem *make_singly(cfg *store, const Recipe &recipe) {
  cfg_elem *elem = nullptr;
  switch (recipe.kind) {
    case CFG_STRING:
      return cfg_new_string(store, recipe.data.c_str());
    case CFG_REFERENCE:
      return cfg_new_reference(store, recipe.data.c_str());
    case CFG_MAP:
      elem = cfg_new_map(store);
      for (std::size_t i = 0; elem && i < recipe.keys.size(); ++i)
        if (recipe.items[i].kind != CFG_NONE && !put_singly(store, elem, recipe.keys[i], recipe.items[i]))
          return nullptr;
      return elem;
    case CFG_LIST:
      elem = cfg_new_list(store);
      for (const Recipe &item : recipe.items)
        if (!cfg_add_listelem(store, elem, make_singly(store, item))) return nullptr;
      return elem;
    default:
      return nullptr;
  }
}

cfg_elem *append_singly(cfg *store, cfg_elem *list, const Recipe &recipe) {
  cfg_elem *entry = make_singly(store, recipe);
  return cfg_append_future_listelem(store, list, entry) ? entry : nullptr;
}

int put_singly(cfg *store, cfg_elem *map, const std::string &key, const Recipe &recipe) {
  switch (recipe.kind) {
    case CFG_STRING:
      return cfg_map_set_string(store, map, key.c_str(), recipe.data.c_str());
    case CFG_REFERENCE:
      return cfg_map_set_reference(store, map, key.c_str(), recipe.data.c_str());
    case CFG_BLOB:
      return cfg_map_set_blob(store, map, key.c_str(), recipe.data.data(), recipe.data.size());
    case CFG_INT:
      return cfg_map_set_int(store, map, key.c_str(), recipe.number);
    case CFG_BOOL:
      return cfg_map_set_bool(store, map, key.c_str(), recipe.number);
    default:
      return cfg_add_mapelem(store, map, key.c_str(), make_singly(store, recipe));
  }
}
