// Owned, nullable C strings: what records keep their texts in.
#ifndef TW_RECORD_TEXT_HPP
#define TW_RECORD_TEXT_HPP

#include <malloc.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "record/text_block.hpp"

namespace tw {

// A heap string, a string in a text block, or NULL. It never throws: an assignment that finds no memory
// answers false and leaves NULL. A wiped one overwrites all of its memory before it lets go of it; one in a
// block must go before this does.
template <bool Wiped>
class basic_text {
 public:
  basic_text() = default;
  basic_text(basic_text &&other) noexcept
      : chars_(std::exchange(other.chars_, nullptr)), in_block_(std::exchange(other.in_block_, 0)) {}
  basic_text &operator=(basic_text &&other) noexcept {
    std::swap(chars_, other.chars_);
    std::swap(in_block_, other.in_block_);
    return *this;
  }
  basic_text(const basic_text &) = delete;
  basic_text &operator=(const basic_text &) = delete;
  ~basic_text() { clear(); }

  const char *c_str() const noexcept { return chars_; }
  explicit operator bool() const noexcept { return chars_ != nullptr; }

  void clear() noexcept { adopt(nullptr); }

  // Takes over a heap string without copying it.
  void adopt(char *chars) noexcept {
    if constexpr (Wiped) {
      if (chars_) explicit_bzero(chars_, in_block_ != 0 ? in_block_ : malloc_usable_size(chars_));
    }
    if (in_block_ == 0) std::free(chars_);
    chars_ = chars;
    in_block_ = 0;
  }

  // Lets go of a heap string without freeing it: it belongs to whoever was given it.
  void leave() noexcept { chars_ = nullptr; }

  // Becomes a copy of `length` bytes, in the block if there is one with room for it. The bytes may lie inside
  // the string that is replaced.
  bool assign(const char *bytes, std::size_t length, text_block *block = nullptr) noexcept {
    char *copy = block ? block->take(length + 1) : nullptr;
    const auto in_block = static_cast<std::uint32_t>(copy ? length + 1 : 0);
    if (!copy) copy = static_cast<char *>(std::malloc(length + 1));
    if (copy) {
      std::memcpy(copy, bytes, length);
      copy[length] = '\0';
    }
    adopt(copy);
    in_block_ = in_block;
    return copy != nullptr;
  }

  // Moves the string out of its block, which may then go. False, with nothing changed, without memory.
  bool move_out() noexcept {
    if (in_block_ == 0) return true;
    char *copy = strdup(chars_);
    if (copy) adopt(copy);
    return copy != nullptr;
  }

  // The rule of string setters: NULL and "" clear, anything else is copied.
  bool set(const char *value, text_block *block = nullptr) noexcept {
    if (value && *value) return assign(value, std::strlen(value), block);
    clear();
    return true;
  }

 private:
  char *chars_ = nullptr;
  std::uint32_t in_block_ = 0;  // its bytes there, the NUL included; 0 for a heap string
};

using text = basic_text<false>;
using secret = basic_text<true>;  // passwords and private keys

// Exact comparison; a NULL text equals nothing.
inline bool same(const char *a, const char *b) noexcept { return a && b && std::strcmp(a, b) == 0; }

}  // namespace tw

#endif
