#include <algorithm>

#include "layout.hpp"
#include "store.hpp"

namespace twcfg {
namespace {

Key key_of_record(const Head &record) {
  if (record.parent == nullptr) return kRootKey;
  const Head &list = *record.parent;
  return make_key(distant_of(list), record.number);
}

// Unpacks the record that a head lies in, so that it can be changed.
bool open_record(Head *head) {
  Store &store = *head->store;
  Head *record = head->record;
  const Key key = key_of_record(*record);
  Unpacker unpacker(store.editing().nodes, store.shapes, store.names, *store.snapshot);
  Node *root = unpacker.unpack(record->stored);
  if (root == nullptr) {
    return store.fail(CFG_E_CORRUPT, "the stored record of \"%s\" is damaged", record->id()) != 0;
  }
  root->head = record;
  root->number = record->number;
  store.edit->records[key] = {record, store.snapshot->get(key).revision, root};
  ++record->own_epoch;
  record->epoch = record->own_epoch;
  record->node = root;
  record->stored = {};
  return bound(head) != nullptr;
}

int height(const Node *node) {
  int below = 0;
  if (node->kind == CFG_MAP) {
    for (const MapItem &item : static_cast<const MapNode *>(node)->items) {
      if (item.node != nullptr) below = std::max(below, height(item.node));
    }
  } else if (node->kind == CFG_LIST) {
    const auto *list = static_cast<const ListNode *>(node);
    for (const auto *entries : {&list->entries, &list->added, &list->future}) {
      for (const Node *entry : *entries) below = std::max(below, height(entry));
    }
  }
  return below + 1;
}

int depth_of(const Head *head) {
  int depth = 0;
  for (; head != nullptr && depth <= kMaxDepth; head = head->parent) {
    ++depth;
    const Node *top = head->node;
    for (; top != nullptr && top->parent != nullptr; top = top->parent) ++depth;
    if (top != nullptr && top->head != nullptr) head = top->head;
  }
  return depth;
}

// An element can be attached once, below something that is not itself, and not deeper than records may be.
bool attachable(Store &store, Head *holder, Node *node) {
  if (!node->born || node->dead || node->parent != nullptr) {
    return store.fail(CFG_E_ARGUMENT, "only a new element that is attached nowhere can be attached") != 0;
  }
  for (const Node *above = holder->node; above != nullptr; above = above->parent) {
    if (above == node) return store.fail(CFG_E_ARGUMENT, "an element cannot be attached below itself") != 0;
  }
  return node->kind > CFG_LIST || fits_below(holder, height(node));
}

// A node that was replaced or deleted: handles of it and of what is below it are dead from now on.
void detach(Store &store, Node *node) {
  if (node == nullptr) return;
  node->dead = true;
  if (MapNode *map = as_map(node)) {
    for (const MapItem &item : map->items) detach(store, item.node);
  } else if (ListNode *list = as_list(node)) {
    for (auto *entries : {&list->entries, &list->added, &list->future}) {
      for (Node *entry : *entries) detach(store, entry);
    }
    // Entries of distant lists have bindings of their own, which must be looked at again.
    ++store.generation;
  }
}

bool same_scalar(const Node &left, const Node &right) {
  if (left.kind != right.kind || left.kind <= CFG_LIST) return false;
  const auto &a = static_cast<const ScalarNode &>(left);
  const auto &b = static_cast<const ScalarNode &>(right);
  return a.value == b.value && a.data == b.data;
}

}  // namespace

bool fits_below(Head *holder, int height) {
  if (depth_of(holder) + height <= kMaxDepth) return true;
  return holder->store->fail(CFG_E_LIMIT, "elements would be nested more than %d deep", kMaxDepth) != 0;
}

Node *open_node(Head *head) {
  if (head->node == nullptr && !open_record(head)) return nullptr;
  return head->node;
}

MapNode *edit_map(Head *map) {
  Store &store = *map->store;
  if (!store.writing()) return nullptr;
  if (map->kind != CFG_MAP) {
    store.fail(CFG_E_ARGUMENT, "\"%s\" is no map", map->id());
    return nullptr;
  }
  if (map->node == nullptr && !open_record(map)) return nullptr;
  return as_map(map->node);
}

ListNode *edit_list(Head *list) {
  Store &store = *list->store;
  if (!store.writing()) return nullptr;
  if (list->kind != CFG_LIST || list->result != nullptr) {
    store.fail(CFG_E_ARGUMENT, "\"%s\" is no list of the store", list->id());
    return nullptr;
  }
  const std::uint32_t distant = distant_of(*list);
  if (distant == 0) {
    if (list->node == nullptr && !open_record(list)) return nullptr;
    return as_list(list->node);
  }
  Edit &edit = store.editing();
  if (const auto known = edit.lists.find(distant); known != edit.lists.end()) return known->second.node;
  ListNode *changes = edit.nodes.list();
  changes->distant = distant;
  changes->head = list;
  edit.lists[distant] = {list, changes};
  return changes;
}

bool set_item(Head *map, std::string_view key, Node *value) {
  Store &store = *map->store;
  if (key.empty() || key.size() > kMaxKey) {
    return store.fail(CFG_E_ARGUMENT, "a key is 1 to %zu bytes long", kMaxKey) != 0;
  }
  MapNode *node = edit_map(map);
  if (node == nullptr) return false;
  const KeyName *name = store.names.intern(key);
  MapItem *item = node->find(name);
  const std::uint64_t seen = store.snapshot->revision();
  if (value == nullptr) {
    if (item == nullptr || item->node == nullptr) return true;
    detach(store, item->node);
    if (item->stored != nullptr) {
      item->node = nullptr;
      item->changed = seen;
    } else {
      node->items.erase(node->items.begin() + (item - node->items.data()));
    }
    return true;
  }
  const bool revived = item != nullptr && item->node == nullptr;
  if (item == nullptr) {
    if (node->items.size() >= kMaxMapKeys) {
      return store.fail(CFG_E_LIMIT, "a map has at most %zu keys", kMaxMapKeys) != 0;
    }
    if (node->items.empty()) node->items.reserve(4);  // most maps grow to more
    node->add({name, value, nullptr, seen});
  } else {
    // Writing the value that is stored is no change, or takes a change back: records can be saved whole
    // without conflicts.
    if (item->stored != nullptr && same_scalar(*item->stored, *value)) {
      if (item->node != item->stored) detach(store, item->node);
      item->stored->dead = false;
      item->node = item->stored;
      item->changed = kClean;
      return true;
    }
    detach(store, item->node);
    node->put(*item, value);
    item->changed = seen;
  }
  value->born = true;
  value->parent = node;
  value->key = name;
  // Handles of something that stood here before and was deleted come to life again.
  if (!node->born && (item == nullptr || revived)) ++store.generation;
  return true;
}

bool append_entry(Head *list, Node *entry, bool pending) {
  Store &store = *list->store;
  if (!store.writing() || !attachable(store, list, entry)) return false;
  ListNode *node = edit_list(list);
  if (node == nullptr || (pending && !lay_out_entry(list, entry))) return false;
  (pending ? node->future : node->added).push_back(entry);
  entry->parent = node;
  return true;
}

bool attach_item(Head *map, std::string_view key, Node *value) {
  Store &store = *map->store;
  return store.writing() && attachable(store, map, value) && set_item(map, key, value);
}

bool clear_list(Head *list) {
  Store &store = *list->store;
  ListNode *node = edit_list(list);
  if (node == nullptr) return false;
  const std::uint64_t seen = store.snapshot->revision();
  // What needs memory comes first: a list is emptied whole or not at all.
  std::vector<Key> stored;
  if (node->distant != 0) {
    const auto cursor = store.snapshot->cursor();
    for (bool more = cursor->seek(make_key(node->distant, 1));
         more && space_of(cursor->key()) == node->distant; more = cursor->next()) {
      stored.push_back(cursor->key());
    }
  }
  node->removed.reserve(node->removed.size() + stored.size() + node->entries.size());
  for (const Key key : stored) {
    node->remove_number(item_of(key), seen);
    store.edit->records.erase(key);
  }
  for (Node *entry : node->entries) {
    node->remove_number(entry->number, seen);
    detach(store, entry);
  }
  for (auto *entries : {&node->added, &node->future}) {
    for (Node *entry : *entries) detach(store, entry);
    entries->clear();
  }
  node->entries.clear();
  ++store.generation;
  return true;
}

bool remove_element(Head *head) {
  Store &store = *head->store;
  if (!store.writing()) return false;
  if (head->result != nullptr || head == store.root) {
    return store.fail(CFG_E_ARGUMENT, "\"%s\" cannot be deleted", head->id()) != 0;
  }
  Head *holder = holder_of(head);
  if (holder == nullptr) {
    if (head->node != nullptr) detach(store, head->node);  // a new element that is attached nowhere
    return true;
  }
  const KeyName *key = head->born ? head->node->key : head->key;
  if (holder->kind == CFG_MAP) {
    const bool done = set_item(holder, key->text, nullptr);
    ++store.generation;
    return done;
  }
  ListNode *list = edit_list(holder);
  if (list == nullptr) return false;
  head = bound(head);  // opening the list's record has moved the binding
  if (head == nullptr) return true;
  if (Node *node = head->node; node != nullptr && node->number == 0) {
    std::erase(list->added, node);
    std::erase(list->future, node);
    detach(store, node);
    return true;
  }
  const std::uint32_t number = head->node != nullptr ? head->node->number : head->number;
  list->remove_number(number, store.snapshot->revision());
  if (list->distant != 0) {
    store.edit->records.erase(make_key(list->distant, number));
  } else {
    std::erase(list->entries, head->node);
    detach(store, head->node);
  }
  ++store.generation;
  return true;
}

bool replace_scalar(Head *head, std::string_view data) {
  Store &store = *head->store;
  if (!store.writing()) return false;
  ScalarNode *value = store.editing().nodes.scalar(head->kind, data, 0);
  if (head->node != nullptr && head->node->head == head && head->born) {
    // A new element keeps its node, because its handle is bound to it.
    as_scalar(head->node)->data = value->data;
    if (MapNode *map = as_map(head->node->parent))
      map->find(head->node->key)->changed = store.snapshot->revision();
    return true;
  }
  Head *holder = holder_of(head);
  if (holder == nullptr) return store.fail(CFG_E_NOT_FOUND, "\"%s\" is gone", head->id()) != 0;
  if (holder->kind == CFG_MAP) return set_item(holder, head->key->text, value);
  if (head->record == head) {
    // An entry that is a record of its own and holds nothing but a scalar.
    if (head->node == nullptr && !open_record(head)) return false;
  } else if (edit_list(holder) == nullptr || bound(head) == nullptr) {
    return false;
  }
  ScalarNode *node = as_scalar(head->node);
  if (node->data == value->data && node->changed == kClean) return true;
  node->data = value->data;
  node->changed = store.snapshot->revision();
  return true;
}

}  // namespace twcfg
