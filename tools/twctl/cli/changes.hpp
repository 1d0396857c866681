// The changes of an edit, shown before they are committed, without any secret in them.
#pragma once

#include <cstdio>
#include <string>
#include <vector>

#include "cli/output.hpp"

namespace twctl {

/// One change, ready to be shown.
struct change {
  char op;            ///< '+' added, '-' removed, '=' value set
  std::string id;     ///< the element's ID; provisional for a new list entry
  std::string place;  ///< the same for people: a new entry reads as its list and "[new 1]"
  std::string kind;   ///< "map", "string", ...; empty in the commit log, which does not keep it
  cell before;
  cell after;
};

/// True when the element's ID names something that must not be shown: a password, a key, a token, a hash.
bool names_secret(std::string_view id);

/// All changes of the handle's edit.
std::vector<change> changes_of(cfg *store);
/// The changes that a commit made: operation and ID only.
std::vector<change> changes_of_commit(cfg *store, uint64_t revision);

/// Writes at most `limit` changes (0: all) as lines to a stream.
void print_changes(const std::vector<change> &changes, std::FILE *stream, size_t limit = 0);
json_value changes_to_json(const std::vector<change> &changes);

}  // namespace twctl
