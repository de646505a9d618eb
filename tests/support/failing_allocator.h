// A test program that links failing_allocator.cc has a vekiMalloc and vekiFree that count, hand out
// memory full of garbage, and fail when told to.
#pragma once

#include "vek/vek.h"

#include <gtest/gtest.h>

namespace vek::test {

/// Makes the n-th allocation from now on return null, and no other.
void failAllocation(int n);

/// Allocations that have not been released yet.
int liveAllocations();

/// Lets each of the `allocations` that init(&state) makes fail in turn, then none.
template <class State, class Init, class Free>
void expectCleanFailures(int allocations, Init init, Free free) {
  State* const untouched = reinterpret_cast<State*>(sizeof(void*));
  for (int n = 1; n <= allocations + 1; ++n) {
    State* state = untouched;
    failAllocation(n);
    ASSERT_EQ(init(&state), n <= allocations ? vekStsMemAllocErr : vekStsNoErr) << n;
    failAllocation(0);
    if (n <= allocations) {
      EXPECT_EQ(state, untouched) << n;
    } else {
      EXPECT_EQ(liveAllocations(), allocations);
      EXPECT_EQ(free(state), vekStsNoErr);
    }
    EXPECT_EQ(liveAllocations(), 0) << n;
  }
}

}  // namespace vek::test
