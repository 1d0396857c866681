// The local users that a node reports.
#ifndef TW_NODES_NODE_USER_HPP
#define TW_NODES_NODE_USER_HPP

#include <twobject/node_user.h>

#include <memory>
#include <vector>

#include "record/text_array.hpp"
#include "record/view.hpp"

struct cfg_node_user {
  ::cfg *cfg = nullptr;             // by which its list is read
  tw::text_block *texts = nullptr;  // the node's, for one that was read with it
  tw::text username;
  tw::text description;
  tw::text_array groups;
  int32_t disabled = 0;
};

namespace tw {

// An entry that could not be read leaves an empty slot.
using user_slots = std::vector<std::unique_ptr<cfg_node_user>>;

// Reads the entries of a node's list "users". False without memory.
bool load_node_users(cfg_node &node, const cfg_value &list) noexcept;

}  // namespace tw

#endif
