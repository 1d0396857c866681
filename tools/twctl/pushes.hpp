// Pushes, found by what is typed, and how far they have come.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "output.hpp"
#include "records.hpp"

namespace twctl {

/// A push by its ID, or the newest for "last". Fails with exit code 3.
push_record find_push(cfg *store, const std::string &reference);

/// One of the eight lists of messages that a node's share of a push has.
struct message_list_of_push {
  const char *phase;  ///< "preflight" or "execution"
  const char *kind;   ///< "change", "warning", "error" or "message"
  const char *key;    ///< of its count
  int32_t (*count)(const cfg_push_node_ctxt *);
  const char *(*id)(const cfg_push_node_ctxt *, int32_t);
};
extern const std::array<message_list_of_push, 8> message_lists;

/// The name of a node, or of a template, by its ID; the ID when it is gone.
std::string node_name(cfg *store, const char *id);
std::string template_name(cfg *store, const char *id);

/// The nodes of a push that a list of references names, by ID or name; all of them for an empty list. Fails
/// with exit code 3 for a node that is not in the push.
std::vector<cfg_push_node_ctxt *> nodes_of(cfg *store, cfg_push_exec_ctxt *push,
                                           const std::vector<std::string> &references);

}  // namespace twctl
