// Which entries of a collection carry which tag values: the references in their lists "tags".
#pragma once

#include <twconfig/types.h>

#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "tags.hpp"

namespace searchd {

using numbers = std::vector<std::uint32_t>;  // of entries, ascending: the order of the list

// The number of an entry of a collection, from its ID or that of anything below it; 0 for other IDs.
std::uint32_t entry_number(std::string_view collection, std::string_view id);

class tag_index {
 public:
  explicit tag_index(std::string collection) : collection_(std::move(collection)) {}

  const std::string &collection() const { return collection_; }
  // Reads all entries. False when there is no such collection.
  bool build(cfg *store);
  // Notes that the element with this ID has changed. False when that concerns the collection as a whole.
  bool note(std::string_view id);
  // Reads the entries that were noted.
  void follow(cfg *store);

  // The entries that carry one of these values.
  numbers carriers(const ids &values) const;
  bool carries(std::uint32_t entry, const ids &values) const;

 private:
  void read(cfg *store, std::uint32_t entry, cfg_elem *elem);
  void drop(std::uint32_t entry);

  std::string collection_;
  std::set<std::uint32_t> noted_;
  std::unordered_map<std::uint32_t, std::vector<std::string>> values_;  // by entry
  std::unordered_map<std::string, std::set<std::uint32_t>> entries_;    // by value
};

}  // namespace searchd
