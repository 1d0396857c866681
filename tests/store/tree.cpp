#include "tree.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <utility>

std::string take(char *heap) {
  std::string text = heap ? heap : kNothing;
  free(heap);
  return text;
}

std::string id_of(cfg_elem *elem) {
  char *id = nullptr;
  return cfg_elem_uuid(elem, &id) ? take(id) : kNothing;
}

std::int64_t number_of(const std::string &id) {
  std::size_t dash = id.rfind('-');
  if (provisional(id) || dash == std::string::npos || dash + 1 == id.size()) return -1;
  if (id.find_first_not_of("0123456789", dash + 1) != std::string::npos) return -1;
  return std::stoll(id.substr(dash + 1));
}

std::string string_at(cfg *store, cfg_elem *map, const char *key) {
  char *text = nullptr;
  return cfg_map_get_string(store, map, key, &text) ? take(text) : kNothing;
}

std::string reference_at(cfg *store, cfg_elem *map, const char *key) {
  char *text = nullptr;
  return cfg_map_get_reference(store, map, key, &text) ? take(text) : kNothing;
}

std::int64_t int_at(cfg *store, cfg_elem *map, const char *key) {
  std::int32_t value = 0;
  return cfg_map_get_int(store, map, key, &value) ? value : INT64_MIN;
}

std::vector<std::string> keys_of(cfg_elem *map) {
  char **keys = nullptr;
  std::int32_t count = 0;
  std::vector<std::string> all;
  if (!cfg_map_keys(map, &keys, &count)) return {kNothing};
  for (std::int32_t i = 0; i < count; ++i) all.push_back(take(keys[i]));
  free(keys);
  std::sort(all.begin(), all.end());
  return all;
}

int size_of(cfg_elem *list) {
  std::int32_t size = 0;
  return cfg_list_size(list, &size) ? size : -1;
}

int pending_size_of(cfg_elem *list) {
  std::int32_t size = 0;
  return cfg_list_future_size(list, &size) ? size : -1;
}

std::vector<std::string> ids_in(cfg_elem *list) {
  std::vector<std::string> ids;
  for (int i = 0; const char *id = cfg_get_listelem(list, i); ++i) ids.emplace_back(id);
  EXPECT_EQ(static_cast<int>(ids.size()), std::max(size_of(list), 0));
  return ids;
}

std::vector<std::string> pending_ids_in(cfg_elem *list) {
  std::vector<std::string> ids;
  for (int i = 0; cfg_elem *entry = cfg_get_future_listelem(list, i); ++i) ids.push_back(id_of(entry));
  EXPECT_EQ(static_cast<int>(ids.size()), std::max(pending_size_of(list), 0));
  return ids;
}

std::vector<std::string> names_in(cfg *store, cfg_elem *list) {
  std::vector<std::string> names;
  for (int i = 0; cfg_elem *entry = cfg_simple_get_listelem(store, list, i); ++i)
    names.push_back(string_at(store, entry, "name"));
  return names;
}

cfg_elem *put_map(cfg *store, cfg_elem *map, const char *key) {
  return cfg_add_mapelem(store, map, key, cfg_new_map(store)) ? cfg_simple_get_mapelem(store, map, key)
                                                              : nullptr;
}

cfg_elem *put_list(cfg *store, cfg_elem *map, const char *key) {
  return cfg_add_mapelem(store, map, key, cfg_new_list(store)) ? cfg_simple_get_mapelem(store, map, key)
                                                               : nullptr;
}

namespace {

// The map in which the last step of a path belongs, and that step.
std::pair<cfg_elem *, std::string> last_step(cfg *store, const std::string &path) {
  cfg_elem *map = cfg_root(store);
  std::size_t begin = 0;
  for (std::size_t dot; (dot = path.find('.', begin)) != std::string::npos; begin = dot + 1) {
    std::string key = path.substr(begin, dot - begin);
    cfg_elem *next = cfg_simple_get_mapelem(store, map, key.c_str());
    map = next ? next : put_map(store, map, key.c_str());
  }
  return {map, path.substr(begin)};
}

}  // namespace

cfg_elem *make_map(cfg *store, const std::string &path) {
  auto [map, key] = last_step(store, path);
  return put_map(store, map, key.c_str());
}

cfg_elem *make_list(cfg *store, const std::string &path) {
  auto [map, key] = last_step(store, path);
  return put_list(store, map, key.c_str());
}

