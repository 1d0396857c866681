#include "key_name.hpp"

#include <functional>

#include "id_text.hpp"

namespace twcfg {

KeyNames::KeyNames() : table_(256, nullptr) {}

std::size_t KeyNames::slot_of(std::string_view text) const {
  std::size_t slot = std::hash<std::string_view>{}(text) & (table_.size() - 1);
  while (table_[slot] != nullptr && table_[slot]->text != text) slot = (slot + 1) & (table_.size() - 1);
  return slot;
}

const KeyName *KeyNames::find(std::string_view text) const { return table_[slot_of(text)]; }

const KeyName *KeyNames::intern(std::string_view text) {
  if (const KeyName *known = find(text)) return known;
  if ((names_.size() + 1) * 2 > table_.size()) grow();
  const auto number = static_cast<std::uint32_t>(names_.size());
  names_.push_back({std::string(text), number, flatten(escape_key(text))});
  table_[slot_of(text)] = &names_.back();
  return &names_.back();
}

void KeyNames::grow() {
  std::vector<const KeyName *> bigger(table_.size() * 2, nullptr);
  table_.swap(bigger);
  for (const KeyName &name : names_) table_[slot_of(name.text)] = &name;
}

}  // namespace twcfg
