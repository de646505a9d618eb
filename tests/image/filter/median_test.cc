#include "vek/image.h"

#include "tests/support/differential.h"

namespace vek::test {
namespace {

/// A counter of black samples that just fits, or does not, the bits that it has.
TEST(FilterMedian, CountsUniformWindows) {
  const std::vector<Vek8u> black(700, 0);
  const std::vector<uint8_t> expected(256, 0);
  for (VekiSize mask : {VekiSize{15, 17}, {7, 37}, {33, 85}, {129, 255}, {131, 255}}) {
    runAtEveryLevel({{{256, 1, 256}, 1, 0, expected}}, [&](auto dst) {
      EXPECT_EQ(vekiFilterMedian_8u_C1R(black.data(), 1, dst[0], 256, {256, 1}, mask, {0, 0}), 0);
    });
  }
}

}  // namespace
}  // namespace vek::test
