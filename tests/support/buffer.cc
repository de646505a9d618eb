#include "tests/support/buffer.h"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <sys/mman.h>
#include <unistd.h>

namespace vek::test {
namespace {

/// Canaries repeat after this many bytes.
constexpr size_t period = 1 << 16;

const uint8_t* canaries() {
  static const std::vector<uint8_t> bytes = [] {
    std::vector<uint8_t> all(period);
    for (size_t i = 0; i < period; ++i) all[i] = static_cast<uint8_t>(i * 37 + (i >> 8) + 11);
    return all;
  }();
  return bytes.data();
}

/// Calls each(offset, count) for the pieces of `size` bytes that are whole runs of canaries.
template <class Each>
void forEachRun(size_t size, Each each) {
  for (size_t i = 0; i < size; i += period) each(i, std::min(period, size - i));
}

#if defined(__EMSCRIPTEN__)
// WebAssembly has no inaccessible memory. What would be such a page has canaries, which show what is
// written there, but not what is read.
constexpr bool hasGuardPages = false;
constexpr size_t page = 4096;

uint8_t* reserve(size_t size) {
  void* const memory = aligned_alloc(page, size);
  if (memory == nullptr) abort();
  return static_cast<uint8_t*>(memory);
}
void makeAccessible(uint8_t*, size_t) {}
void release(uint8_t* memory, size_t) {
  free(memory);
}
#else
constexpr bool hasGuardPages = true;
const size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE));

/// Memory that is inaccessible yet.
uint8_t* reserve(size_t size) {
  void* const memory =
      mmap(nullptr, size, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (memory == MAP_FAILED) abort();
  return static_cast<uint8_t*>(memory);
}
void makeAccessible(uint8_t* memory, size_t size) {
  mprotect(memory, size, PROT_READ | PROT_WRITE);
}
void release(uint8_t* memory, size_t size) {
  munmap(memory, size);
}
#endif

/// Mappings between two inaccessible pages that a thread uses again, by the logarithm of their
/// size in pages.
struct Pool {
  std::vector<uint8_t*> free[8];

  ~Pool() {
    for (size_t i = 0; i < std::size(free); ++i) {
      for (uint8_t* mapping : free[i]) release(mapping, (page << i) + 2 * page);
    }
  }
  uint8_t* take(size_t order) {
    if (order < std::size(free) && !free[order].empty()) {
      uint8_t* const mapping = free[order].back();
      free[order].pop_back();
      return mapping;
    }
    const size_t size = page << order;
    uint8_t* const mapping = reserve(size + 2 * page);
    makeAccessible(mapping + page, size);
    return mapping;
  }
  void give(uint8_t* mapping, size_t size) {
    const auto order = static_cast<size_t>(std::countr_zero((size - 2 * page) / page));
    if (order < std::size(free)) {
      free[order].push_back(mapping);
    } else {
      release(mapping, size);
    }
  }
};
thread_local Pool pool;

/// Rows as far apart as this lie in pages of their own.
constexpr ptrdiff_t farApart = 1 << 20;

bool isSparse(const Area& area) {
  return std::abs(area.step) >= farApart && area.rows > 1;
}

}  // namespace

Buffer::Buffer(const Area& area, size_t alignment, Guard guard, size_t offset) : area_(area) {
  const ptrdiff_t lastRow = area.first + (area.rows - 1) * area.step;
  const ptrdiff_t low = std::min(area.first, lastRow);
  const ptrdiff_t high = std::max(area.first, lastRow) + area.bytes;
  const size_t pages = (static_cast<size_t>(high - low) + alignment + offset + page - 1) / page;
  const size_t usable = isSparse(area) ? pages * page : std::bit_ceil(pages) * page;
  mapping_.size = usable + 2 * page;
  mapping_.begin = isSparse(area) ? reserve(mapping_.size)
                                  : pool.take(static_cast<size_t>(std::countr_zero(usable / page)));

  // Move the origin towards the guarded side as far as its alignment lets it go.
  const uintptr_t base = reinterpret_cast<uintptr_t>(mapping_.begin) + page;
  uintptr_t origin;
  if (guard == Guard::after) {
    origin = base + usable - static_cast<uintptr_t>(high);
    origin -= (origin + alignment - offset % alignment) % alignment;
  } else {
    origin = base - static_cast<uintptr_t>(low);
    origin += (alignment - (origin + alignment - offset % alignment) % alignment) % alignment;
  }
  origin_ = reinterpret_cast<uint8_t*>(origin);
  if (isSparse(area)) {
    for (ptrdiff_t y = 0; y < area.rows; ++y) {
      const uintptr_t from = reinterpret_cast<uintptr_t>(row(y));
      const uintptr_t begin = from / page * page;
      const uintptr_t end = (from + static_cast<uintptr_t>(area.bytes) + page - 1) / page * page;
      accessible_.push_back({reinterpret_cast<uint8_t*>(begin), end - begin});
      makeAccessible(accessible_.back().begin, end - begin);
    }
  } else if (hasGuardPages) {
    accessible_ = {{mapping_.begin + page, usable}};
  } else {
    accessible_ = {mapping_};
  }
  for (const Span& span : accessible_) {
    forEachRun(span.size, [&](size_t i, size_t n) { memcpy(span.begin + i, canaries(), n); });
  }
}

Buffer::~Buffer() {
  if (isSparse(area_)) {
    release(mapping_.begin, mapping_.size);
  } else {
    pool.give(mapping_.begin, mapping_.size);
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

void Buffer::setContents(const std::vector<uint8_t>& bytes) {
  const auto count = static_cast<size_t>(area_.bytes);
  for (ptrdiff_t y = 0; y < area_.rows; ++y) {
    memcpy(row(y), bytes.data() + static_cast<size_t>(y) * count, count);
  }
}

bool Buffer::outsideIntact() const {
  thread_local std::vector<uint8_t> expected;
  for (const Span& span : accessible_) {
    expected.resize(span.size);
    forEachRun(span.size, [&](size_t i, size_t n) { memcpy(expected.data() + i, canaries(), n); });
    for (ptrdiff_t y = 0; y < area_.rows; ++y) {
      if (row(y) < span.begin || row(y) >= span.begin + span.size) continue;
      memcpy(expected.data() + (row(y) - span.begin), row(y), static_cast<size_t>(area_.bytes));
    }
    if (memcmp(expected.data(), span.begin, span.size) != 0) return false;
  }
  return true;
}

}  // namespace vek::test
