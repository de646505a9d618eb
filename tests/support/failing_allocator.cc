#include "tests/support/failing_allocator.h"

#include "vek/vek.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <mutex>

namespace vek::test {
namespace {

std::mutex mutex;
struct Live : std::map<void*, int> {
  ~Live() {  // what the library keeps on purpose
    for (const auto& [block, size] : *this) std::free(block);
  }
} live;
int calls = 0;
int untilFailure = 0;

}  // namespace

void failAllocation(int n) {
  const std::lock_guard lock(mutex);
  untilFailure = n;
}

int allocationCalls() {
  const std::lock_guard lock(mutex);
  return calls;
}

std::vector<int> liveAllocations() {
  const std::lock_guard lock(mutex);
  std::vector<int> sizes;
  for (const auto& [block, size] : live) sizes.push_back(size);
  return sizes;
}

void dropAllocations() {
  const std::lock_guard lock(mutex);
  for (const auto& [block, size] : live) std::free(block);
  live.clear();
}

}  // namespace vek::test

extern "C" void* vekiMalloc(int size) {
  using namespace vek::test;
  const std::lock_guard lock(mutex);
  ++calls;
  if (size < 1 || (untilFailure > 0 && --untilFailure == 0)) return nullptr;
  void* const block = std::malloc(static_cast<size_t>(size));
  live[block] = size;
  return std::memset(block, 0xA5, static_cast<size_t>(size));
}

extern "C" void vekiFree(void* ptr) {
  using namespace vek::test;
  const std::lock_guard lock(mutex);
  if (ptr != nullptr && live.erase(ptr) == 0) {
    std::fputs("vekiFree: not a live block\n", stderr);
    std::abort();
  }
  std::free(ptr);
}
