// What an edit has changed, told element by element.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "store.hpp"

namespace twcfg {

struct Change {
  enum Kind { kSet, kAdded, kRemoved, kAppended };
  Kind kind;
  std::string_view path;  // of the element; of the list for kAppended
  std::uint64_t seen;     // revision that the author of the change saw
  const Node *node;       // the new element; NULL for kRemoved
  Found old;              // what stands there in the snapshot, where that is known
};
using ChangeVisitor = std::function<void(const Change &)>;

// The path of an element that is committed, or stands below one by keys.
std::string path_of(const Head *head);
std::string key_path(const std::string &map, const KeyName &key);
std::string entry_path(std::string_view list, std::uint32_t number);

// Calls `visit` for every change of the edit that still has its place. New entries are told as kAppended.
void walk_changes(Store &store, const ChangeVisitor &visit);
// The same for one node of an opened record; `old` is what is stored there (empty when unknown).
void walk_node(Store &store, const Node *node, const std::string &path, const Packed &old,
               const ChangeVisitor &visit);
bool has_changes(Store &store);
// Whether anything at or below a node was changed.
bool touched(const Node *node);

}  // namespace twcfg
