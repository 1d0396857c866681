// Taking an exported text in.
#include <jansson.h>
#include <twconfig/transfer.h>

#include <algorithm>
#include <cerrno>
#include <map>
#include <memory>
#include <stdexcept>

#include "base64.hpp"
#include "calls.hpp"
#include "packer.hpp"
#include "store.hpp"
#include "utf8.hpp"

namespace twcfg {
namespace {

struct Malformed : std::runtime_error {
  using std::runtime_error::runtime_error;
};

using Json = std::unique_ptr<json_t, decltype(&json_decref)>;

// Builds nodes from the text's elements; throws Malformed.
class Importer {
 public:
  Importer(Store &store, Nodes &nodes) : store_(store), nodes_(nodes) {}

  MapNode *root(const json_t *document) {
    const json_t *format = json_object_get(document, "format");
    const json_t *version = json_object_get(document, "version");
    if (json_string_value(format) == nullptr ||
        std::string_view(json_string_value(format)) != "twconfig export") {
      throw Malformed("it is no export of a store");
    }
    if (json_integer_value(version) != 1) throw Malformed("its version is not 1");
    if (json_object_size(document) != 3) throw Malformed("it has members that an export does not have");
    MapNode *node = as_map(element(json_object_get(document, "root"), true, 0));
    if (node == nullptr) throw Malformed("its root is no map");
    return node;
  }

 private:
  [[noreturn]] void bad(const char *what) const { throw Malformed(what + (" at \"" + where_ + '"')); }

  std::string_view text(const json_t *value) const {
    if (!json_is_string(value)) bad("a text is missing");
    return {json_string_value(value), json_string_length(value)};
  }

  std::uint32_t number(const json_t *value) const {
    if (!json_is_integer(value) || json_integer_value(value) < 1 ||
        json_integer_value(value) > kMaxNumber + 1LL) {
      bad("an entry's number is out of range");
    }
    return static_cast<std::uint32_t>(json_integer_value(value));
  }

  ScalarNode *bytes(cfg_kind kind, const json_t *value, bool base64) {
    std::string decoded;
    std::string_view data = text(value);
    if (base64) {
      if (!from_base64(data, decoded)) bad("bytes are not in base64");
      data = decoded;
    }
    if (data.size() > (kind == CFG_REFERENCE ? kMaxId : kMaxValue)) bad("a value is too long");
    if (kind != CFG_BLOB && data.find('\0') != std::string_view::npos) bad("a text holds a NUL");
    return nodes_.scalar(kind, data.data() == nullptr ? std::string_view("") : data, 0);
  }

  Node *element(const json_t *value, bool owner, int depth) {
    if (!json_is_object(value)) bad("an element is missing");
    if (depth >= kMaxDepth) bad("elements are nested too deep");
    Node *node = of_kind(value, owner, depth);
    node->born = true;
    return node;
  }

  Node *of_kind(const json_t *value, bool owner, int depth) {
    if (const json_t *map = json_object_get(value, "map")) return map_node(value, map, owner, depth);
    if (const json_t *list = json_object_get(value, "list")) return list_node(value, list, depth);
    if (json_object_size(value) != 1) bad("an element names no kind, or more than one");
    const char *kind = json_object_iter_key(json_object_iter(const_cast<json_t *>(value)));
    const json_t *content = json_object_get(value, kind);
    const std::string_view name(kind);
    if (name == "string") return bytes(CFG_STRING, content, false);
    if (name == "string64") return bytes(CFG_STRING, content, true);
    if (name == "reference") return bytes(CFG_REFERENCE, content, false);
    if (name == "reference64") return bytes(CFG_REFERENCE, content, true);
    if (name == "blob") return bytes(CFG_BLOB, content, true);
    if (name == "boolean" && json_is_boolean(content))
      return nodes_.scalar(CFG_BOOL, {}, json_is_true(content));
    if (name == "integer" && json_is_integer(content)) {
      const json_int_t number_value = json_integer_value(content);
      if (number_value < INT32_MIN || number_value > INT32_MAX) bad("an integer is out of range");
      return nodes_.scalar(CFG_INT, {}, static_cast<std::int32_t>(number_value));
    }
    bad("an element is of no known kind");
  }

