#include "bench/support.h"

namespace vek::bench {
namespace {

/// What scopes of shared memory have handed out, and how much of it the present scope has.
std::vector<std::shared_ptr<std::vector<uint8_t>>> shared;
size_t used = 0;
bool sharing = false;

}  // namespace

SharedMemory::SharedMemory() {
  used = 0;
  sharing = true;
}

SharedMemory::~SharedMemory() {
  sharing = false;
}

std::shared_ptr<std::vector<uint8_t>> imageMemory(size_t size) {
  if (!sharing) return std::make_shared<std::vector<uint8_t>>(size);
  if (used == shared.size()) shared.emplace_back();
  auto& memory = shared[used++];
  if (memory == nullptr || memory->size() != size) {
    memory = std::make_shared<std::vector<uint8_t>>(size);
  }
  return memory;
}

std::vector<Entry>& entries() {
  static std::vector<Entry> all;
  return all;
}

}  // namespace vek::bench
