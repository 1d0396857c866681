// A growing array of heap strings, kept as C sees one: some families hand it out as it is.
#ifndef TW_RECORD_TEXT_ARRAY_HPP
#define TW_RECORD_TEXT_ARRAY_HPP

#include <twconfig/read.h>

#include <cstdint>
#include <utility>

#include "record/text_block.hpp"

namespace tw {

// Entries may be NULL. It never throws: what finds no memory answers false and leaves the array as it was.
class text_array {
 public:
  text_array() = default;
  text_array(text_array &&other) noexcept
      : texts_(std::exchange(other.texts_, nullptr)),
        count_(std::exchange(other.count_, 0)),
        in_block_(other.in_block_) {}
  text_array &operator=(text_array &&other) noexcept {
    std::swap(texts_, other.texts_);
    std::swap(count_, other.count_);
    std::swap(in_block_, other.in_block_);
    return *this;
  }
  text_array(const text_array &) = delete;
  text_array &operator=(const text_array &) = delete;
  ~text_array() { clear(); }

  std::int32_t count() const noexcept { return count_; }
  // The text at an index; NULL outside the array.
  const char *at(std::int32_t index) const noexcept {
    return index >= 0 && index < count_ ? texts_[index] : nullptr;
  }
  // The array itself; NULL when nothing was ever put into it.
  char **texts() const noexcept { return texts_; }

  // Adds entries that are NULL.
  bool grow(std::int32_t more) noexcept;
  // Replaces the entry at an index that exists by a copy.
  bool set(std::int32_t index, const char *text) noexcept;
  // Adds a copy.
  bool append(const char *text) noexcept;

  // Adds the IDs of a list's committed entries, or of its pending ones, in order. What is no list has none.
  // False only when memory is short; some of the IDs may then have been added.
  bool append_ids(cfg_elem *list) noexcept;
  bool append_pending_ids(cfg_elem *list) noexcept;

  // Becomes copies of the texts among values that were read, NULL for each other one, all of it in the block
  // if there is one with room.
  bool assign(const cfg_value *values, std::int32_t count, text_block *block) noexcept;
  // Moves what lies in a block out of it, which may then go.
  bool move_out() noexcept;

  void clear() noexcept;
  // Frees the texts but leaves the array's block to whoever was given texts().
  void leave_block() noexcept;
  // Frees the array's block but leaves the texts to whoever was given them one by one.
  void leave_texts() noexcept;
  // Takes over a heap array of heap strings.
  void adopt(char **texts, std::int32_t count) noexcept;

 private:
  char **texts_ = nullptr;
  std::int32_t count_ = 0;
  bool in_block_ = false;  // array and texts
};

}  // namespace tw

#endif
