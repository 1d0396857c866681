// Which process this is, across fork(): what a parent opened is not for its children.
#pragma once

#include <cstdint>
#include <mutex>

namespace twcfg {

// A number that is another one in every child. Cheap enough to ask on every read.
std::uint64_t fork_epoch();

// Held over every fork(), so that a child never inherits what it guards half changed.
std::mutex &fork_safe_mutex();

// Keeps `orphan`, which a child must neither use nor release, reachable for leak checkers.
void abandon_after_fork(void *orphan);

}  // namespace twcfg
