#include "engine/persistent_map.hpp"

#include <utility>

namespace twcfg {
namespace {

using Node = PersistentMap::Node;
using Link = PersistentMap::Link;

std::uint64_t priority(std::uint64_t key) {
  key = (key ^ (key >> 30U)) * 0xbf58476d1ce4e5b9U;
  key = (key ^ (key >> 27U)) * 0x94d049bb133111ebU;
  return key ^ (key >> 31U);
}

Link with_children(const Node &node, Link left, Link right) {
  return std::make_shared<const Node>(Node{node.key, node.bytes, std::move(left), std::move(right)});
}

// The parts of a tree below and above a key that it does not contain.
std::pair<Link, Link> split(const Link &tree, std::uint64_t key) {
  if (!tree) return {};
  if (tree->key < key) {
    auto [below, above] = split(tree->right, key);
    return {with_children(*tree, tree->left, std::move(below)), std::move(above)};
  }
  auto [below, above] = split(tree->left, key);
  return {std::move(below), with_children(*tree, std::move(above), tree->right)};
}

// One tree of two, of which all keys of `low` are below those of `high`.
Link join(const Link &low, const Link &high) {
  if (!low) return high;
  if (!high) return low;
  if (priority(low->key) > priority(high->key)) return with_children(*low, low->left, join(low->right, high));
  return with_children(*high, join(low, high->left), high->right);
}

// `present`: the key is in the tree already, so its place is known.
Link put_into(const Link &tree, std::uint64_t key, const std::shared_ptr<const std::string> &bytes,
              bool present) {
  if (present && tree->key == key)
    return std::make_shared<const Node>(Node{key, bytes, tree->left, tree->right});
  if (!present && (!tree || priority(key) > priority(tree->key))) {
    auto [below, above] = split(tree, key);
    return std::make_shared<const Node>(Node{key, bytes, std::move(below), std::move(above)});
  }
  if (key < tree->key) return with_children(*tree, put_into(tree->left, key, bytes, present), tree->right);
  return with_children(*tree, tree->left, put_into(tree->right, key, bytes, present));
}

Link erase_from(const Link &tree, std::uint64_t key) {
  if (tree->key == key) return join(tree->left, tree->right);
  if (key < tree->key) return with_children(*tree, erase_from(tree->left, key), tree->right);
  return with_children(*tree, tree->left, erase_from(tree->right, key));
}

}  // namespace

const Node *PersistentMap::find(std::uint64_t key) const {
  const Node *node = root_.get();
  while (node && node->key != key) node = key < node->key ? node->left.get() : node->right.get();
  return node;
}

const Node *PersistentMap::at_or_above(std::uint64_t key) const {
  const Node *best = nullptr;
  for (const Node *node = root_.get(); node;) {
    if (node->key >= key) best = node;
    node = node->key >= key ? node->left.get() : node->right.get();
  }
  return best;
}

const Node *PersistentMap::last() const {
  const Node *node = root_.get();
  while (node && node->right) node = node->right.get();
  return node;
}

void PersistentMap::put(std::uint64_t key, std::string bytes) {
  const Node *old = find(key);
  const std::uint64_t removed = old ? old->bytes->size() : 0;
  const auto shared = std::make_shared<const std::string>(std::move(bytes));
  root_ = put_into(root_, key, shared, old != nullptr);
  bytes_ += shared->size() - removed;
  size_ += old ? 0 : 1;
}

void PersistentMap::erase(std::uint64_t key) {
  const Node *old = find(key);
  if (!old) return;
  const std::uint64_t removed = old->bytes->size();
  root_ = erase_from(root_, key);
  bytes_ -= removed;
  size_--;
}

}  // namespace twcfg
