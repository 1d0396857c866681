#include "engine/fork_epoch.hpp"

#include <pthread.h>

#include <atomic>
#include <type_traits>

namespace twcfg {
namespace {

struct Orphan {
  void *pointer;
  Orphan *next;
};
std::atomic<Orphan *> orphans{nullptr};

// Without a destructor: handles may be closed by destructors that run after those of this file.
constinit std::mutex mutex;
static_assert(std::is_trivially_destructible_v<std::mutex>);

const bool registered = [] {
  const auto lock = [] { mutex.lock(); };
  const auto unlock = [] { mutex.unlock(); };
  const auto unlock_in_child = [] {
    counted_forks.fetch_add(1, std::memory_order_relaxed);
    mutex.unlock();
  };
  return pthread_atfork(lock, unlock, unlock_in_child) == 0;
}();

}  // namespace

std::mutex &fork_safe_mutex() { return mutex; }

void abandon_after_fork(void *orphan) {
  auto *node = new Orphan{orphan, orphans.load()};
  while (!orphans.compare_exchange_weak(node->next, node)) {
  }
}

}  // namespace twcfg
