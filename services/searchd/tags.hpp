// The tag definitions of the store: which values a tag has.
#pragma once

#include <twconfig/types.h>

#include <map>
#include <set>
#include <string>

namespace searchd {

using ids = std::set<std::string>;

// Reads "tags.node_tags". Tags of the same name count as one.
class tags {
 public:
  void read(cfg *store);

  // The IDs of all values of a tag, and of those with a text.
  ids values_of(const std::string &tag) const;
  ids values_of(const std::string &tag, const std::string &text) const;
  std::set<std::string> names() const;

 private:
  std::map<std::string, std::map<std::string, ids>> values_;  // by tag and text
};

}  // namespace searchd
