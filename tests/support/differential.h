// The one body of every differential test: run a call at each CPU level on fresh destinations and
// compare what it wrote with what was expected.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/buffer.h"
#include "tests/support/levels.h"

namespace vek::test {

/// The seed of this run: VEK_TEST_SEED, or a fixed one.
inline uint64_t baseSeed() {
  const char* seed = std::getenv("VEK_TEST_SEED");
  return seed != nullptr ? std::strtoull(seed, nullptr, 0) : 20050316;
}

/// Compares bytes and names the first difference; `rowBytes` turns its index into row and byte.
inline testing::AssertionResult sameBytes(const std::vector<uint8_t>& expected,
                                          const std::vector<uint8_t>& actual, ptrdiff_t rowBytes) {
  if (expected.size() != actual.size()) {
    return testing::AssertionFailure() << "sizes " << expected.size() << ", " << actual.size();
  }
  for (size_t i = 0; i < expected.size(); ++i) {
    if (expected[i] == actual[i]) continue;
    return testing::AssertionFailure() << "row " << i / static_cast<size_t>(rowBytes) << ", byte "
                                       << i % static_cast<size_t>(rowBytes) << ": expected "
                                       << int{expected[i]} << ", got " << int{actual[i]};
  }
  return testing::AssertionSuccess();
}

/// One destination of a call: its area, how it is aligned, and what it must hold afterwards (empty:
/// whatever the portable level writes).
struct Destination {
  Area area;
  size_t alignment = 1;
  size_t offset = 0;
  std::vector<uint8_t> expected = {};
};

/// Calls call(pointers) at every level, with destinations between inaccessible pages on alternating
/// sides. Fails if a level's bytes are not the expected ones or a byte outside an area changed.
template <class Call>
void runAtEveryLevel(std::vector<Destination> destinations, Call call) {
  for (Level level : levels()) {
    for (Buffer::Guard guard : {Buffer::Guard::after, Buffer::Guard::before}) {
      SCOPED_TRACE(std::string("level ") + name(level));
      const LevelScope scope(level);
      std::vector<std::unique_ptr<Buffer>> buffers;
      std::vector<uint8_t*> pointers;
      for (const Destination& d : destinations) {
        buffers.push_back(std::make_unique<Buffer>(d.area, d.alignment, guard, d.offset));
        pointers.push_back(buffers.back()->data());
      }
      call(pointers);
      for (size_t i = 0; i < buffers.size(); ++i) {
        Destination& d = destinations[i];
        if (d.expected.empty()) d.expected = buffers[i]->contents();
        EXPECT_TRUE(sameBytes(d.expected, buffers[i]->contents(), d.area.bytes))
            << "destination " << i;
        EXPECT_TRUE(buffers[i]->outsideIntact()) << "destination " << i << ": wrote outside";
      }
    }
  }
}

}  // namespace vek::test
