// Finding heads by hash: open addressing over pointers, so that a look-up costs one probe and the head
// itself, which the caller is about to use anyway. Heads are never removed.
//
// A slot also remembers where its head's record was when it was last found. Table, head and record lie apart,
// in memory that is cold when there are thousands of them; asking for head and record at the same time saves
// waiting for one after the other. Who knows early whom he will look up can have all of it on its way: first
// the slot, then what it leads to.
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "head.hpp"
#include "huge_pages.hpp"

namespace twcfg {

class HeadTable {
 public:
  HeadTable() : slots_(64) {}

  // The head with this hash for which `same` holds, or NULL.
  template <class Same>
  Head *find(std::uint64_t hash, Same &&same) {
    const std::size_t mask = slots_.size() - 1;
    for (std::size_t at = hash & mask; slots_[at].head != nullptr; at = (at + 1) & mask) {
      Slot &slot = slots_[at];
      if (slot.hash != hash) continue;
      ask_for(slot.bytes, slot.size);
      if (!same(*slot.head)) continue;
      slot.remember();
      return slot.head;
    }
    return nullptr;
  }

  void ask_for_slot(std::uint64_t hash) const { __builtin_prefetch(&slots_[hash & (slots_.size() - 1)]); }
  void ask_for_head(std::uint64_t hash) const {
    const Slot &slot = slots_[hash & (slots_.size() - 1)];
    if (slot.hash != hash) return;
    ask_for(reinterpret_cast<const char *>(slot.head), sizeof(Head) + kLine);  // with its ID
    ask_for(slot.bytes, slot.size);
  }

  void insert(std::uint64_t hash, Head *head) {
    if ((used_ + 1) * 2 > slots_.size()) grow();
    Slot slot{hash, head};
    slot.remember();
    place(slots_, slot);
    ++used_;
  }

 private:
  static constexpr std::uint32_t kLine = 64;
  static constexpr std::uint32_t kAhead = 4096;  // what stands in a row beyond, the processor foresees itself

  struct Slot {
    std::uint64_t hash = 0;
    Head *head = nullptr;
    const char *bytes = nullptr;  // maybe outdated: asked for ahead, never read
    std::uint32_t size = 0;       // 0 for what lies in the record of another head

    void remember() {
      bytes = head->stored.base;
      size = head->record == head ? std::min(head->stored.size, kAhead) : 0;
    }
  };

  static void ask_for(const char *bytes, std::size_t size) {
    for (std::size_t line = 0; line < size; line += kLine) __builtin_prefetch(bytes + line);
  }

  using Slots = std::vector<Slot, HugePageAllocator<Slot>>;

  static void place(Slots &slots, const Slot &slot) {
    const std::size_t mask = slots.size() - 1;
    std::size_t at = slot.hash & mask;
    while (slots[at].head != nullptr) at = (at + 1) & mask;
    slots[at] = slot;
  }

  void grow() {
    Slots bigger(slots_.size() * 2);
    for (const Slot &slot : slots_) {
      if (slot.head != nullptr) place(bigger, slot);
    }
    slots_.swap(bigger);
  }

  Slots slots_;
  std::size_t used_ = 0;
};

}  // namespace twcfg
