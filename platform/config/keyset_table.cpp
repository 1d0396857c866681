#include "keyset_table.hpp"

#include <utility>

namespace twcfg {

void KeysetSlots::begin_anew(const cfg_keyset &now, KeyNames &known_names) {
  keys = now.keys;
  last_form = {};
  last = nullptr;
  names.clear();
  by_shape.clear();
  writable = false;
  content_forms.clear();
  for (std::size_t i = 0; i < now.count; ++i) names.push_back(known_names.intern(now.keys[i]));
}

KeysetSlots &KeysetTable::add(const cfg_keyset &set) {
  auto added = std::make_unique<KeysetSlots>();
  added->set = &set;
  if ((used_ + 1) * 2 > slots_.size()) {
    std::vector<std::unique_ptr<KeysetSlots>> bigger(slots_.size() * 2);
    slots_.swap(bigger);
    for (auto &known : bigger) {
      if (known != nullptr) place(std::move(known));
    }
  }
  KeysetSlots &slots = *added;
  place(std::move(added));
  ++used_;
  return slots;
}

void KeysetTable::place(std::unique_ptr<KeysetSlots> slots) {
  std::size_t at = start_of(slots->set);
  while (slots_[at] != nullptr) at = (at + 1) & (slots_.size() - 1);
  slots_[at] = std::move(slots);
}

}  // namespace twcfg
