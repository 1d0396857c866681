#include "chunks.hpp"

#include <sys/mman.h>

#include <algorithm>
#include <cstring>
#include <new>

namespace twcfg {
namespace {

constexpr std::size_t kSmallest = 2048;
// Of an import, most of the memory is in the largest ones. They consist of huge pages where the kernel has
// them, because making thousands of small ones takes longer than filling them.
constexpr std::size_t kHugePage = std::size_t{1} << 21;
constexpr std::size_t kLargest = kHugePage * 2;

std::align_val_t alignment_of(std::size_t size) {
  return std::align_val_t{size >= kHugePage ? kHugePage : alignof(std::max_align_t)};
}

}  // namespace

Chunks::~Chunks() {
  for (const Chunk &chunk : chunks_) {
    if (contents_ == Contents::secret) ::explicit_bzero(chunk.begin, chunk.size);
    ::operator delete(chunk.begin, alignment_of(chunk.size));
  }
}

Chunks::Chunk Chunks::add(std::size_t bytes) {
  const std::size_t doubled = chunks_.empty() ? kSmallest : chunks_.back().size * 2;
  const std::size_t size = std::max(bytes, std::min(doubled, kLargest));
  Chunk &chunk = chunks_.emplace_back();  // before its memory, so that this is never lost
  chunk.begin = static_cast<char *>(::operator new(size, alignment_of(size)));
  chunk.size = size;
  if (size >= kHugePage) ::madvise(chunk.begin, size, MADV_HUGEPAGE);
  return chunk;
}

}  // namespace twcfg
