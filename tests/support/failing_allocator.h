// A test program that links failing_allocator.cc has pairs of allocator functions that count, hand out
// memory full of garbage, and fail when told to. Releasing what the pair has not allocated aborts.
#pragma once

#include <vector>

namespace vek::test {

/// Makes the n-th allocation from now on return null, and no other; 0: none.
void failAllocation(int n);

/// Calls of vekMalloc and vekiMalloc up to now.
int allocationCalls();

/// The sizes of the allocations that have not been released yet.
std::vector<int> liveAllocations();

/// Releases what the library keeps on purpose.
void dropAllocations();

}  // namespace vek::test
