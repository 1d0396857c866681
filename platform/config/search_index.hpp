// An equality index on one key of one collection: built when the same question comes a second time, kept up
// to date from the commit log. It reflects stored entries only; entries that the edit has opened are looked
// at one by one.
#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <unordered_map>

namespace twcfg {

class SearchIndex {
 public:
  bool built() const { return built_; }
  std::uint64_t revision() const { return revision_; }
  // How often the index would have helped before it was built.
  unsigned asked() { return ++asked_; }
  void start() {
    *this = SearchIndex();
    built_ = true;
  }
  void reached(std::uint64_t revision) { revision_ = revision; }
  void set(std::uint32_t number, std::string value);
  void drop(std::uint32_t number);
  // Numbers of the entries with this value, ascending; NULL when there are none.
  const std::set<std::uint32_t> *matches(const std::string &value) const;

 private:
  bool built_ = false;
  unsigned asked_ = 0;
  std::uint64_t revision_ = 0;
  std::unordered_map<std::uint32_t, std::string> values_;
  std::unordered_map<std::string, std::set<std::uint32_t>> numbers_;
};

}  // namespace twcfg