  MapNode *map_node(const json_t *value, const json_t *content, bool owner, int depth) {
    if (!json_is_object(content) || json_object_size(content) > kMaxMapKeys)
      bad("a map is no object, or too large");
    MapNode *map = nodes_.map();
    const json_t *retired = json_object_get(value, "retired");
    if (json_object_size(value) != (retired != nullptr ? 2 : 1))
      bad("a map has members that it must not have");
    if (owner) {
      map->owner = nodes_.ownership();
    } else if (retired != nullptr) {
      bad("only entries and the root have retired numbers");
    }
    std::string key;
    const char *name = nullptr;
    json_t *child = nullptr;
    const std::size_t length = where_.size();
    json_object_foreach(const_cast<json_t *>(content), name, child) {
      where_ += std::string(length == 0 ? "" : ".") + name;
      if (!key_from_utf8(name, key) || key.empty() || key.size() > kMaxKey) bad("a key is not well formed");
      Node *node = element(child, false, depth + 1);
      node->parent = map;
      node->key = store_.names.intern(key);
      map->add({node->key, node, nullptr, 0});
      where_.resize(length);
    }
    json_object_foreach(const_cast<json_t *>(retired), name, child) {
      if (!key_from_utf8(name, key) || key.size() > kMaxId) bad("a retired list is not well formed");
      map->owner->retired.push_back({std::pmr::string(key, nodes_.arena()), number(child), 0});
    }
    return map;
  }

  ListNode *list_node(const json_t *value, const json_t *content, int depth) {
    if (!json_is_array(content) || json_object_size(value) != 2) bad("a list is not well formed");
    ListNode *list = nodes_.list();
    list->next = number(json_object_get(value, "next"));
    std::uint32_t last = 0;
    const std::size_t length = where_.size();
    for (std::size_t i = 0; i < json_array_size(content); ++i) {
      const json_t *pair = json_array_get(content, i);
      if (json_array_size(pair) != 2) bad("a list's entry is not well formed");
      const std::uint32_t entry_number = number(json_array_get(pair, 0));
      where_ += '[' + std::to_string(entry_number) + ']';
      if (entry_number <= last || entry_number >= list->next) bad("an entry's number is out of order");
      last = entry_number;
      Node *entry = element(json_array_get(pair, 1), true, depth + 1);
      entry->parent = list;
      entry->number = entry_number;
      list->entries.push_back(entry);
      where_.resize(length);
    }
    return list;
  }

  Store &store_;
  Nodes &nodes_;
  std::string where_;
};

// Sees to it that no list gives out a number that the store has used: a new owner goes on where the stored
// one with the same ID stopped.
class NumberCarrier {
 public:
  NumberCarrier(Store &store, Nodes &nodes) : store_(store), nodes_(nodes) {}

  void carry(Node *now, const Packed &old) {
    MapNode *map = as_map(now);
    if (map == nullptr || map->owner == nullptr || kind_of(old) != CFG_MAP) {
      if (ListNode *list = as_list(now); list != nullptr && kind_of(old) == CFG_LIST) entries(*list, old);
      return;
    }
    std::map<std::string, Packed> stored = stored_lists(old);
    std::map<std::string, std::uint32_t> next;
    const PackedMap packed(old, store_.shapes, *store_.snapshot);
    if (packed) {
      packed.each_retired(
          [&](std::string_view name, std::uint32_t value) { next[std::string(name)] = value; });
    }
    for (const auto &[name, list] : stored) next[name] = std::max(next[name], next_of(list));
    std::vector<NamedList> named;
    named_lists(map, {}, named);
    for (const NamedList &list : named) {
      if (const auto known = next.find(list.name); known != next.end()) {
        auto *node = const_cast<ListNode *>(list.list);
        node->next = std::max(node->next, known->second);
        next.erase(known);
      }
    }
    for (const auto &[name, value] : next) {
      map->owner->retired.push_back({std::pmr::string(name, nodes_.arena()), value, 0});
    }
    for (const NamedList &list : named) {
      if (const auto known = stored.find(list.name); known != stored.end()) {
        entries(*const_cast<ListNode *>(list.list), known->second);
      }
    }
  }

 private:
  std::uint32_t next_of(const Packed &list) const {
    if (const std::uint32_t number = distant_list(list)) {
      ListHead head;
      return read_list_head(store_.snapshot->get(head_key(number)).bytes, head) ? head.next : 1;
    }
    const PackedList packed(list);
    return packed ? packed.next() : 1;
  }

