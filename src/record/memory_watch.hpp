// Telling "there is none" from "there was no memory to look": to both the store's look-ups answer NULL or 0.
#ifndef TW_RECORD_MEMORY_WATCH_HPP
#define TW_RECORD_MEMORY_WATCH_HPP

#include <cerrno>
#include <utility>

namespace tw {

// Watches this thread's allocations for as long as it lives, the store's included: every one that fails
// leaves ENOMEM in errno, and nothing behind it on a way out of the store sets errno again. Watches may be
// nested.
class memory_watch {
 public:
  memory_watch() noexcept : before_(std::exchange(errno, 0)) {}
  ~memory_watch() {
    if (!ran_short()) errno = before_;
  }
  memory_watch(const memory_watch &) = delete;
  memory_watch &operator=(const memory_watch &) = delete;

  bool ran_short() const noexcept { return errno == ENOMEM; }

 private:
  int before_;
};

}  // namespace tw

#endif