cfg_elem *append_named(cfg *store, cfg_elem *list, const std::string &name) {
  cfg_elem *entry = cfg_new_map(store);
  if (!cfg_map_set_string(store, entry, "name", name.c_str())) return nullptr;
  return cfg_append_future_listelem(store, list, entry) ? entry : nullptr;
}

cfg_elem *append_string(cfg *store, cfg_elem *list, const std::string &value) {
  cfg_elem *entry = cfg_new_string(store, value.c_str());
  return cfg_append_future_listelem(store, list, entry) ? entry : nullptr;
}

namespace {

std::string hex(const void *data, std::size_t length) {
  static constexpr char digits[] = "0123456789abcdef";
  std::string text;
  const auto *bytes = static_cast<const unsigned char *>(data);
  for (std::size_t i = 0; i < length; ++i) {
    text += digits[bytes[i] >> 4];
    text += digits[bytes[i] & 15];
  }
  return text;
}

void dump_into(cfg *store, cfg_elem *elem, std::string &out) {
  char *text = nullptr;
  std::int32_t number = 0;
  void *data = nullptr;
  std::size_t length = 0;
  switch (cfg_elem_kind(elem)) {
    case CFG_NONE:
      out += kNothing;
      return;
    case CFG_STRING:
      out += "s'" + (cfg_string_value(elem, &text) ? take(text) : kNothing) + "'";
      return;
    case CFG_REFERENCE:
      out += "r'" + (cfg_reference_value(elem, &text) ? take(text) : kNothing) + "'";
      return;
    case CFG_INT:
      out += cfg_int_value(elem, &number) ? "i" + std::to_string(number) : kNothing;
      return;
    case CFG_BOOL:
      out += cfg_bool_value(elem, &number) ? "b" + std::to_string(number) : kNothing;
      return;
    case CFG_BLOB:
      out += cfg_blob_value(elem, &data, &length) ? "x" + hex(data, length) : kNothing;
      free(data);
      return;
    case CFG_MAP:
      out += '{';
      for (const std::string &key : keys_of(elem)) {
        out += "'" + key + "':";
        dump_into(store, cfg_simple_get_mapelem(store, elem, key.c_str()), out);
        out += ',';
      }
      out += '}';
      return;
    case CFG_LIST:
      out += '[';
      for (int i = 0; cfg_elem *entry = cfg_simple_get_listelem(store, elem, i); ++i) {
        std::string id = id_of(entry);
        out += (provisional(id) ? "{}" : id) + ":";
        dump_into(store, entry, out);
        out += ',';
      }
      for (int i = 0; cfg_elem *entry = cfg_get_future_listelem(elem, i); ++i) {
        out += "+:";
        dump_into(store, entry, out);
        out += ',';
      }
      out += ']';
      return;
  }
  out += "<unknown kind>";
}

}  // namespace

std::string dump(cfg *store, cfg_elem *elem) {
  std::string out;
  dump_into(store, elem, out);
  return out;
}

const cfg_keyset &keyset_of(const std::vector<std::string> &keys) {
  struct Kept {
    std::vector<const char *> pointers;
    cfg_keyset set;
  };
  static std::map<std::vector<std::string>, std::unique_ptr<Kept>> all;
  auto [at, added] = all.try_emplace(keys);
  if (added) {
    at->second = std::make_unique<Kept>();
    for (const std::string &key : at->first) at->second->pointers.push_back(key.c_str());
    at->second->set = {at->second->pointers.data(), at->second->pointers.size()};
  }
  return at->second->set;
}

namespace {

// One walk of check_tree(): what was seen so far.
class Walk {
 public:
  explicit Walk(cfg *store) : store_(store) {}

  void visit(cfg_elem *elem, cfg_elem *parent, const std::string &given_id) {
    std::string id = id_of(elem);
    EXPECT_EQ(id, given_id);
    EXPECT_EQ(id, text_of(elem));
    cfg_kind kind = cfg_elem_kind(elem);
    EXPECT_NE(kind, CFG_NONE) << id;
    EXPECT_TRUE(seen.emplace(id, kind).second) << "two elements have the ID " << id;
    cfg_elem *named = cfg_get_by_id(store_, id.c_str());
    EXPECT_EQ(cfg_elem_kind(named), kind) << id;
    EXPECT_EQ(id_of(named), id);
    cfg_elem *holder = cfg_get_parent_elem(store_, elem);
    if (parent) {
      EXPECT_EQ(id_of(holder), id_of(parent)) << "the parent of " << id;
    } else {
      EXPECT_EQ(holder, nullptr);
    }
    if (kind == CFG_MAP) visit_map(elem);
    if (kind == CFG_LIST) visit_list(elem);
  }

