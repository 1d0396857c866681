// The tables of the functions whose allocations are refused, a table for each public header.
#pragma once

#include <span>

#include "allocation/plain_sweep.hpp"
#include "store_allocation/sweep.hpp"

namespace store_allocation {

// For the rows of calls that need no store: one engine is as good as the other.
inline constexpr EngineKind kPlain = EngineKind::kMemory;
using allocation::plain_sweep;
using allocation::with_refusals;

extern const std::span<const Case> store_cases;
extern const std::span<const Case> element_cases;
extern const std::span<const Case> content_cases;
extern const std::span<const Case> layout_cases;
extern const std::span<const Case> read_cases;
extern const std::span<const Case> condition_cases;
extern const std::span<const Case> message_cases;
extern const std::span<const Case> transfer_cases;

}  // namespace store_allocation
