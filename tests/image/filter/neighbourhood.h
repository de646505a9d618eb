// The body of the filter tests: a random image, the naive result of every sample, every level.
#pragma once

#include <gtest/gtest.h>
#include <vector>

#include "tests/footprint/filter.h"
#include "tests/support/differential.h"

namespace vek::test {

using footprint::Neighbourhood;

/// A random region and steps for a mask; the anchor is anywhere in the mask.
inline Neighbourhood randomNeighbourhood(Random& random, int channels, VekiSize mask, int mostWidth,
                                         int mostHeight) {
  const VekiSize roi = {random.size(mostWidth), random.in(1, mostHeight)};
  const VekiPoint anchor = {random.in(0, mask.width - 1), random.in(0, mask.height - 1)};
  const int srcBytes = channels * (roi.width + mask.width - 1);
  return {channels,
          roi,
          mask,
          anchor,
          srcBytes + random.in(0, 9),
          channels * roi.width + random.in(0, 9)};
}

/// Calls call(pSrc, pDst) at every level and compares with naive(at) for every sample, where
/// at(i, j, c) is the sample in column i and row j of the pixel's neighbourhood; `channel` is the
/// sample's own.
template <class Naive, class Call>
void compareWithNaive(const Neighbourhood& a, Random& random, Pattern pattern, Naive naive,
                      Call call) {
  SCOPED_TRACE(testing::Message() << "C" << a.channels << ", " << a.roi.width << 'x' << a.roi.height
                                  << ", mask " << a.mask.width << 'x' << a.mask.height
                                  << ", anchor " << a.anchor.x << ", " << a.anchor.y << ", steps "
                                  << a.srcStep << ", " << a.dstStep);
  const Area area = footprint::filterSource(a);
  Buffer src(area, 1, random.chance(50) ? Buffer::Guard::after : Buffer::Guard::before);
  src.fill(random, pattern);
  std::vector<uint8_t> expected;
  for (int y = 0; y < a.roi.height; ++y) {
    for (int x = 0; x < a.roi.width; ++x) {
      const uint8_t* corner = src.data() + area.first + ptrdiff_t{y} * a.srcStep + x * a.channels;
      const auto at = [&](int i, int j, int c) {
        return int{corner[ptrdiff_t{j} * a.srcStep + i * a.channels + c]};
      };
      for (int c = 0; c < a.channels; ++c) expected.push_back(naive(at, c));
    }
  }
  runAtEveryLevel({{footprint::filterDestination(a), 1, 0, expected}},
                  [&](auto dst) { EXPECT_EQ(call(src.data(), dst[0]), 0); });
  EXPECT_TRUE(src.outsideIntact());
}

}  // namespace vek::test
