#include "content.hpp"

#include <algorithm>
#include <cstring>

#include "store.hpp"

namespace twcfg {
namespace {

class Checker {
 public:
  explicit Checker(Store &store) : store_(store) {}

  // The levels of a content that stands so deep in what is checked; 0 when something in it cannot be.
  int height(const cfg_content &content, int depth) {
    if (!known(content)) return store_.fail(CFG_E_ARGUMENT, "an element is of no known kind");
    if (content.kind != CFG_MAP && content.kind != CFG_LIST) return scalar(content) ? 1 : 0;
    if (depth == kMaxDepth) return store_.fail(CFG_E_LIMIT, "elements are nested too deep");
    const bool is_map = content.kind == CFG_MAP;
    if (is_map && !keys(content.keys)) return 0;
    const std::size_t count = is_map ? content.keys->count : content.length;
    if (count > kMaxNumber) return store_.fail(CFG_E_LIMIT, "a list is too long");
    if (count > 0 && content.items == nullptr)
      return store_.fail(CFG_E_ARGUMENT, "the items of a map or list are missing");
    int below = 0;
    for (const cfg_content *item = content.items; item != content.items + count; ++item) {
      if (is_map && known(*item) && item->kind == CFG_NONE) continue;
      const int levels = height(*item, depth + 1);
      if (levels == 0) return 0;
      below = std::max(below, levels);
    }
    return below + 1;
  }

 private:
  // What callers in C give is no enumerator for certain.
  static bool known(const cfg_content &content) {
    int kind = 0;
    static_assert(sizeof kind == sizeof content.kind);
    std::memcpy(&kind, &content.kind, sizeof kind);
    return kind >= CFG_NONE && kind <= CFG_REFERENCE;
  }

  bool keys(const cfg_keyset *set) {
    if (set == nullptr || (set->keys == nullptr && set->count > 0))
      return store_.fail(CFG_E_ARGUMENT, "the keys of a map are missing") != 0;
    KeysetSlots &known = store_.keysets.of(*set);
    return (known.knows(*set) && known.writable) || look_at(*set, known);
  }

  bool look_at(const cfg_keyset &set, KeysetSlots &known) {
    if (set.count > kMaxMapKeys)
      return store_.fail(CFG_E_LIMIT, "a map has at most %zu keys", kMaxMapKeys) != 0;
    for (std::size_t i = 0; i < set.count; ++i) {
      const std::size_t length = set.keys[i] == nullptr ? 0 : ::strnlen(set.keys[i], kMaxKey + 1);
      if (length == 0 || length > kMaxKey)
        return store_.fail(CFG_E_ARGUMENT, "a key is 1 to %zu bytes long", kMaxKey) != 0;
    }
    if (!known.knows(set)) known.begin_anew(set, store_.names);
    std::vector<const KeyName *> names = known.names;
    std::sort(names.begin(), names.end());
    const auto twice = std::adjacent_find(names.begin(), names.end());
    if (twice != names.end())
      return store_.fail(CFG_E_ARGUMENT, "a map has the key \"%s\" twice", (*twice)->text.c_str()) != 0;
    known.writable = true;
    return true;
  }

  bool scalar(const cfg_content &content) {
    switch (content.kind) {
      case CFG_INT:
      case CFG_BOOL:
        return true;
      case CFG_STRING:
      case CFG_REFERENCE:
      case CFG_BLOB:
        break;
      default:
        return store_.fail(CFG_E_ARGUMENT, "an element has no kind") != 0;
    }
    if (content.data == nullptr) return store_.fail(CFG_E_ARGUMENT, "a value is missing") != 0;
    if (content.length > (content.kind == CFG_REFERENCE ? kMaxId : kMaxValue))
      return store_.fail(CFG_E_LIMIT, "a value is too long") != 0;
    if (content.kind != CFG_BLOB && std::memchr(content.data, '\0', content.length) != nullptr)
      return store_.fail(CFG_E_ARGUMENT, "a text holds a NUL") != 0;
    return true;
  }

  Store &store_;
};

Node *build_map(Store &store, const cfg_content &content) {
  const std::vector<const KeyName *> &names = store.keysets.of(*content.keys).names;
  MapNode *map = store.editing().nodes.map();
  map->items.reserve(names.size());
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (content.items[i].kind == CFG_NONE) continue;
    Node *child = build_nodes(store, content.items[i]);
    child->parent = map;
    child->key = names[i];
    map->add({names[i], child, nullptr, store.snapshot->revision()});
  }
  return map;
}

Node *build_list(Store &store, const cfg_content &content) {
  ListNode *list = store.editing().nodes.list();
  list->added.reserve(content.length);
  for (std::size_t i = 0; i < content.length; ++i) {
    Node *entry = build_nodes(store, content.items[i]);
    new_head(store, entry);
    entry->parent = list;
    list->added.push_back(entry);
  }
  return list;
}

Node *build_scalar(Store &store, const cfg_content &content) {
  Nodes &nodes = store.editing().nodes;
  if (content.kind == CFG_INT) return nodes.scalar(CFG_INT, {}, content.number);
  if (content.kind == CFG_BOOL) return nodes.scalar(CFG_BOOL, {}, content.number != 0 ? 1 : 0);
  return nodes.scalar(content.kind, {content.data, content.length}, 0);
}

}  // namespace

int checked_height(Store &store, const cfg_content &content) { return Checker(store).height(content, 0); }

Node *build_nodes(Store &store, const cfg_content &content) {
  Node *node = content.kind == CFG_MAP    ? build_map(store, content)
               : content.kind == CFG_LIST ? build_list(store, content)
                                          : build_scalar(store, content);
  node->born = true;
  return node;
}

}  // namespace twcfg