  std::map<std::string, cfg_kind> seen;

 private:
  void visit_map(cfg_elem *map) {
    std::vector<std::string> keys = keys_of(map);
    EXPECT_TRUE(std::adjacent_find(keys.begin(), keys.end()) == keys.end())
        << "a key twice in " << id_of(map);
    check_bulk_read(map, keys);
    for (const std::string &key : keys) {
      const char *id = cfg_get_mapelem(map, key.c_str());
      ASSERT_NE(id, nullptr) << key;
      EXPECT_EQ(cfg_map_has(map, key.c_str()), 1) << key;
      visit(cfg_simple_get_mapelem(store_, map, key.c_str()), map, id);
    }
  }

  // cfg_map_read() against the handle of each key.
  void check_bulk_read(cfg_elem *map, const std::vector<std::string> &keys) {
    std::vector<std::string> asked = keys;
    asked.emplace_back("no such key here");
    const cfg_keyset &set = keyset_of(asked);
    std::vector<cfg_value> values(set.count);
    ASSERT_EQ(cfg_map_read(map, &set, values.data()), 1);
    for (std::size_t i = 0; i < keys.size(); ++i) {
      cfg_value single{};
      ASSERT_EQ(cfg_elem_read(cfg_simple_get_mapelem(store_, map, keys[i].c_str()), &single), 1) << keys[i];
      EXPECT_EQ(values[i].kind, single.kind) << keys[i];
      if (single.kind == CFG_MAP || single.kind == CFG_LIST) continue;  // says where it stands
      EXPECT_EQ(values[i].number, single.number) << keys[i];
      EXPECT_EQ(values[i].length, single.length) << keys[i];
      EXPECT_EQ(values[i].data != nullptr, single.data != nullptr) << keys[i];
      if (values[i].data && single.data && values[i].length == single.length) {
        EXPECT_EQ(std::memcmp(values[i].data, single.data, single.length), 0) << keys[i];
        EXPECT_EQ(values[i].data[single.length], '\0') << keys[i];
      }
    }
    EXPECT_EQ(values.back().kind, CFG_NONE);
    EXPECT_EQ(values.back().data, nullptr);
  }

  void visit_list(cfg_elem *list) {
    EXPECT_EQ(cfg_get_list(store_, list), 1);
    int size = size_of(list);
    EXPECT_GE(size, 0);
    for (int i = 0; i < size; ++i) {
      const char *id = cfg_get_listelem(list, i);
      ASSERT_NE(id, nullptr) << i;
      visit(cfg_simple_get_listelem(store_, list, i), list, id);
    }
    EXPECT_EQ(cfg_get_listelem(list, size), nullptr);
    EXPECT_EQ(cfg_simple_get_listelem(store_, list, size), nullptr);
    int pending = pending_size_of(list);
    for (int i = 0; i < pending; ++i) {
      cfg_elem *entry = cfg_get_future_listelem(list, i);
      ASSERT_NE(entry, nullptr) << i;
      EXPECT_TRUE(provisional(id_of(entry)));
      visit(entry, list, id_of(entry));
    }
    EXPECT_EQ(cfg_get_future_listelem(list, pending), nullptr);
  }

  cfg *store_;
};

int collect(void *context, const char *data, std::size_t length) {
  static_cast<std::string *>(context)->append(data, length);
  return 1;
}

struct Source {
  const std::string &text;
  std::size_t piece;
  std::size_t at = 0;
};

std::size_t feed(void *context, char *buffer, std::size_t size) {
  auto *source = static_cast<Source *>(context);
  std::size_t length = std::min({size, source->piece, source->text.size() - source->at});
  std::memcpy(buffer, source->text.data() + source->at, length);
  source->at += length;
  return length;
}

}  // namespace

std::map<std::string, cfg_kind> check_tree(cfg *store) {
  Walk walk(store);
  cfg_elem *root = cfg_root(store);
  walk.visit(root, nullptr, id_of(root));
  return std::move(walk.seen);
}

std::string export_text(cfg *store) {
  std::string text;
  return cfg_export(store, collect, &text) ? text : std::string();
}

int import_text(cfg *store, const std::string &text, std::size_t piece) {
  Source source{text, piece};
  return cfg_import(store, feed, &source);
}
