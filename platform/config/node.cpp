#include "node.hpp"

#include <algorithm>
#include <cstring>
#include <new>

#include "limits.hpp"

namespace twcfg {

std::size_t ListNode::removed_at(std::uint32_t number_) const {
  const auto at =
      std::lower_bound(removed.begin(), removed.end(), number_,
                       [](const Removed &entry, std::uint32_t wanted) { return entry.number < wanted; });
  return static_cast<std::size_t>(at - removed.begin());
}

bool ListNode::has_removed(std::uint32_t number_) const {
  const std::size_t at = removed_at(number_);
  return at < removed.size() && removed[at].number == number_;
}

void ListNode::remove_number(std::uint32_t number_, std::uint64_t revision) {
  if (has_removed(number_)) return;
  removed.insert(removed.begin() + static_cast<std::ptrdiff_t>(removed_at(number_)), {number_, revision});
}

cfg_value value_of(const Node &node) {
  cfg_value value{node.kind, 0, nullptr, 0};
  if (node.kind > CFG_LIST) {
    const auto &scalar = static_cast<const ScalarNode &>(node);
    value.number = scalar.value;
    value.data = scalar.data.data();
    value.length = scalar.data.size();
  }
  return value;
}

template <class T>
T *Nodes::make() {
  // The arena frees everything at once, and no node owns anything outside it: no destructor needs to run.
  return new (nodes_.take(sizeof(T), alignof(T))) T(&nodes_);
}

MapNode *Nodes::map() {
  auto *node = make<MapNode>();
  node->kind = CFG_MAP;
  return node;
}

ListNode *Nodes::list() {
  auto *node = make<ListNode>();
  node->kind = CFG_LIST;
  return node;
}

ScalarNode *Nodes::scalar(cfg_kind kind, std::string_view data, std::int32_t value) {
  auto *node = new (nodes_.take(sizeof(ScalarNode), alignof(ScalarNode))) ScalarNode;
  node->kind = kind;
  node->value = value;
  if (data.data() != nullptr) node->data = values_.copy(data);
  return node;
}

Ownership *Nodes::ownership() { return make<Ownership>(); }

Node *Unpacker::entry(const Packed &stored, int depth) {
  if (kind_of(stored) != CFG_MAP) return node(stored, nullptr, depth);
  if (depth > kMaxDepth || budget_-- == 0) return nullptr;
  Owner owner{nodes_.ownership(), {}};
  return map(stored, &owner, depth);
}

Node *Unpacker::node(const Packed &stored, Owner *owner, int depth) {
  if (depth > kMaxDepth || budget_-- == 0) return nullptr;
  switch (kind_of(stored)) {
    case CFG_MAP:
      return map(stored, owner, depth);
    case CFG_LIST:
      return list(stored, owner, depth);
    case CFG_NONE:
      return nullptr;
    default: {
      const cfg_value value = value_of(stored);
      if (value.kind == CFG_NONE) return nullptr;
      return nodes_.scalar(value.kind, {value.data, value.length}, value.number);
    }
  }
}

Node *Unpacker::map(const Packed &stored, Owner *owner, int depth) {
  const PackedMap packed(stored, shapes_, snapshot_);
  if (!packed) return nullptr;
  MapNode *result = nodes_.map();
  result->items.reserve(packed.count());
  const std::size_t prefix = owner->prefix.size();
  if (prefix == 0) {
    result->owner = owner->lists;
    const bool sound = packed.each_retired([&](std::string_view name, std::uint32_t next) {
      owner->lists->retired.push_back({std::pmr::string(name, nodes_.arena()), next, 0});
    });
    if (!sound) return nullptr;
  }
  for (std::uint32_t i = 0; i < packed.count(); ++i) {
    const std::string_view key = packed.key(i);
    if (key.empty()) return nullptr;
    const KeyName *name = names_.intern(key);
    if (prefix != 0) owner->prefix += '_';
    owner->prefix += name->flat;
    Node *child = node(packed.child(i), owner, depth + 1);
    owner->prefix.resize(prefix);
    if (child == nullptr) return nullptr;
    child->parent = result;
    child->key = name;
    result->add({child->key, child, child});
  }
  return result;
}

Node *Unpacker::list(const Packed &stored, Owner *owner, int depth) {
  ListNode *result = nodes_.list();
  result->distant = distant_list(stored);
  if (result->distant == 0) {
    const PackedList packed(stored);
    if (!packed) return nullptr;
    result->next = packed.next();
    result->entries.reserve(packed.count());
    for (std::uint32_t i = 0; i < packed.count(); ++i) {
      Node *child = entry(packed.child(i), depth + 1);
      if (child == nullptr) return nullptr;
      child->parent = result;
      child->number = packed.number(i);
      result->entries.push_back(child);
    }
  }
  if (owner != nullptr) {
    owner->lists->lists.push_back(
        {std::pmr::string(owner->prefix, nodes_.arena()), result->next, result->distant});
  }
  return result;
}

}  // namespace twcfg
