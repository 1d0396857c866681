// Memory that is taken bit by bit and given back all at once.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory_resource>
#include <string_view>

#include "chunks.hpp"

namespace twcfg {

class Arena final : public std::pmr::memory_resource {
 public:
  explicit Arena(Contents contents) : chunks_(contents) {}

  void *take(std::size_t bytes, std::size_t alignment) {
    const std::size_t padding = -reinterpret_cast<std::uintptr_t>(at_) & (alignment - 1);
    if (static_cast<std::size_t>(end_ - at_) < padding + bytes) return take_from_new_chunk(bytes);
    char *block = at_ + padding;
    at_ = block + bytes;
    return block;
  }
  // A copy with a NUL behind it.
  std::string_view copy(std::string_view bytes);

 private:
  struct Left {
    Left *next;
  };

  void *take_from_new_chunk(std::size_t bytes);
  void *do_allocate(std::size_t bytes, std::size_t alignment) override;
  void do_deallocate(void *block, std::size_t bytes, std::size_t alignment) override;
  bool do_is_equal(const memory_resource &other) const noexcept override { return this == &other; }

  char *at_ = nullptr, *end_ = nullptr;  // what is free of the newest chunk
  Chunks chunks_;
  // What vectors left behind as they grew, by the power of two that it holds: the next ones grow into it.
  std::array<Left *, 16> left_{};
};

}  // namespace twcfg
