#include "shape.hpp"

#include <algorithm>

#include "key_space.hpp"
#include "limits.hpp"

namespace twcfg {

Shape::Shape(std::uint32_t number, std::vector<const KeyName *> keys)
    : number_(number), keys_(std::move(keys)) {
  std::size_t size = 4;
  while (size < keys_.size() * 2) size *= 2;
  table_.assign(size, -1);
  for (std::size_t i = 0; i < keys_.size(); ++i) {
    std::size_t at = keys_[i]->number & (size - 1);
    while (table_[at] >= 0) at = (at + 1) & (size - 1);
    table_[at] = static_cast<std::int16_t>(i);
  }
}

int Shape::slot(const KeyName *key) const {
  const std::size_t mask = table_.size() - 1;
  for (std::size_t at = key->number & mask; table_[at] >= 0; at = (at + 1) & mask) {
    if (keys_[static_cast<std::size_t>(table_[at])] == key) return table_[at];
  }
  return -1;
}

std::string Shapes::encode(const std::vector<const KeyName *> &keys) {
  std::string bytes;
  for (const KeyName *key : keys) {
    bytes += key->text;
    bytes += '\0';
  }
  return bytes;
}

const Shape &Shapes::own(std::vector<const KeyName *> keys) {
  if (const auto known = by_keys_.find(keys); known != by_keys_.end()) return *known->second;
  const auto number = static_cast<std::uint32_t>(shapes_.size());
  auto shape = std::make_unique<Shape>(number, std::move(keys));
  const auto added = by_keys_.emplace(shape->keys(), shape.get()).first;
  try {
    shapes_.push_back(std::move(shape));
  } catch (...) {
    by_keys_.erase(added);
    throw;
  }
  return *shapes_.back();
}

const Shape *Shapes::load(std::uint32_t number, std::string_view bytes) {
  if (number >= kMaxShapes) return nullptr;
  if (number < shapes_.size() && shapes_[number] != nullptr) return shapes_[number].get();
  std::vector<const KeyName *> keys;
  while (!bytes.empty()) {
    const std::size_t end = bytes.find('\0');
    if (end == std::string_view::npos || end == 0 || end > kMaxKey || keys.size() >= kMaxShapeKeys)
      return nullptr;
    const KeyName *key = names_.intern(bytes.substr(0, end));
    if (!keys.empty() && !(keys.back()->text < key->text)) return nullptr;
    keys.push_back(key);
    bytes.remove_prefix(end + 1);
  }
  if (shapes_.size() <= number) shapes_.resize(number + 1);
  auto shape = std::make_unique<Shape>(number, std::move(keys));
  by_keys_.emplace(shape->keys(), shape.get());
  shapes_[number] = std::move(shape);
  return shapes_[number].get();
}

const Shape *Shapes::read(std::uint32_t number, Snapshot &snapshot) {
  const Stored stored = snapshot.get(make_key(kShapeSpace, number));
  return stored ? load(number, stored.bytes) : nullptr;
}

const Shape *Shapes::find(const std::vector<const KeyName *> &keys, Snapshot &snapshot) {
  if (const auto known = by_keys_.find(keys); known != by_keys_.end()) return known->second;
  if (read_up_to_ < snapshot.revision()) {
    const auto cursor = snapshot.cursor();
    for (bool more = cursor->seek(make_key(kShapeSpace, 0)); more && space_of(cursor->key()) == kShapeSpace;
         more = cursor->next()) {
      load(item_of(cursor->key()), cursor->value().bytes);
    }
    read_up_to_ = snapshot.revision();
  }
  const auto known = by_keys_.find(keys);
  return known == by_keys_.end() ? nullptr : known->second;
}

}  // namespace twcfg
