// The simplest thing that could be a store: a tree of plain values. Random tests do the same to it and to a
// store and compare.
#pragma once

#include <twconfig.h>

#include <cstdint>
#include <string>
#include <vector>

struct ModelNode {
  cfg_kind kind = CFG_MAP;
  std::string name;         // the key in a map; the ID in a list, empty before the commit that gives it
  std::string text;         // string, reference, blob
  std::int32_t number = 0;  // integer, boolean
  std::vector<ModelNode> children;  // of a map, in no order; of a list, the entries that reads see
  std::vector<ModelNode> pending;   // of a list

  ModelNode *find(const std::string &key);
  // Puts a value under a key in place of what was there.
  ModelNode &put(const std::string &key, ModelNode value);
  void remove(const std::string &key);
  // In the words of dump().
  std::string dump() const;
  // What a commit does: pending entries go behind the others.
  void commit();
};
