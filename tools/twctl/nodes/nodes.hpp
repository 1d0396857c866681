// Finding and showing nodes: what several nouns need.
#pragma once

#include <string>

#include "cli/options.hpp"
#include "cli/output.hpp"
#include "cli/records.hpp"
#include "cli/session.hpp"

namespace twctl {

/// The node with this ID, name, serial number or VPN address, tried in that order; fails when there is none.
node_record find_node(cfg *store, const std::string &reference);

struct node_filter {
  std::string product, status, match;
  std::string approved;  ///< "", "yes" or "no"
  size_t limit = 0;      ///< 0: all
  std::string columns;   ///< comma-separated keys; empty: the usual ones
};
void list_nodes(const options &opts, const node_filter &filter);
void show_node(const options &opts, const std::string &reference);
/// Adds what a node carries (tags, ports, interfaces, local users and groups) and how it authenticates.
void show_parts(sheet &result, cfg_node *node);

/// Makes a list of the node in the handle's edit when it has none: nodes are enrolled without them.
void need_list(cfg *store, const cfg_node *node, const char *key);

/// The keys of all columns that a list can have, comma-separated.
std::string node_columns();

}  // namespace twctl
