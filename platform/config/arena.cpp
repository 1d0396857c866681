#include "arena.hpp"

#include <algorithm>
#include <bit>
#include <new>

namespace twcfg {

void *Arena::take_from_new_chunk(std::size_t bytes) {
  const Chunks::Chunk chunk = chunks_.add(bytes);
  at_ = chunk.begin + bytes;
  end_ = chunk.begin + chunk.size;
  return chunk.begin;
}

std::string_view Arena::copy(std::string_view bytes) {
  auto *copy = static_cast<char *>(take(bytes.size() + 1, 1));
  std::copy(bytes.begin(), bytes.end(), copy);
  copy[bytes.size()] = '\0';
  return {copy, bytes.size()};
}

void *Arena::do_allocate(std::size_t bytes, std::size_t alignment) {
  bytes = std::max(bytes, sizeof(Left));
  const auto power = static_cast<std::size_t>(std::bit_width(bytes - 1));
  if (power < left_.size() && left_[power] != nullptr) {
    Left *block = left_[power];
    left_[power] = block->next;
    return block;
  }
  return take(bytes, std::max(alignment, alignof(Left)));
}

void Arena::do_deallocate(void *block, std::size_t bytes, std::size_t /*alignment*/) {
  bytes = std::max(bytes, sizeof(Left));
  const auto power = static_cast<std::size_t>(std::bit_width(bytes)) - 1;
  if (power < left_.size()) left_[power] = new (block) Left{left_[power]};
}

}  // namespace twcfg
