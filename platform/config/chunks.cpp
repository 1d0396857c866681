#include "chunks.hpp"

#include <algorithm>
#include <cstring>
#include <new>

namespace twcfg {
namespace {

constexpr std::size_t kSmallest = 2048;
constexpr std::size_t kLargest = std::size_t{1} << 20;

}  // namespace

Chunks::~Chunks() {
  for (const Chunk &chunk : chunks_) {
    if (contents_ == Contents::secret) ::explicit_bzero(chunk.begin, chunk.size);
    ::operator delete(chunk.begin);
  }
}

Chunks::Chunk Chunks::add(std::size_t bytes) {
  const std::size_t doubled = chunks_.empty() ? kSmallest : chunks_.back().size * 2;
  const std::size_t size = std::max(bytes, std::min(doubled, kLargest));
  Chunk &chunk = chunks_.emplace_back();  // before its memory, so that this is never lost
  chunk.begin = static_cast<char *>(::operator new(size));
  chunk.size = size;
  return chunk;
}

}  // namespace twcfg
