// Shapes: the key tables that maps with the same keys share. A stored map then needs a shape number and one
// offset for each key; where a key stands is found once per shape, not once per map.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "engine/engine.hpp"
#include "key_name.hpp"

namespace twcfg {

class Shape {
 public:
  Shape(std::uint32_t number, std::vector<const KeyName *> keys);
  std::uint32_t number() const { return number_; }
  // Sorted by text.
  const std::vector<const KeyName *> &keys() const { return keys_; }
  // Where the key stands, or -1.
  int slot(const KeyName *key) const;

 private:
  std::uint32_t number_;
  std::vector<const KeyName *> keys_;
  std::vector<std::int16_t> table_;  // by key number, open addressing
};

// The shapes that one handle knows. Shapes are never changed or removed, so what was read once stays right.
class Shapes {
 public:
  explicit Shapes(KeyNames &names) : names_(names) {}
  // The shape with this number, read from the snapshot when it is not known yet; NULL when there is none.
  const Shape *get(std::uint32_t number, Snapshot &snapshot) {
    return number < shapes_.size() && shapes_[number] != nullptr ? shapes_[number].get()
                                                                 : read(number, snapshot);
  }
  // The shape with exactly these keys (sorted by text) among those of the snapshot, or NULL.
  const Shape *find(const std::vector<const KeyName *> &keys, Snapshot &snapshot);

  // The shape with exactly these keys, for a table of shapes that are stored nowhere: they are numbered in
  // the order in which they are asked for.
  const Shape &own(std::vector<const KeyName *> keys);
  const Shape &operator[](std::uint32_t number) const { return *shapes_[number]; }
  std::size_t size() const { return shapes_.size(); }

  static std::string encode(const std::vector<const KeyName *> &keys);

 private:
  const Shape *read(std::uint32_t number, Snapshot &snapshot);
  const Shape *load(std::uint32_t number, std::string_view bytes);

  KeyNames &names_;
  std::vector<std::unique_ptr<Shape>> shapes_;  // by number; gaps are NULL
  std::map<std::vector<const KeyName *>, const Shape *> by_keys_;
  std::uint64_t read_up_to_ = 0;  // revision whose shapes are all in `by_keys_`
};

}  // namespace twcfg
