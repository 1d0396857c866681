// Sweeps over calls that need no store.
#ifndef TW_TESTS_ALLOCATION_PLAIN_SWEEP_HPP
#define TW_TESTS_ALLOCATION_PLAIN_SWEEP_HPP

#include <gtest/gtest.h>

#include "allocation/failing_allocator.hpp"

namespace allocation {

// The refusals that are to hold within with_refusals(): what a sweep sets for its steps.
struct PresentStep {
  long nth = 0;
  Behind behind = Behind::granted;
  bool refused = false;
};
inline PresentStep present_step;

// Runs the call under test, and only it, with the refusals of the present step.
template <class Call>
auto with_refusals(const Call &call) {
  refuse(present_step.nth, present_step.behind);
  auto result = call();
  present_step.refused = stop_refusing();
  return result;
}

// `step` prepares, makes its call within with_refusals(), releases everything and tells whether the call
// succeeded. Returns how many allocations were refused, each alone and with all behind it.
template <class Step>
long plain_sweep(const Step &step) {
  long count = 0;
  for (const auto behind : {Behind::refused, Behind::granted}) {
    for (long n = 1; n < 100'000; ++n) {
      present_step = {n, behind};
      const bool succeeded = step();
      EXPECT_TRUE(succeeded || present_step.refused) << "without a refused allocation";
      if (testing::Test::HasFailure()) ADD_FAILURE() << "with allocation " << n << " refused";
      if (!present_step.refused || testing::Test::HasFailure()) break;
      ++count;
    }
  }
  return count;
}

}  // namespace allocation

#endif
