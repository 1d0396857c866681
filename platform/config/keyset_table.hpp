// What a handle remembers of the key sets that it was used with, by the address of the set.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include <twconfig/read.h>

#include "key_name.hpp"
#include "packed.hpp"

namespace twcfg {

struct ContentForm;

// Where a set's keys stand in maps of one shape.
struct KeysetSlots {
  const cfg_keyset *set = nullptr;
  const char *const *keys = nullptr;
  std::vector<const KeyName *> names;
  std::vector<std::vector<std::int16_t>> by_shape;
  // Those of the shape that was met last, in which the next read mostly begins.
  PackedMap last_form;
  const std::int16_t *last = nullptr;
  bool writable = false;  // whether it is known that a map can have these keys
  // What this edit has made of contents with these keys.
  std::vector<const ContentForm *> content_forms;
  std::uint64_t content_edit = 0;

  // Whether the above is about the keys that the set has now.
  bool knows(const cfg_keyset &now) const { return keys == now.keys && names.size() == now.count; }
  void begin_anew(const cfg_keyset &now, KeyNames &known_names);
};

// Open addressing: a load asks for a dozen sets, so that finding one must cost next to nothing. Sets are
// never removed.
class KeysetTable {
 public:
  KeysetTable() : slots_(64) {}

  KeysetSlots &of(const cfg_keyset &set) {
    for (std::size_t at = start_of(&set);; at = (at + 1) & (slots_.size() - 1)) {
      if (slots_[at] == nullptr) return add(set);
      if (slots_[at]->set == &set) return *slots_[at];
    }
  }

 private:
  std::size_t start_of(const cfg_keyset *set) const {
    return (reinterpret_cast<std::uintptr_t>(set) * 0x9e3779b97f4a7c15u >> 32) & (slots_.size() - 1);
  }
  KeysetSlots &add(const cfg_keyset &set);
  void place(std::unique_ptr<KeysetSlots> slots);

  std::vector<std::unique_ptr<KeysetSlots>> slots_;
  std::size_t used_ = 0;
};

}  // namespace twcfg
