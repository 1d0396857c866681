#include "change_walk.hpp"

#include "id_text.hpp"

namespace twcfg {
namespace {

// Where the entries of a list are stored, to tell what a removed one was: in the record `inside`, or on their
// own.
struct StoredEntries {
  Store &store;
  std::uint32_t distant;
  Packed inside;

  Packed operator[](std::uint32_t number) const {
    if (distant != 0) return packed_record(store.snapshot->get(make_key(distant, number)).bytes);
    const PackedList packed(inside);
    const std::int64_t index = packed ? packed.index_of(number) : -1;
    return index < 0 ? Packed{} : packed.child(static_cast<std::uint32_t>(index));
  }
};

void walk_list(const ListNode &list, const StoredEntries &old, const std::string &path,
               const ChangeVisitor &visit) {
  for (const ListNode::Removed &gone : list.removed) {
    visit({Change::kRemoved,
           entry_path(path, gone.number),
           gone.changed,
           nullptr,
           {nullptr, old[gone.number]}});
  }
  // New entries follow what is there when they are committed, so only the list itself matters to them.
  for (const auto *entries : {&list.added, &list.future}) {
    for (const Node *entry : *entries) visit({Change::kAppended, path, 0, entry, {}});
  }
}

Packed old_child(Store &store, const Packed &old, const KeyName &key) {
  if (!old) return {};
  const PackedMap packed(old, store.shapes, *store.snapshot);
  return packed ? packed.find(key.text, store.names) : Packed{};
}

bool list_touched(const ListNode &list) {
  if (list.touched()) return true;
  for (const Node *entry : list.entries) {
    if (entry->changed != kClean || touched(entry)) return true;
  }
  return false;
}

}  // namespace

std::string key_path(const std::string &map, const KeyName &key) {
  return map.empty() ? escape_key(key.text) : map + '.' + escape_key(key.text);
}

std::string entry_path(std::string_view list, std::uint32_t number) {
  return std::string(list) + '[' + std::to_string(number) + ']';
}

std::string path_of(const Head *head) {
  if (head->parent == nullptr) return {};
  const std::string above = path_of(head->parent);
  return head->key != nullptr ? key_path(above, *head->key) : entry_path(above, head->number);
}

bool touched(const Node *node) {
  if (node->kind == CFG_LIST) return list_touched(*static_cast<const ListNode *>(node));
  if (node->kind != CFG_MAP) return false;
  for (const MapItem &item : static_cast<const MapNode *>(node)->items) {
    if (item.changed != kClean) return true;
    if (item.node != nullptr && item.node->kind <= CFG_LIST && touched(item.node)) return true;
  }
  return false;
}

void walk_node(Store &store, const Node *node, const std::string &path, const Packed &old,
               const ChangeVisitor &visit) {
  if (node->changed != kClean) {
    visit({Change::kSet, path, node->changed, node, {nullptr, old}});
  } else if (node->kind == CFG_MAP) {
    for (const MapItem &item : static_cast<const MapNode *>(node)->items) {
      if (item.changed == kClean && (item.node == nullptr || item.node->kind > CFG_LIST)) continue;
      const std::string child = key_path(path, *item.key);
      const Packed before = old_child(store, old, *item.key);
      if (item.changed == kClean) {
        walk_node(store, item.node, child, before, visit);
      } else if (item.node == nullptr) {
        visit({Change::kRemoved, child, item.changed, nullptr, {nullptr, before}});
      } else {
        const bool scalars = item.node->kind > CFG_LIST && (!before || kind_of(before) > CFG_LIST);
        const bool in_place = scalars && item.stored != nullptr;
        visit({in_place ? Change::kSet : Change::kAdded, child, item.changed, item.node, {nullptr, before}});
      }
    }
  } else if (node->kind == CFG_LIST) {
    const auto &list = *static_cast<const ListNode *>(node);
    if (list.distant != 0) return;
    const StoredEntries before{store, 0, old};
    walk_list(list, before, path, visit);
    for (const Node *entry : list.entries) {
      walk_node(store, entry, entry_path(path, entry->number), before[entry->number], visit);
    }
  }
}

void walk_changes(Store &store, const ChangeVisitor &visit) {
  if (store.edit == nullptr) return;
  for (const auto &[number, list] : store.edit->lists) {
    if (in_place(number, list)) walk_list(*list.node, {store, number, {}}, path_of(list.head), visit);
  }
  for (const auto &[key, record] : store.edit->records) {
    if (!in_place(record)) continue;  // removed by this same edit
    const Stored stored = store.snapshot->get(key);
    walk_node(store, record.root, path_of(record.head), stored ? packed_record(stored.bytes) : Packed{},
              visit);
  }
}

bool has_changes(Store &store) {
  if (store.edit == nullptr) return false;
  if (!store.edit->lost.empty()) return true;
  for (const auto &[number, list] : store.edit->lists) {
    if (list.node->touched() && in_place(number, list)) return true;
  }
  for (const auto &[key, record] : store.edit->records) {
    if ((record.root->changed != kClean || touched(record.root)) && in_place(record)) return true;
  }
  return false;
}

}  // namespace twcfg
