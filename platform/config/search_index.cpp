#include "search_index.hpp"

namespace twcfg {

void SearchIndex::set(std::uint32_t number, std::string value) {
  drop(number);
  numbers_[value].insert(number);
  values_.emplace(number, std::move(value));
}

void SearchIndex::drop(std::uint32_t number) {
  const auto known = values_.find(number);
  if (known == values_.end()) return;
  const auto same = numbers_.find(known->second);
  same->second.erase(number);
  if (same->second.empty()) numbers_.erase(same);
  values_.erase(known);
}

const std::set<std::uint32_t> *SearchIndex::matches(const std::string &value) const {
  const auto same = numbers_.find(value);
  return same == numbers_.end() ? nullptr : &same->second;
}

}  // namespace twcfg
