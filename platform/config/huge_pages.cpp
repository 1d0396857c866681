#include "huge_pages.hpp"

#include <sys/mman.h>

#include <cerrno>
#include <cstdint>

namespace twcfg {
namespace {

std::size_t whole_pages(std::size_t bytes) { return (bytes + kHugePage - 1) & ~(kHugePage - 1); }

}  // namespace

void *take_huge_pages(std::size_t bytes) {
  // Mapped with a huge page too many, of which what stands before the first boundary and behind the last goes
  // back.
  const std::size_t size = whole_pages(bytes);
  void *mapped =
      ::mmap(nullptr, size + kHugePage, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (mapped == MAP_FAILED) throw std::bad_alloc();
  auto *begin = static_cast<char *>(mapped);
  const std::size_t before = -reinterpret_cast<std::uintptr_t>(begin) & (kHugePage - 1);
  if (before != 0) ::munmap(begin, before);
  begin += before;
  ::munmap(begin + size, kHugePage - before);
  const int seen = errno;  // callers tell a shortage of memory by it, and small pages are none
  ::madvise(begin, size, MADV_HUGEPAGE);
  errno = seen;
  return begin;
}

void give_huge_pages(void *begin, std::size_t bytes) noexcept { ::munmap(begin, whole_pages(bytes)); }

}  // namespace twcfg
