#include "tests/support/failing_allocator.h"

#include <cstdlib>
#include <cstring>

namespace {

int live = 0;
int untilFailure = 0;

}  // namespace

namespace vek::test {

void failAllocation(int n) {
  untilFailure = n;
}

int liveAllocations() {
  return live;
}

}  // namespace vek::test

extern "C" void* vekiMalloc(int size) {
  if (untilFailure > 0 && --untilFailure == 0) return nullptr;
  ++live;
  return std::memset(std::malloc(static_cast<size_t>(size)), 0xA5, static_cast<size_t>(size));
}

extern "C" void vekiFree(void* ptr) {
  EXPECT_NE(ptr, nullptr);
  --live;
  std::free(ptr);
}
