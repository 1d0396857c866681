// The conditions of a search, sorted by what can answer them: the store, or the index of tags.
#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <twobject/store.hpp>
#include <vector>

#include "json.hpp"

namespace searchd {

// A condition on the values of one tag: the key "tag:<name of the tag>".
struct tag_condition {
  std::string tag;
  std::int32_t op;  // CFG_OP_*
  bool by_id;       // `value` is a tag value's ID and not its text
  std::string value;
};

// All conditions of a tree must hold, whatever its levels: here it has one.
struct query {
  twobject::condition_tree stored;  // an and-node over the keys that entries hold
  std::size_t stored_count = 0;
  std::set<std::string> equal_keys;  // those of them that an index of the store can answer
  std::vector<tag_condition> tags;
};

// Takes a condition tree apart. Throws a refusal when it is none or names a key that cannot be searched.
query read_query(const json_t *conditions);

}  // namespace searchd
