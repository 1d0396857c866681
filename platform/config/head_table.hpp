// Finding heads by hash: open addressing over pointers, so that a look-up costs one probe and the head
// itself, which the caller is about to use anyway. Heads are never removed.
#pragma once

#include <cstdint>
#include <vector>

#include "head.hpp"

namespace twcfg {

class HeadTable {
 public:
  HeadTable() : slots_(64) {}

  // The head with this hash for which `same` holds, or NULL.
  template <class Same>
  Head *find(std::uint64_t hash, Same &&same) const {
    const std::size_t mask = slots_.size() - 1;
    for (std::size_t at = hash & mask; slots_[at].head != nullptr; at = (at + 1) & mask) {
      if (slots_[at].hash == hash && same(*slots_[at].head)) return slots_[at].head;
    }
    return nullptr;
  }

  void insert(std::uint64_t hash, Head *head) {
    if ((used_ + 1) * 2 > slots_.size()) grow();
    place(slots_, {hash, head});
    ++used_;
  }

 private:
  struct Slot {
    std::uint64_t hash = 0;
    Head *head = nullptr;
  };

  static void place(std::vector<Slot> &slots, const Slot &slot) {
    const std::size_t mask = slots.size() - 1;
    std::size_t at = slot.hash & mask;
    while (slots[at].head != nullptr) at = (at + 1) & mask;
    slots[at] = slot;
  }

  void grow() {
    std::vector<Slot> bigger(slots_.size() * 2);
    for (const Slot &slot : slots_) {
      if (slot.head != nullptr) place(bigger, slot);
    }
    slots_.swap(bigger);
  }

  std::vector<Slot> slots_;
  std::size_t used_ = 0;
};

}  // namespace twcfg
