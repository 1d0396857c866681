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
    std::unique_lock lock(fork_safe_mutex());
    for (auto found = living_.find(slot); found != living_.end(); found = living_.find(slot)) {
      if (auto shared = found->second.lock()) return shared;
      gone_.wait(lock);
    }
    std::unique_ptr<T> made = make();
    if (!made) return nullptr;
    std::shared_ptr<T> shared(made.release(), [this, slot](T *last) {
      delete last;
      const std::lock_guard guard(fork_safe_mutex());
      living_.erase(slot);
      gone_.notify_all();
    });
    living_[slot] = shared;
    return shared;
  }

 private:
  // A child starts with an empty registry: its parent's entries belong to another epoch.
  using Slot = std::pair<std::uint64_t, Id>;
  std::map<Slot, std::weak_ptr<T>> living_;
  std::condition_variable_any gone_;
};

}  // namespace twcfg
