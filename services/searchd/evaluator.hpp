// Evaluates queries on the store's newest revision.
#pragma once

#include <map>
#include <set>
#include <string>
#include <twobject/store.hpp>
#include <vector>

#include "query.hpp"
#include "tag_index.hpp"
#include "tags.hpp"

namespace searchd {

// Keeps what it has read of the tags, and reads again only what commits have changed. The store's own indexes
// on keys do the same.
class evaluator {
 public:
  // Throws when there is no such store.
  explicit evaluator(std::string path);

  // The entries of a collection for which the query holds. Throws a refusal for an unknown collection.
  numbers search(const std::string &collection, const query &wanted);
  // The keys that entries of a collection can be searched by.
  std::vector<std::string> fields(const std::string &collection);

 private:
  struct parked;
  void open();
  void refresh();
  void apply_commits(std::uint64_t from, std::uint64_t to);
  void forget();
  void limit_indexes(const query &wanted);
  tag_index &index_of(const std::string &collection);
  numbers search_store(const std::string &collection, const query &wanted);

  std::string path_;
  twobject::store_handle store_;
  std::set<std::string> indexed_;  // collections and keys that the handle may have an index on
  std::uint64_t revision_ = 0;     // which `tags_` and `indexes_` show
  tags tags_;
  std::map<std::string, tag_index> indexes_;
};

}  // namespace searchd
