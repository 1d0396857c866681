#include "packed.hpp"

#include <algorithm>

#include "limits.hpp"

namespace twcfg {

std::string_view PackedMap::key(std::uint32_t slot) const {
  if (shape_ != nullptr) return shape_->keys()[slot]->text;
  const std::uint32_t at = offset(slot * 2);
  if (at < kRecordHeader || !node_.has(at, 1)) return {};
  const auto length = static_cast<std::uint8_t>(node_.base[at]);
  if (!node_.has(std::uint64_t{at} + 1, length)) return {};
  return {node_.base + at + 1, length};
}

Packed PackedMap::find(std::string_view key, const KeyNames &names) const {
  if (shape_ != nullptr) {
    const KeyName *name = names.find(key);
    const int slot = name == nullptr ? -1 : shape_->slot(name);
    return slot < 0 ? Packed{} : child(static_cast<std::uint32_t>(slot));
  }
  std::uint32_t low = 0;
  std::uint32_t high = count_;
  while (low < high) {
    const std::uint32_t middle = low + (high - low) / 2;
    if (this->key(middle) < key) {
      low = middle + 1;
    } else {
      high = middle;
    }
  }
  return low < count_ && this->key(low) == key ? child(low) : Packed{};
}

std::int64_t PackedList::index_of(std::uint32_t number) const {
  std::uint32_t low = 0;
  std::uint32_t high = count_;
  while (low < high) {
    const std::uint32_t middle = low + (high - low) / 2;
    if (this->number(middle) < number) {
      low = middle + 1;
    } else {
      high = middle;
    }
  }
  return low < count_ && this->number(low) == number ? std::int64_t{low} : -1;
}

bool read_list_head(std::string_view bytes, ListHead &head) {
  if (bytes.size() != 8) return false;
  head.next = load_raw<std::uint32_t>(bytes.data());
  head.count = load_raw<std::uint32_t>(bytes.data() + 4);
  return true;
}

}  // namespace twcfg
