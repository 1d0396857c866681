// Owned, nullable C strings: what records keep their texts in.
#ifndef TW_RECORD_TEXT_HPP
#define TW_RECORD_TEXT_HPP

#include <malloc.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace tw {

// A heap string or NULL. It never throws: an assignment that finds no memory answers false and leaves NULL.
// A wiped one overwrites its whole block before it lets go of it.
template <bool Wiped>
class basic_text {
 public:
  basic_text() = default;
  basic_text(basic_text &&other) noexcept : chars_(std::exchange(other.chars_, nullptr)) {}
  basic_text &operator=(basic_text &&other) noexcept {
    std::swap(chars_, other.chars_);
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
    if (chars_) {
      if constexpr (Wiped) explicit_bzero(chars_, malloc_usable_size(chars_));
      std::free(chars_);
    }
    chars_ = chars;
  }

  // Lets go of the string without freeing it: it belongs to whoever was given it.
  void leave() noexcept { chars_ = nullptr; }

  // Becomes a copy of `length` bytes. The bytes may lie inside the string that is replaced.
  bool assign(const char *bytes, std::size_t length) noexcept {
    char *copy = static_cast<char *>(std::malloc(length + 1));
    if (copy) {
      std::memcpy(copy, bytes, length);
      copy[length] = '\0';
    }
    adopt(copy);
    return copy != nullptr;
  }

  // The rule of string setters: NULL and "" clear, anything else is copied.
  bool set(const char *value) noexcept {
    if (value && *value) return assign(value, std::strlen(value));
    clear();
    return true;
  }

 private:
  char *chars_ = nullptr;
};

using text = basic_text<false>;
using secret = basic_text<true>;  // passwords and private keys

// Exact comparison; a NULL text equals nothing.
inline bool same(const char *a, const char *b) noexcept { return a && b && std::strcmp(a, b) == 0; }

}  // namespace tw

#endif
