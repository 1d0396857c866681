// Which process this is, across fork(): what a parent opened is not for its children.
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>

namespace twcfg {

// Counted up in every child.
inline std::atomic<std::uint64_t> counted_forks{1};

// A number that is another one in every child. Cheap enough to ask on every read.
inline std::uint64_t fork_epoch() { return counted_forks.load(std::memory_order_relaxed); }

// Held over every fork(), so that a child never inherits what it guards half changed.
std::mutex &fork_safe_mutex();

// Keeps `orphan`, which a child must neither use nor release, reachable for leak checkers.
void abandon_after_fork(void *orphan);

}  // namespace twcfg
