#include "arena.hpp"

#include <algorithm>
#include <bit>
#include <cstring>
#include <new>

namespace twcfg {
namespace {

constexpr std::size_t kFirstChunk = 2048;
constexpr std::size_t kLargestChunk = std::size_t{1} << 20;

}  // namespace

Arena::~Arena() {
  for (const Chunk &chunk : chunks_) {
    if (contents_ == Contents::secret) {
      const bool newest = end_ == chunk.begin + chunk.size;
      ::explicit_bzero(chunk.begin, newest ? static_cast<std::size_t>(at_ - chunk.begin) : chunk.size);
    }
    ::operator delete(chunk.begin);
  }
}

void *Arena::take_from_new_chunk(std::size_t bytes) {
  const std::size_t doubled = chunks_.empty() ? kFirstChunk : chunks_.back().size * 2;
  const std::size_t size = std::max(bytes, std::min(doubled, kLargestChunk));
  Chunk &chunk = chunks_.emplace_back();  // before its memory, so that this is never lost
  chunk.begin = static_cast<char *>(::operator new(size));
  chunk.size = size;
  at_ = chunk.begin + bytes;
  end_ = chunk.begin + size;
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
