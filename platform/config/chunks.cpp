#include "chunks.hpp"

#include <algorithm>
#include <cstring>
#include <new>

#include "huge_pages.hpp"

namespace twcfg {
namespace {

constexpr std::size_t kSmallest = 2048;

// What a chunk of `bytes` really gets: one that grows large takes a huge page at once.
std::size_t size_of_chunk(std::size_t bytes) {
  return bytes < kWorthHugePages ? bytes : std::max(bytes, kHugePage);
}

}  // namespace

Chunks::~Chunks() {
  for (const Chunk &chunk : chunks_) {
    if (contents_ == Contents::secret) ::explicit_bzero(chunk.begin, chunk.size);
    HugePageAllocator<char>().deallocate(chunk.begin, chunk.size);
  }
}

Chunks::Chunk Chunks::add(std::size_t bytes) {
  const std::size_t doubled = chunks_.empty() ? kSmallest : chunks_.back().size * 2;
  const std::size_t size = size_of_chunk(std::max(bytes, std::min(doubled, kHugePage)));
  Chunk &chunk = chunks_.emplace_back();  // before its memory, so that this is never lost
  chunk.begin = HugePageAllocator<char>().allocate(size);
  chunk.size = size;
  return chunk;
}

}  // namespace twcfg
