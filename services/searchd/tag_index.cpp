#include "tag_index.hpp"

#include <twconfig/condition.h>
#include <twconfig/element.h>
#include <twconfig/read.h>

#include <algorithm>
#include <charconv>
#include <memory>

#include "query.hpp"

namespace searchd {

std::uint32_t entry_number(std::string_view collection, std::string_view id) {
  if (!id.starts_with(collection) || id.size() <= collection.size() || id[collection.size()] != '-') return 0;
  std::uint32_t number = 0;
  const char *first = id.data() + collection.size() + 1, *end = id.data() + id.size();
  const auto [last, problem] = std::from_chars(first, end, number);
  // Behind the number the ID ends, or names what is in the entry.
  return problem == std::errc() && (last == end || *last == '.' || *last == '_') ? number : 0;
}

bool tag_index::build(cfg *store) {
  noted_.clear();
  values_.clear();
  entries_.clear();
  const twobject::condition_tree any(cfg_new_and_condition());
  cfg_elem *all = any ? cfg_search(store, collection_.c_str(), any.get()) : nullptr;
  std::int32_t size = 0;
  if (!cfg_list_size(all, &size)) return false;
  for (std::int32_t i = 0; i < size; ++i) {
    const std::uint32_t entry = entry_number(collection_, cfg_get_listelem(all, i));
    if (entry != 0) read(store, entry, cfg_simple_get_listelem(store, all, i));
  }
  return true;
}

bool tag_index::note(std::string_view id) {
  if (const std::uint32_t entry = entry_number(collection_, id); entry != 0) {
    noted_.insert(entry);
    return true;
  }
  // An element that holds the collection, or is it: its ID is the front of the collection's name.
  std::string front(id);
  std::replace(front.begin(), front.end(), '.', '_');
  return !(front.empty() || front == collection_ || collection_.starts_with(front + "_"));
}

void tag_index::follow(cfg *store) {
  for (const std::uint32_t entry : noted_) {
    drop(entry);
    read(store, entry, cfg_get_by_id(store, (collection_ + '-' + std::to_string(entry)).c_str()));
  }
  noted_.clear();
}

void tag_index::read(cfg *store, std::uint32_t entry, cfg_elem *elem) {
  cfg_elem *list = cfg_simple_get_mapelem(store, elem, "tags");
  std::int32_t size = 0;
  if (!cfg_list_size(list, &size) || size == 0) return;
  std::vector<std::string> carried;
  for (std::int32_t i = 0; i < size; ++i) {
    cfg_value value;
    if (cfg_elem_read(cfg_simple_get_listelem(store, list, i), &value) && value.kind == CFG_REFERENCE)
      carried.emplace_back(value.data, value.length);
  }
  for (const std::string &value : carried) entries_[value].insert(entry);
  values_[entry] = std::move(carried);
}

void tag_index::drop(std::uint32_t entry) {
  const auto known = values_.find(entry);
  if (known == values_.end()) return;
  for (const std::string &value : known->second) {
    const auto same = entries_.find(value);
    if (same == entries_.end()) continue;  // carried twice
    same->second.erase(entry);
    if (same->second.empty()) entries_.erase(same);
  }
  values_.erase(known);
}

numbers tag_index::carriers(const ids &values) const {
  numbers all;
  for (const std::string &value : values)
    if (const auto same = entries_.find(value); same != entries_.end())
      all.insert(all.end(), same->second.begin(), same->second.end());
  if (values.size() > 1) {
    std::sort(all.begin(), all.end());
    all.erase(std::unique(all.begin(), all.end()), all.end());
  }
  return all;
}

bool tag_index::carries(std::uint32_t entry, const ids &values) const {
  const auto known = values_.find(entry);
  return known != values_.end() &&
         std::any_of(known->second.begin(), known->second.end(),
                     [&](const std::string &value) { return values.contains(value); });
}

}  // namespace searchd
