// Memory in huge pages, for what is large and used all over.
//
// A look-up by ID touches the table of handles and a handle, each in another place of a megabyte or two: with
// small pages the processor first has to find out, every time, where the page is. And an edit that fills
// hundreds of megabytes pays for each page that it touches first, which is a fifth of an import's time.
#pragma once

#include <cstddef>
#include <new>

namespace twcfg {

inline constexpr std::size_t kHugePage = std::size_t{2} << 20;
// What is smaller is better kept in small pages: a huge one is cleared as a whole when it is first touched.
inline constexpr std::size_t kWorthHugePages = kHugePage / 4;

// Huge pages for at least `bytes`; small ones where the system has none left. Throws std::bad_alloc.
void *take_huge_pages(std::size_t bytes);
// Gives them back; `bytes` as it was taken.
void give_huge_pages(void *begin, std::size_t bytes) noexcept;

// For containers that are small at first and may become large.
template <class T>
struct HugePageAllocator {
  using value_type = T;
  HugePageAllocator() = default;
  template <class Other>
  explicit HugePageAllocator(const HugePageAllocator<Other> & /*other*/) {}
  bool operator==(const HugePageAllocator &) const = default;

  T *allocate(std::size_t count) {
    const std::size_t bytes = count * sizeof(T);
    return static_cast<T *>(bytes < kWorthHugePages ? ::operator new(bytes) : take_huge_pages(bytes));
  }
  void deallocate(T *begin, std::size_t count) noexcept {
    if (const std::size_t bytes = count * sizeof(T); bytes < kWorthHugePages)
      ::operator delete(begin);
    else
      give_huge_pages(begin, bytes);
  }
};

}  // namespace twcfg
