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

enum class Pair { vek, veki };

struct Allocation {
  Pair pair;
  void* block;  ///< as malloc gave it
  int size;
};
struct Live : std::map<void*, Allocation> {
  ~Live() {  // what the library keeps on purpose
    for (const auto& [pointer, allocation] : *this) std::free(allocation.block);
  }
} live;
int calls = 0;
int untilFailure = 0;

/// The pointer is `offset` bytes behind an aligned one.
void* take(Pair pair, int size, size_t offset) {
  const std::lock_guard lock(mutex);
  ++calls;
  if (size < 1 || (untilFailure > 0 && --untilFailure == 0)) return nullptr;
  void* const block = std::malloc(static_cast<size_t>(size) + offset);
  void* const pointer = static_cast<char*>(block) + offset;
  live[pointer] = {pair, block, size};
  return std::memset(pointer, 0xA5, static_cast<size_t>(size));
}

void give(Pair pair, void* pointer) {
  const std::lock_guard lock(mutex);
  if (pointer == nullptr) return;
  const auto found = live.find(pointer);
  if (found == live.end() || found->second.pair != pair) {
    std::fputs("not a live block of this pair of functions\n", stderr);
    std::abort();
  }
  std::free(found->second.block);
  live.erase(found);
}

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
  for (const auto& [pointer, allocation] : live) sizes.push_back(allocation.size);
  return sizes;
}

void dropAllocations() {
  const std::lock_guard lock(mutex);
  for (const auto& [pointer, allocation] : live) std::free(allocation.block);
  live.clear();
}

}  // namespace vek::test

extern "C" {

// Nothing may rely on this memory being aligned.
void* vekMalloc(int size) {
  return vek::test::take(vek::test::Pair::vek, size, 1);
}

void vekFree(void* ptr) {
  vek::test::give(vek::test::Pair::vek, ptr);
}

void* vekiMalloc(int size) {
  return vek::test::take(vek::test::Pair::veki, size, 0);
}

void vekiFree(void* ptr) {
  vek::test::give(vek::test::Pair::veki, ptr);
}

}  // extern "C"
