// Pushes and their nodes, found by what is typed.
#pragma once

#include <string>
#include <vector>

#include "cli/records.hpp"

namespace twctl {

/// A push by its ID, or the newest one for "last". Fails with exit code 3.
push_record find_push(cfg *store, const std::string &reference);

/// A node's share of a push, and the node's name, which is its ID when the node is gone.
struct push_share {
  cfg_push_node_ctxt *context;  ///< the push's
  std::string name;
};

/// The shares of the nodes that are named, by ID or name; all of them when none is. Fails with exit code 3
/// for a node that the push does not go to.
std::vector<push_share> shares_of(cfg *store, cfg_push_exec_ctxt *push,
                                  const std::vector<std::string> &nodes);

/// The name of a template by its ID; the ID when it is gone.
std::string template_name(cfg *store, const char *id);

}  // namespace twctl
