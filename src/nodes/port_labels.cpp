#include "nodes/port_labels.hpp"

#include <twconfig/read.h>

#include <algorithm>
#include <cstdio>

#include "record/content.hpp"

namespace tw {

bool port_labels::number(int32_t count) {
  if (count > max_ports) return false;
  std::vector<text> fresh(static_cast<size_t>(std::max(count, 0)));
  for (size_t i = 0; i < fresh.size(); ++i) {
    char label[32];
    const int length = std::snprintf(label, sizeof label, "Port %d", static_cast<int>(i) + 1);
    if (!fresh[i].assign(label, static_cast<size_t>(length))) return false;
  }
  labels_ = std::move(fresh);
  return true;
}

bool port_labels::set(int32_t count, int32_t index, const char *label) {
  if (index < 0 || index >= std::min(count, max_ports) || !label) return false;
  const auto i = static_cast<size_t>(index);
  if (i >= labels_.size()) labels_.resize(i + 1);
  return labels_[i].assign(label, std::strlen(label));
}

const char *port_labels::get(int32_t count, int32_t index) const noexcept {
  if (index < 0 || index >= count || static_cast<size_t>(index) >= labels_.size()) return nullptr;
  return labels_[static_cast<size_t>(index)].c_str();
}

bool port_labels::load(int32_t count, cfg *store, cfg_elem *list) {
  int32_t size = 0;
  if (!cfg_list_size(list, &size)) return true;
  labels_.resize(static_cast<size_t>(std::clamp(count, 0, std::min(size, max_ports))));
  for (size_t i = 0; i < labels_.size(); ++i) {
    cfg_value value;
    cfg_elem *entry = cfg_simple_get_listelem(store, list, static_cast<int32_t>(i));
    if (!cfg_elem_read(entry, &value) || value.kind != CFG_STRING) continue;
    if (!labels_[i].assign(value.data, value.length)) return false;
  }
  return true;
}

bool port_labels::save(cfg *store, cfg_elem *map, const char *key) const {
  std::vector<cfg_content> entries;
  entries.reserve(labels_.size());
  for (const text &label : labels_) entries.push_back(content(label ? label.c_str() : ""));
  const cfg_content list = content(entries);
  return cfg_put_content(store, map, key, &list) != 0;
}

}  // namespace tw
