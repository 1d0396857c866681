// The allocator of a test program, which can refuse, and which can tell what was not given back: it stands in
// front of malloc() and operator new for the program and for every library that it loads, OpenSSL, LMDB and
// the C library's strdup() included.
#ifndef TW_TESTS_ALLOCATION_FAILING_ALLOCATOR_HPP
#define TW_TESTS_ALLOCATION_FAILING_ALLOCATOR_HPP

#include <cstddef>

namespace allocation {

// What becomes of the allocations behind the one that is refused.
enum class Behind { granted, refused };

// Whose allocations count.
enum class Whose { everybodys, not_openssls };

// From here on the calling thread's n-th allocation that counts (the first is 1) is refused. Other threads
// notice nothing.
void refuse(long nth, Behind behind, Whose whose = Whose::everybodys) noexcept;
// Back to normal. Tells whether an allocation was refused.
bool stop_refusing() noexcept;
// The size of the largest allocation that was asked for between the two.
std::size_t largest_asked() noexcept;

// While one lives, it knows the blocks that its thread has made since and has not given back. One at a time.
class Watch {
 public:
  // `look_at` is shown each block, whoever made it, just before it is given back.
  explicit Watch(void (*look_at)(const void *block) = nullptr) noexcept;
  ~Watch();
  Watch(const Watch &) = delete;
  Watch &operator=(const Watch &) = delete;

  std::size_t left() const noexcept;
  // Gives them all back, for who meant to leave them.
  void give_back() noexcept;
};

// For a call that stands for all of its own allocations: asks for one allocation, and while this lives the
// thread's further allocations are granted and not counted.
class Granted {
 public:
  Granted() noexcept;
  ~Granted();
  Granted(const Granted &) = delete;
  Granted &operator=(const Granted &) = delete;

  // Whether the one that was asked for was granted.
  explicit operator bool() const noexcept { return first; }

 private:
  bool armed, first;
};

}  // namespace allocation

#endif
