// Condition trees as the search sees them.
#pragma once

#include <twconfig/condition.h>
#include <twconfig/read.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

struct cfg_condition {
  enum class Kind { string, reference, untyped, conjunction };

  Kind kind = Kind::conjunction;
  int32_t op = 0;     // CFG_OP_*; 0 for an and-node
  std::string key;    // empty for an and-node
  std::string value;  // empty for an and-node and an untyped leaf
  std::vector<std::unique_ptr<cfg_condition>> children;

  cfg_condition *owner = nullptr;  // the and-node that this node was given to
  std::size_t nodes = 1;           // of the tree below and including this node
  std::size_t levels = 1;
};

namespace twcfg {

// The limits keep every walk over a tree, its destruction included, shallow enough for recursion.
inline constexpr std::size_t kMaxConditionNodes = 4096;
inline constexpr std::size_t kMaxConditionLevels = 32;

// Whether the value, of whatever kind, is the one that a string or reference leaf names.
inline bool equals(const cfg_condition &leaf, const cfg_value &value) {
  const cfg_kind kind = leaf.kind == cfg_condition::Kind::reference ? CFG_REFERENCE : CFG_STRING;
  return value.kind == kind && std::string_view(value.data, value.length) == leaf.value;
}

// Whether the tree holds for the entry whose values `lookup` gives: a cfg_value for a dotted key
// (const std::string &), of kind CFG_NONE when the entry has none. A value of another kind than the leaf's
// equals nothing: "not equal" holds for it as it does for an absent key. An and-node without children holds.
template <class Lookup>
bool holds(const cfg_condition &condition, Lookup &&lookup) {
  if (condition.kind == cfg_condition::Kind::conjunction)
    return std::all_of(condition.children.begin(), condition.children.end(),
                       [&](const auto &child) { return holds(*child, lookup); });
  const cfg_value value = lookup(condition.key);
  if (condition.kind == cfg_condition::Kind::untyped) return value.kind == CFG_NONE;
  return equals(condition, value) == (condition.op == CFG_OP_EQUAL);
}

// A string or reference leaf with "equal" that must hold for the tree to hold: an index on its key gives all
// candidates. NULL when there is none. The first in the tree, so that whoever builds a tree can put the most
// selective key in front.
const cfg_condition *index_leaf(const cfg_condition &condition);

}  // namespace twcfg
