/* What the whole C++ face stands on: owners, texts and ranges. */
#ifndef TWOBJECT_OWNER_HPP
#define TWOBJECT_OWNER_HPP

#include <string.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <ranges>
#include <string_view>
#include <utility>

namespace twobject {

/// The deleter of an owner: one function that releases the whole of a record.
template <auto Release>
struct releaser {
  template <typename T>
  void operator()(T *object) const noexcept {
    Release(object);
  }
};

/// Owns one record of the C interface.
template <typename Record, auto Release>
using owner = std::unique_ptr<Record, releaser<Release>>;

/// Gives a heap block back: an array that a C function handed out, or what a free function has left.
template <typename T>
void release_heap(T *block) noexcept {
  std::free(const_cast<void *>(static_cast<const void *>(block)));
}

/// Wipes a heap string, then gives it back.
inline void release_secret(char *text) noexcept {
  explicit_bzero(text, strlen(text));
  std::free(text);
}

/// An owned heap string: what a C function that gives a `char *` has made.
using heap_text = owner<char, release_heap<char>>;
/// An owned heap block of bytes: the value of a blob.
using heap_block = owner<void, release_heap<void>>;
/// The same for a password, a key or a token: wiped when it ends.
using secret_text = owner<char, release_secret>;

/// A heap array of heap strings, owned with them. Entries may be NULL.
class heap_texts {
 public:
  heap_texts() = default;
  /// Takes the array over, which may be NULL for none.
  heap_texts(char **array, int32_t count) noexcept : array_(array), count_(array ? std::max(count, 0) : 0) {}
  /// Takes over an array that ends with NULL.
  explicit heap_texts(char **array) noexcept : array_(array) {
    while (array && array[count_]) ++count_;
  }
  heap_texts(heap_texts &&other) noexcept
      : array_(std::exchange(other.array_, nullptr)), count_(std::exchange(other.count_, 0)) {}
  heap_texts &operator=(heap_texts &&other) noexcept {
    std::swap(array_, other.array_);
    std::swap(count_, other.count_);
    return *this;
  }
  heap_texts(const heap_texts &) = delete;
  heap_texts &operator=(const heap_texts &) = delete;
  ~heap_texts() {
    for (const char *text : *this) release_heap(text);
    release_heap(array_);
  }

  int32_t size() const noexcept { return count_; }
  bool empty() const noexcept { return count_ == 0; }
  const char *operator[](int32_t index) const noexcept { return array_[index]; }
  const char *const *begin() const noexcept { return array_; }
  const char *const *end() const noexcept { return array_ + count_; }

 private:
  char **array_ = nullptr;
  int32_t count_ = 0;
};

/// A borrowed text that may be NULL. It lives as long as the C text does.
inline std::optional<std::string_view> text_of(const char *text) noexcept {
  return text ? std::optional<std::string_view>(text) : std::nullopt;
}

/// The heap string that a C function hands out through its last parameter; NULL when it fails:
/// `heap_text name = text_from(cfg_system_get_hostname, store);`
template <typename Function, typename... Arguments>
heap_text text_from(Function function, Arguments... arguments) {
  char *text = nullptr;
  return heap_text(function(arguments..., &text) ? text : nullptr);
}

/// The number that a C function hands out through its last parameter; nothing when it fails:
/// `std::optional<int32_t> port = number_from(cfg_net_get_ssh_port, store);`
template <typename Function, typename... Arguments>
std::optional<int32_t> number_from(Function function, Arguments... arguments) {
  int32_t number = 0;
  return function(arguments..., &number) ? std::optional<int32_t>(number) : std::nullopt;
}

/// What `at` gives for each index from 0 to count - 1. A count of -1, "cannot be read", gives nothing.
template <typename At>
auto indexed(int32_t count, At at) {
  return std::views::iota(int32_t{0}, std::max(count, 0)) | std::views::transform(std::move(at));
}

}  // namespace twobject

#endif