  void entries(ListNode &now, const Packed &old) {
    now.next = std::max(now.next, next_of(old));
    const std::uint32_t distant = distant_list(old);
    const PackedList packed(old);
    for (Node *entry : now.entries) {
      Packed before;
      if (distant != 0) {
        before = packed_record(store_.snapshot->get(make_key(distant, entry->number)).bytes);
      } else if (const std::int64_t index = packed ? packed.index_of(entry->number) : -1; index >= 0) {
        before = packed.child(static_cast<std::uint32_t>(index));
      }
      if (before) carry(entry, before);
    }
  }

  std::map<std::string, Packed> stored_lists(const Packed &owner) {
    std::map<std::string, Packed> lists;
    collect(owner, {}, 0, lists);
    return lists;
  }

  void collect(const Packed &map, const std::string &prefix, int depth,
               std::map<std::string, Packed> &lists) {
    const PackedMap packed(map, store_.shapes, *store_.snapshot);
    for (std::uint32_t i = 0; packed && depth < kMaxDepth && i < packed.count(); ++i) {
      const std::string name = list_name(prefix, *store_.names.intern(packed.key(i)));
      if (kind_of(packed.child(i)) == CFG_LIST) lists.emplace(name, packed.child(i));
      if (kind_of(packed.child(i)) == CFG_MAP) collect(packed.child(i), name, depth + 1, lists);
    }
  }

  Store &store_;
  Nodes &nodes_;
};

Json parse(cfg_import_source source, void *context, json_error_t &error) {
  struct Reader {
    cfg_import_source source;
    void *context;
  } reader{source, context};
  const auto read = [](void *buffer, std::size_t size, void *data) {
    const auto *from = static_cast<const Reader *>(data);
    return from->source(from->context, static_cast<char *>(buffer), size);
  };
  errno = 0;
  Json json(json_load_callback(read, &reader, JSON_REJECT_DUPLICATES, &error), &json_decref);
  if (json == nullptr && errno == ENOMEM) throw std::bad_alloc();
  return json;
}

// Makes the imported content the content of a new edit.
bool fill_edit(Store &store, MapNode *imported) {
  Head *root = root_head(store);
  MapNode *map = root == nullptr ? nullptr : edit_map(root);
  if (map == nullptr) return false;
  std::vector<const KeyName *> old;
  for (const MapItem &item : map->items) old.push_back(item.key);
  for (const KeyName *key : old) {
    if (imported->find(key) == nullptr) set_item(root, key->text, nullptr);
  }
  for (const MapItem &item : imported->items) {
    if (!set_item(root, item.key->text, item.node)) return false;
  }
  map->owner->retired.swap(imported->owner->retired);
  return true;
}

// Puts the new edit in the place of the handle's; that one is dropped only when nothing can fail any more.
bool take_over(Store &store, std::unique_ptr<Edit> edit, MapNode *imported) {
  store.edit.swap(edit);
  ++store.generation;
  const auto swap_back = [&edit](Store *handle) {
    handle->edit.swap(edit);
    ++handle->generation;
  };
  std::unique_ptr<Store, decltype(swap_back)> before(&store, swap_back);
  if (!fill_edit(store, imported)) return false;
  before.reset();  // the old edit is the handle's once more, and dropped as such
  store.drop_edit();
  store.edit = std::move(edit);
  return true;
}

}  // namespace
}  // namespace twcfg

int cfg_import(cfg *store, cfg_import_source source, void *context) noexcept {
  using namespace twcfg;
  if (!given(store, source)) return 0;
  return guarded(store, 0, [&] {
    if (!store->writing()) return 0;
    json_error_t error{};
    const Json document = parse(source, context, error);
    if (document == nullptr) {
      return store->fail(CFG_E_FORMAT, "the text is no JSON: line %d: %s", error.line, error.text);
    }
    auto edit = store->new_edit();
    MapNode *imported = nullptr;
    try {
      imported = Importer(*store, edit->nodes).root(document.get());
    } catch (const Malformed &problem) {
      return store->fail(CFG_E_FORMAT, "the export cannot be read: %s", problem.what());
    }
    const Stored root = store->snapshot->get(kRootKey);
    if (root) NumberCarrier(*store, edit->nodes).carry(imported, packed_record(root.bytes));
    return take_over(*store, std::move(edit), imported) ? 1 : 0;
  });
}
