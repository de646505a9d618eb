#include "tests/support/buffer.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <sys/mman.h>
#include <unistd.h>

namespace vek::test {
namespace {

uint8_t canary(size_t i) {
  return static_cast<uint8_t>(i * 37 + (i >> 8) + 11);
}

uint8_t sample(Random& random, Pattern pattern, ptrdiff_t x, ptrdiff_t y) {
  switch (pattern) {
    case Pattern::zeros:
      return 0;
    case Pattern::ones:
      return 255;
    case Pattern::alternating:
      return (x + y) % 2 == 0 ? 0 : 255;
    case Pattern::extremes: {
      const uint8_t values[] = {0, 1, 127, 128, 254, 255};
      return values[random.in(0, 5)];
    }
    case Pattern::gradient:
      return static_cast<uint8_t>(x + 3 * y);
    default:
      return static_cast<uint8_t>(random.bits());
  }
}

}  // namespace

Buffer::Buffer(const Area& area, size_t alignment, Guard guard, size_t offset) : area_(area) {
  const size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
  const ptrdiff_t lastRow = area.first + (area.rows - 1) * area.step;
  const ptrdiff_t low = std::min(area.first, lastRow);
  const ptrdiff_t high = std::max(area.first, lastRow) + area.bytes;
  const size_t slack = alignment + offset;
  usableSize_ = (static_cast<size_t>(high - low) + slack + page - 1) / page * page;
  mappingSize_ = usableSize_ + 2 * page;
  void* memory =
      mmap(nullptr, mappingSize_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) abort();
  mapping_ = static_cast<uint8_t*>(memory);
  usable_ = mapping_ + page;
  mprotect(mapping_, page, PROT_NONE);
  mprotect(usable_ + usableSize_, page, PROT_NONE);

  // Move the origin towards the guarded side as far as its alignment lets it go.
  const uintptr_t base = reinterpret_cast<uintptr_t>(usable_);
  uintptr_t origin;
  if (guard == Guard::after) {
    origin = base + usableSize_ - static_cast<uintptr_t>(high);
    origin -= (origin + alignment - offset % alignment) % alignment;
  } else {
    origin = base - static_cast<uintptr_t>(low);
    origin += (alignment - (origin + alignment - offset % alignment) % alignment) % alignment;
  }
  origin_ = reinterpret_cast<uint8_t*>(origin);
  for (size_t i = 0; i < usableSize_; ++i) usable_[i] = canary(i);
}

Buffer::~Buffer() {
  munmap(mapping_, mappingSize_);
}

void Buffer::fill(Random& random, Pattern pattern) {
  for (ptrdiff_t y = 0; y < area_.rows; ++y) {
    for (ptrdiff_t x = 0; x < area_.bytes; ++x) row(y)[x] = sample(random, pattern, x, y);
  }
}

std::vector<uint8_t> Buffer::contents() const {
  std::vector<uint8_t> bytes;
  bytes.reserve(static_cast<size_t>(area_.rows * area_.bytes));
  for (ptrdiff_t y = 0; y < area_.rows; ++y) {
    bytes.insert(bytes.end(), row(y), row(y) + area_.bytes);
  }
  return bytes;
}

bool Buffer::outsideIntact() const {
  std::vector<bool> inside(usableSize_, false);
  for (ptrdiff_t y = 0; y < area_.rows; ++y) {
    const auto first = inside.begin() + (row(y) - usable_);
    std::fill(first, first + area_.bytes, true);
  }
  for (size_t i = 0; i < usableSize_; ++i) {
    if (!inside[i] && usable_[i] != canary(i)) return false;
  }
  return true;
}

}  // namespace vek::test
