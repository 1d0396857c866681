#include "tags.hpp"

#include <twconfig/element.h>
#include <twconfig/read.h>

#include <twobject/store.hpp>

namespace searchd {

namespace {

constexpr const char *value_keys[] = {"value"};
constexpr cfg_keyset value_set{value_keys, 1};

int take_value(void *context, const char *id, const cfg_value *values) {
  auto &texts = *static_cast<std::map<std::string, ids> *>(context);
  if (values && values->kind == CFG_STRING) texts[std::string(values->data, values->length)].insert(id);
  return 1;
}

}  // namespace

void tags::read(cfg *store) {
  values_.clear();
  cfg_elem *list = cfg_get_by_path(store, "tags.node_tags");
  for (std::int32_t i = 0; cfg_get_listelem(list, i); ++i) {
    cfg_elem *tag = cfg_simple_get_listelem(store, list, i);
    const twobject::heap_text name = twobject::text_from(cfg_map_get_string, store, tag, "name");
    if (name) cfg_child_scan(tag, "values", &value_set, take_value, &values_[name.get()]);
  }
}

ids tags::values_of(const std::string &tag) const {
  ids all;
  if (const auto found = values_.find(tag); found != values_.end())
    for (const auto &[text, same] : found->second) all.insert(same.begin(), same.end());
  return all;
}

ids tags::values_of(const std::string &tag, const std::string &text) const {
  const auto found = values_.find(tag);
  if (found == values_.end()) return {};
  const auto same = found->second.find(text);
  return same == found->second.end() ? ids() : same->second;
}

std::set<std::string> tags::names() const {
  std::set<std::string> all;
  for (const auto &[tag, texts] : values_) all.insert(tag);
  return all;
}

}  // namespace searchd
