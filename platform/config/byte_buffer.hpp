// Bytes that are written one behind the other, in memory that is used again and again and overwritten in the
// end: records hold private keys and passwords.
#pragma once

#include <strings.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <string_view>

namespace twcfg {

class ByteBuffer {
 public:
  ByteBuffer() = default;
  ByteBuffer(const ByteBuffer &) = delete;
  ByteBuffer &operator=(const ByteBuffer &) = delete;
  ~ByteBuffer() { wipe(); }

  std::size_t size() const { return size_; }
  std::string_view view() const { return {bytes_.get(), size_}; }
  void clear() { size_ = 0; }

  // Adds `count` bytes, which the caller fills at once.
  char *extend(std::size_t count) {
    if (capacity_ - size_ < count) grow(count);
    size_ += count;
    return bytes_.get() + size_ - count;
  }
  void append(std::string_view bytes) { std::copy(bytes.begin(), bytes.end(), extend(bytes.size())); }
  template <class T>
  void put(T value) {
    std::memcpy(extend(sizeof value), &value, sizeof value);
  }
  // Overwrites what stands at `offset`.
  template <class T>
  void set(std::size_t offset, T value) {
    std::memcpy(bytes_.get() + offset, &value, sizeof value);
  }

 private:
  void grow(std::size_t count) {
    const std::size_t capacity = std::max({capacity_ * 2, size_ + count, std::size_t{1024}});
    auto bytes = std::make_unique_for_overwrite<char[]>(capacity);
    std::copy_n(bytes_.get(), size_, bytes.get());
    wipe();
    bytes_ = std::move(bytes);
    capacity_ = capacity;
  }
  void wipe() {
    if (bytes_ != nullptr) ::explicit_bzero(bytes_.get(), capacity_);
  }

  std::unique_ptr<char[]> bytes_;
  std::size_t size_ = 0, capacity_ = 0;
};

}  // namespace twcfg
