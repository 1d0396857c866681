// What the handles of one process share: at most one living T per ID.
#pragma once

#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <utility>

#include "engine/fork_epoch.hpp"

namespace twcfg {

template <class Id, class T>
class Registry {
 public:
  // The living T of this ID, or the one that `make` (returning unique_ptr<T>, which may be NULL) makes.
  // A T whose last user is gone is waited for until it is destroyed: two of them never exist at a time.
  template <class Make>
  std::shared_ptr<T> get(const Id &id, Make make) {
    const Slot slot{fork_epoch(), id};
    // Declared before the lock: should one of them have to be destroyed here, its end takes the mutex.
    std::unique_ptr<T, Forget> made(nullptr, Forget{this, slot});
    std::shared_ptr<T> shared;
    std::unique_lock lock(fork_safe_mutex());
    for (auto found = living_.find(slot); found != living_.end(); found = living_.find(slot)) {
      shared = found->second.lock();
      if (shared) return shared;
      gone_.wait(lock);
    }
    std::unique_ptr<T> fresh = make();
    if (!fresh) return nullptr;
    std::weak_ptr<T> &entry = living_[slot];  // from here on others wait, whatever happens
    made.reset(fresh.release());
    shared = std::move(made);
    entry = shared;
    return shared;
  }

 private:
  // A child starts with an empty registry: its parent's entries belong to another epoch.
  using Slot = std::pair<std::uint64_t, Id>;
  struct Forget {
    Registry *registry;
    Slot slot;
    void operator()(T *last) const {
      delete last;
      const std::lock_guard guard(fork_safe_mutex());
      registry->living_.erase(slot);
      registry->gone_.notify_all();
    }
  };
  std::map<Slot, std::weak_ptr<T>> living_;
  std::condition_variable gone_;
};

}  // namespace twcfg
