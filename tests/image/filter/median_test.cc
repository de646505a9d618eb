#include "vek/image.h"

#include <algorithm>
#include <cstdlib>

#include "tests/image/filter/neighbourhood.h"

namespace vek::test {
namespace {

void expectMedian(const char* name,
                  VekStatus (*f)(const Vek8u*, int, Vek8u*, int, VekiSize, VekiSize, VekiPoint)) {
  const auto define = [channels = channelsOf(name)](const Vek8u* src, int srcStep, Vek8u* dst,
                                                    int dstStep, VekiSize roi, VekiSize mask,
                                                    VekiPoint anchor) {
    std::vector<Vek8u> samples;
    fromNeighbourhoods(channels, src, srcStep, dst, dstStep, roi, anchor, [&](auto at) {
      samples.clear();
      for (int j = 0; j < mask.height; ++j) {
        for (int i = 0; i < mask.width; ++i) samples.push_back(static_cast<Vek8u>(at(i, j)));
      }
      const auto middle = samples.begin() + static_cast<ptrdiff_t>(samples.size() / 2);
      std::nth_element(samples.begin(), middle, samples.end());
      return *middle;
    });
  };
  expectDefinition(name, f, define, 450);
}

TEST(FilterMedian, EqualsTheNaiveMedian) {
  VEK_C1_C3(expectMedian, vekiFilterMedian, R);
}

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

/// The winner of the pixels around p, row after row, by the direct definition.
const Vek8u* colorMedian(const Vek8u* p, ptrdiff_t step, int side) {
  std::vector<const Vek8u*> pixels;
  for (int j = 0; j < side; ++j) {
    for (int i = 0; i < side; ++i) pixels.push_back(p + (j - side / 2) * step + 3 * (i - side / 2));
  }
  const auto score = [&](const Vek8u* candidate) {
    int sum = 0;
    for (const Vek8u* other : pixels) {
      for (int k = 0; k < 3; ++k) sum += std::abs(candidate[k] - other[k]);
    }
    return sum;
  };
  return *std::min_element(pixels.begin(), pixels.end(),
                           [&](const Vek8u* a, const Vek8u* b) { return score(a) < score(b); });
}

TEST(FilterMedianColor, EqualsTheDirectDefinition) {
  expectDefinition(
      VEK_NAMED(vekiFilterMedianColor_8u_C3R),
      [](const Vek8u* src, ptrdiff_t srcStep, Vek8u* dst, ptrdiff_t dstStep, VekiSize roi,
         int mask) {
        for (int y = 0; y < roi.height; ++y) {
          for (int x = 0; x < roi.width; ++x) {
            const Vek8u* winner = colorMedian(src + y * srcStep + 3 * x, srcStep, mask / 11);
            std::copy_n(winner, 3, dst + y * dstStep + 3 * x);
          }
        }
      },
      200);
}

}  // namespace
}  // namespace vek::test
