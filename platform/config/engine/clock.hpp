// How old a snapshot is.
#pragma once

#include <time.h>

#include <cstdint>

namespace twcfg {

// Milliseconds of a clock that nobody sets. The coarse clock costs a few nanoseconds per snapshot.
inline std::int64_t steady_ms() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
  return static_cast<std::int64_t>(now.tv_sec) * 1000 + now.tv_nsec / 1'000'000;
}

}  // namespace twcfg
