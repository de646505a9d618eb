#include "vek/image.h"

#include <algorithm>
#include <cstdlib>

#include "tests/image/filter/neighbourhood.h"

namespace vek::test {
namespace {

void compareMedian(const Neighbourhood& a, Random& random, Pattern pattern) {
  const auto naive = [&](auto at, int c) {
    std::vector<uint8_t> samples;
    for (int j = 0; j < a.mask.height; ++j) {
      for (int i = 0; i < a.mask.width; ++i) samples.push_back(static_cast<uint8_t>(at(i, j, c)));
    }
    const auto middle = samples.begin() + static_cast<ptrdiff_t>(samples.size() / 2);
    std::nth_element(samples.begin(), middle, samples.end());
    return *middle;
  };
  const auto f = a.channels == 1 ? vekiFilterMedian_8u_C1R : vekiFilterMedian_8u_C3R;
  compareWithNaive(a, random, pattern, naive, [&](auto src, auto dst) {
    return f(src, a.srcStep, dst, a.dstStep, a.roi, a.mask, a.anchor);
  });
}

TEST(FilterMedian, SquareMasks) {
  Random random(baseSeed());
  for (int side = 1; side <= 15; side += 2) {
    for (int round = 0; round < 24 && !HasFailure(); ++round) {
      const int channels = random.in(0, 1) * 2 + 1;
      compareMedian(randomNeighbourhood(random, channels, {side, side}, 110, 3), random,
                    allPatterns[random.in(0, 5)]);
    }
    // Longer than one strip, ending in less than a vector.
    compareMedian({1, {270, 25}, {side, side}, {0, 0}, 290, 270}, random, Pattern::noise);
    for (int width : {193, 2080}) {
      compareMedian({1, {width, 2}, {side, side}, {0, 0}, 2100, 2100}, random, Pattern::noise);
    }
    compareMedian({3, {355, 2}, {side, side}, {side - 1, 0}, 1200, 1100}, random,
                  Pattern::extremes);
  }
}

/// Tall, wide and flat masks, on both sides of the widths where the algorithm changes.
TEST(FilterMedian, AnyOddMask) {
  Random random(baseSeed() + 1);
  const VekiSize masks[] = {{1, 3},   {3, 1},   {5, 3},   {1, 255},   {257, 3},
                            {129, 5}, {131, 5}, {21, 11}, {15, 17},   {23, 11},
                            {21, 33}, {31, 31}, {3, 255}, {129, 255}, {901, 75}};
  for (VekiSize mask : masks) {
    const bool large = mask.width * mask.height > 10000;
    for (int channels : {1, 3}) {
      for (Pattern pattern : allPatterns) {
        if (large && pattern != Pattern::noise && pattern != Pattern::ones) continue;
        compareMedian(randomNeighbourhood(random, channels, mask, large ? 12 : 70, 3), random,
                      pattern);
      }
    }
  }
  compareMedian({1, {400, 2}, {41, 21}, {3, 4}, 450, 400}, random, Pattern::noise);
  compareMedian({3, {100, 30}, {17, 17}, {0, 16}, 360, 310}, random, Pattern::noise);
}

TEST(FilterMedian, RefusesBadArguments) {
  Vek8u src[400] = {}, dst[64] = {};
  struct Case {
    const Vek8u* src;
    int srcStep, dstStep;
    VekiSize roi, mask;
    VekiPoint anchor;
    VekStatus status;
  };
  const Case cases[] = {
      {src, 16, 8, {2, 2}, {3, 3}, {0, 0}, vekStsNoErr},
      {nullptr, 16, 8, {0, 2}, {3, 3}, {0, 0}, vekStsNullPtrErr},
      {src, 0, 8, {0, 2}, {3, 3}, {0, 0}, vekStsSizeErr},
      {src, 16, -8, {2, 2}, {3, 2}, {0, 0}, vekStsStepErr},
      {src, 16, 8, {2, 2}, {3, 2}, {3, 0}, vekStsMaskSizeErr},
      {src, 16, 8, {2, 2}, {2, 3}, {0, 0}, vekStsMaskSizeErr},
      {src, 16, 8, {2, 2}, {-1, 3}, {0, 0}, vekStsMaskSizeErr},
      {src, 16, 8, {2, 2}, {3, 257}, {0, 0}, vekStsMaskSizeErr},
      {src, 16, 8, {2, 2}, {3, 3}, {3, 0}, vekStsAnchorErr},
      {src, 16, 8, {2, 2}, {3, 3}, {0, -1}, vekStsAnchorErr},
  };
  for (const Case& c : cases) {
    for (auto f : {vekiFilterMedian_8u_C1R, vekiFilterMedian_8u_C3R}) {
      EXPECT_EQ(f(c.src, c.srcStep, dst, c.dstStep, c.roi, c.mask, c.anchor), c.status);
    }
  }
  EXPECT_EQ(vekiFilterMedian_8u_C1R(src, 0, nullptr, 0, {0, 0}, {2, 2}, {9, 9}), vekStsNullPtrErr);
}

/// The channel `c` of the winner, by the direct definition.
template <class At>
uint8_t colorMedian(At at, int side, int c) {
  const auto distance = [&](int p, int q) {
    int sum = 0;
    for (int k = 0; k < 3; ++k) {
      sum += std::abs(at(p % side, p / side, k) - at(q % side, q / side, k));
    }
    return sum;
  };
  int winner = 0, least = 1 << 30;
  for (int p = 0; p < side * side; ++p) {
    int score = 0;
    for (int q = 0; q < side * side; ++q) score += distance(p, q);
    if (score < least) winner = p, least = score;
  }
  return static_cast<uint8_t>(at(winner % side, winner / side, c));
}

/// Few distinct values give many ties.
TEST(FilterMedianColor, EqualsTheDirectDefinition) {
  Random random(baseSeed() + 2);
  for (int round = 0; round < 80 && !HasFailure(); ++round) {
    const int side = random.in(0, 1) * 2 + 3;
    Neighbourhood a = randomNeighbourhood(random, 3, {side, side}, 130, 8);
    a.anchor = {side / 2, side / 2};
    compareWithNaive(
        a, random, allPatterns[random.in(0, 5)],
        [&](auto at, int c) { return colorMedian(at, side, c); },
        [&](auto src, auto dst) {
          return vekiFilterMedianColor_8u_C3R(src, a.srcStep, dst, a.dstStep, a.roi, side * 11);
        });
  }
}

TEST(FilterMedianColor, RefusesBadArguments) {
  Vek8u src[400] = {}, dst[64] = {};
  const Vek8u* in = src + 100;
  const auto call = [&](const Vek8u* from, int srcStep, int dstStep, VekiSize roi, int mask) {
    return vekiFilterMedianColor_8u_C3R(from, srcStep, dst, dstStep, roi, mask);
  };
  EXPECT_EQ(call(in, 24, 8, {2, 2}, 33), vekStsNoErr);
  EXPECT_EQ(call(in, 24, 8, {2, 2}, 35), vekStsMaskSizeErr);
  EXPECT_EQ(call(in, -24, 8, {2, 2}, 35), vekStsStepErr);
  EXPECT_EQ(call(in, 24, 0, {2, 0}, 35), vekStsSizeErr);
  EXPECT_EQ(call(nullptr, 24, 8, {0, 2}, 33), vekStsNullPtrErr);
  EXPECT_EQ(vekiFilterMedianColor_8u_C3R(in, 24, nullptr, 8, {2, 2}, 33), vekStsNullPtrErr);
}

}  // namespace
}  // namespace vek::test
