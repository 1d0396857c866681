// The network interfaces that a node reports.
#ifndef TW_NODES_NODE_INTERFACE_HPP
#define TW_NODES_NODE_INTERFACE_HPP

#include <twobject/node_interface.h>

#include <vector>

#include "record/view.hpp"

struct cfg_node_interface : tw::object_view {
  tw::text_block *texts = nullptr;  // the node's, for one that was read with it
  tw::text node_uuid;
  tw::text name;
  tw::text ipv4_addr;
  tw::text ipv6_addr;
};

namespace tw {

// An entry that could not be read leaves an empty slot.
using interface_slots = std::vector<std::unique_ptr<cfg_node_interface>>;

// Reads the entries of the list "interfaces" below a node's element. False without memory.
bool load_interfaces(cfg_node &node, cfg_elem *elem) noexcept;

}  // namespace tw

#endif
