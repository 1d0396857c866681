// Conditions on nodes, and asking the search service: what several nouns need.
#pragma once

#include <string>
#include <vector>

#include "cli/failure.hpp"
#include "cli/records.hpp"
#include "cli/session.hpp"

namespace twctl {

/// How conditions are written, for the help of commands that take them.
extern const char *const condition_help;

/**
 * The tree that all terms together mean: KEY=VALUE, KEY!=VALUE, !KEY (absent), or one condition as JSON text.
 * Fails with exit code 5 for anything else.
 */
condition_tree read_condition(const std::vector<std::string> &terms);
/// The tree as JSON text, as smart groups keep it.
std::string query_of(const cfg_condition *tree);

/// Why the search service has found nothing: it is not there, or it has refused.
failure search_failure();

/// Asks the search service, and lists the nodes found: at most `limit`, 0 for all.
void list_found(const session &work, const condition_tree &tree, int32_t limit);

}  // namespace twctl
