// The local groups of a node.
#ifndef TW_NODES_NODE_GROUP_HPP
#define TW_NODES_NODE_GROUP_HPP

#include <twobject/node_group.h>

#include <memory>
#include <vector>

#include "record/text_array.hpp"
#include "record/view.hpp"

struct cfg_node_group {
  ::cfg *cfg = nullptr;             // by which its list is read
  tw::text_block *texts = nullptr;  // the node's, for one that was read with it
  tw::text groupname;
  tw::text description;
  int32_t system = 0;
  tw::text_array roles;
};

namespace tw {

// Each group has an address of its own: callers keep pointers to groups, and take them out. An entry that
// could not be read leaves an empty slot.
using group_slots = std::vector<std::unique_ptr<cfg_node_group>>;

// Reads the entries of a node's list "groups". False without memory.
bool load_node_groups(cfg_node &node, const cfg_value &list) noexcept;

}  // namespace tw

#endif
