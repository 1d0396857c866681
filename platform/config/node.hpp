// The part of the tree that an edit has opened: nodes in memory that can be changed.
//
// Nodes live in the edit's arena and die with it as a whole. A node is `born` when this edit made it; the
// others were unpacked from a stored record so that something below them could be changed. Each change
// carries the revision that its author saw, which is what conflicts are judged by.
#pragma once

#include <cstdint>
#include <memory_resource>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "arena.hpp"
#include "packed.hpp"

namespace twcfg {

struct Head;
struct ListNode;
struct Sealed;

inline constexpr std::uint64_t kClean = ~std::uint64_t{0};  // "not changed": no revision is that high

struct Node {
  Node *parent = nullptr;          // holder in memory; NULL when unattached or the root of its record
  const KeyName *key = nullptr;    // where it stands in a map
  std::uint64_t changed = kClean;  // of a list entry that is a scalar: its value was replaced
  Head *head = nullptr;      // of a born element, of the root of an opened record, of an opened distant list
  std::uint32_t number = 0;  // where it stands in a list; 0 for a new entry
  std::uint32_t assigned = 0;  // number given by the commit under way
  cfg_kind kind : 8 = CFG_NONE;
  bool born = false;
  bool dead = false;  // deleted or replaced in this edit
};

struct ScalarNode : Node {
  std::int32_t value = 0;
  std::string_view data;  // string, reference, blob; NUL behind it
};
static_assert(sizeof(ScalarNode) == 64, "an import makes these by the hundred thousand");

struct MapItem {
  const KeyName *key;
  Node *node;                      // NULL: deleted in this edit
  Node *stored;                    // as unpacked from the record; NULL for a new key
  std::uint64_t changed = kClean;  // revision seen by whoever set or deleted the key
};

// The lists of one entry (or of the root), by flattened name: a new list goes on counting where an old one
// stopped.
struct StoredList {
  std::pmr::string name;
  std::uint32_t next;     // of a list inside the record; a distant list keeps it in its head
  std::uint32_t distant;  // its list number, 0 inside the record
};
struct Ownership {
  explicit Ownership(std::pmr::memory_resource *arena) : lists(arena), retired(arena) {}
  std::pmr::vector<StoredList> lists;    // as stored, before the edit
  std::pmr::vector<StoredList> retired;  // numbers of lists that are no more
};

struct MapNode : Node {
  explicit MapNode(std::pmr::memory_resource *arena) : items(arena) {}
  bool nested = false;              // whether maps and lists may be found in it
  std::pmr::vector<MapItem> items;  // filled by add() and put()
  Ownership *owner = nullptr;       // set in list entries and the root that were stored
  const Sealed *sealed = nullptr;   // of a new entry that nobody has asked for since (sealed.hpp)

  void add(const MapItem &item) {
    items.push_back(item);
    put(items.back(), item.node);
  }
  void put(MapItem &item, Node *node) {
    item.node = node;
    if (node != nullptr && node->kind <= CFG_LIST) nested = true;
  }

  MapItem *find(const KeyName *name) {
    for (MapItem &item : items) {
      if (item.key == name) return &item;
    }
    return nullptr;
  }
};

struct ListNode : Node {
  explicit ListNode(std::pmr::memory_resource *arena)
      : entries(arena), added(arena), future(arena), removed(arena) {}
  std::uint32_t distant = 0;         // list number when its committed entries are records of their own
  std::uint32_t next = 1;            // next number, of a list inside a record
  std::uint32_t placed = 0;          // list number given by the commit under way
  std::uint32_t next_after = 1;      // next number after the commit under way
  std::pmr::vector<Node *> entries;  // committed entries inside the record
  std::pmr::vector<Node *> added;    // new entries that list reads see
  std::pmr::vector<Node *> future;   // new entries that they do not see before commit
  struct Removed {
    std::uint32_t number;
    std::uint64_t changed;
  };
  std::pmr::vector<Removed> removed;  // numbers of committed entries, ascending

  std::size_t removed_at(std::uint32_t number_) const;  // where the number stands, or would
  bool has_removed(std::uint32_t number_) const;
  void remove_number(std::uint32_t number_, std::uint64_t revision);
  bool touched() const { return !added.empty() || !future.empty() || !removed.empty(); }
};

inline MapNode *as_map(Node *node) {
  return node != nullptr && node->kind == CFG_MAP ? static_cast<MapNode *>(node) : nullptr;
}
inline ListNode *as_list(Node *node) {
  return node != nullptr && node->kind == CFG_LIST ? static_cast<ListNode *>(node) : nullptr;
}
inline ScalarNode *as_scalar(Node *node) {
  return node != nullptr && node->kind > CFG_LIST ? static_cast<ScalarNode *>(node) : nullptr;
}

cfg_value value_of(const Node &node);

// Makes nodes, and keeps them as long as it lives.
class Nodes {
 public:
  std::pmr::memory_resource *arena() { return &nodes_; }
  MapNode *map();
  ListNode *list();
  ScalarNode *scalar(cfg_kind kind, std::string_view data, std::int32_t value);
  Ownership *ownership();

 private:
  template <class T>
  T *make();

  // Values may be private keys and passwords; what stands around them tells no secret and needs no wiping.
  Arena nodes_{Contents::plain};
  Arena values_{Contents::secret};
};

// Unpacks a stored node with everything below it, down to distant lists. `entry` says that the node is a list
// entry or the root and so owns the lists below it. NULL when the record is damaged.
class Unpacker {
 public:
  Unpacker(Nodes &nodes, Shapes &shapes, KeyNames &names, Snapshot &snapshot)
      : nodes_(nodes), shapes_(shapes), names_(names), snapshot_(snapshot) {}
  Node *unpack(const Packed &stored) {
    budget_ = stored.size;
    return entry(stored, 0);
  }

 private:
  struct Owner {
    Ownership *lists;
    std::string prefix;  // flattened names of the maps on the way
  };
  Node *entry(const Packed &stored, int depth);
  Node *node(const Packed &stored, Owner *owner, int depth);
  Node *map(const Packed &stored, Owner *owner, int depth);
  Node *list(const Packed &stored, Owner *owner, int depth);

  Nodes &nodes_;
  Shapes &shapes_;
  KeyNames &names_;
  Snapshot &snapshot_;
  std::uint32_t budget_ = 0;  // no sound record has more nodes than bytes
};

}  // namespace twcfg
