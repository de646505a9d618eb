#include "vek/image.h"

#include <algorithm>

#include "tests/image/filter/neighbourhood.h"

namespace vek::test {
namespace {

VekStatus box(const Neighbourhood& a, const Vek8u* src, Vek8u* dst) {
  const auto filter = a.channels == 1 ? vekiFilterBox_8u_C1R : vekiFilterBox_8u_C3R;
  return filter(src, a.srcStep, dst, a.dstStep, a.roi, a.mask, a.anchor);
}

uint8_t mean(uint64_t sum, uint64_t n) {
  const auto ratio = [&](uint64_t one) { return one / n + (2 * (one % n) > n); };
  const uint64_t value =
      n <= 128 ? (sum * ratio(16384) + 8192) >> 14 : (sum * ratio(1ull << 32) + (1ull << 31)) >> 32;
  return static_cast<uint8_t>(std::min<uint64_t>(value, 255));
}

void compareBox(const Neighbourhood& a, Random& random, Pattern pattern) {
  const auto naive = [&](auto at, int c) {
    uint64_t sum = 0;
    for (int j = 0; j < a.mask.height; ++j) {
      for (int i = 0; i < a.mask.width; ++i) sum += static_cast<uint64_t>(at(i, j, c));
    }
    return mean(sum, uint64_t(a.mask.width) * a.mask.height);
  };
  compareWithNaive(a, random, pattern, naive, [&](auto src, auto dst) { return box(a, src, dst); });
}

TEST(FilterBox, EqualsTheNaiveMean) {
  Random random(baseSeed());
  for (int round = 0; round < 200 && !HasFailure(); ++round) {
    const VekiSize mask = {random.in(2, random.chance(20) ? 90 : 20), random.in(2, 20)};
    compareBox(randomNeighbourhood(random, random.in(0, 1) * 2 + 1, mask, 150, 9), random,
               allPatterns[random.in(0, 5)]);
  }
}

/// The areas around which the factor, the width of the sums and the rounding change, and white
/// images that would give 256 (86 = 2 x 43, 102, 120).
TEST(FilterBox, EveryAreaNearALimit) {
  Random random(baseSeed() + 1);
  const VekiSize masks[] = {{2, 43}, {6, 17},  {15, 8},     {16, 8},   {8, 16},
                            {3, 43}, {17, 8},  {12, 11},    {15, 17},  {16, 16},
                            {6, 43}, {48, 85}, {48, 86},    {15, 257}, {15, 258},
                            {49, 6}, {2, 128}, {1 << 8, 2}, {43, 6}};
  for (VekiSize mask : masks) {
    for (int channels : {1, 3}) {
      for (Pattern pattern : {Pattern::ones, Pattern::noise}) {
        compareBox(randomNeighbourhood(random, channels, mask, 60, 3), random, pattern);
      }
    }
  }
}

TEST(FilterBox, SpansStrips) {
  Random random(baseSeed() + 2);
  for (VekiSize mask : {VekiSize{3, 3}, VekiSize{21, 13}, VekiSize{61, 5}}) {
    for (int channels : {1, 3}) {
      compareBox({channels, {4200 / channels * 2, 4}, mask, {1, 1}, 8500, 8500}, random,
                 Pattern::noise);
    }
  }
}

/// Sums of more than 32 bits, and a factor of 0, over memory whose rows overlap.
TEST(FilterBox, HugeMasks) {
  for (const VekiSize& c : {VekiSize{40, 4103}, VekiSize{3, 92682}}) {
    const int width = c.width, side = c.height;
    std::vector<Vek8u> src(static_cast<size_t>(2 * side + 3 * width + 3));
    for (size_t i = 0; i < src.size(); ++i) src[i] = i % 7 == 0 ? Vek8u(i / 7) : 255;
    std::vector<uint64_t> prefix(1);
    for (Vek8u v : src) prefix.push_back(prefix.back() + v);
    std::vector<Vek8u> expected;
    for (int x = 0; x < width; ++x) {
      uint64_t sum = 0;
      for (int j = 0; j < side; ++j) {
        sum += prefix[static_cast<size_t>(x + j + side)] - prefix[static_cast<size_t>(x + j)];
      }
      expected.push_back(mean(sum, uint64_t(side) * uint64_t(side)));
    }
    runAtEveryLevel({{{width, 1, width}, 1, 0, expected}}, [&](auto dst) {
      EXPECT_EQ(
          vekiFilterBox_8u_C1R(src.data(), 1, dst[0], width, {width, 1}, {side, side}, {0, 0}), 0);
    });
  }
}

TEST(FilterBox, RefusesBadArguments) {
  Vek8u image[128] = {}, dst[64] = {};
  const Vek8u* const src = image + 32;
  struct Case {
    const Vek8u* src;
    int srcStep, dstStep;
    VekiSize roi, mask;
    VekiPoint anchor;
    VekStatus status;
  };
  const Case cases[] = {
      {src, 8, 8, {4, 4}, {2, 2}, {1, 1}, vekStsNoErr},
      {nullptr, 0, 8, {4, 4}, {2, 2}, {0, 0}, vekStsNullPtrErr},
      {src, 0, 8, {0, 4}, {2, 2}, {0, 0}, vekStsStepErr},
      {src, 8, -1, {4, 0}, {2, 2}, {0, 0}, vekStsStepErr},
      {src, 8, 8, {4, 0}, {1, 2}, {0, 0}, vekStsSizeErr},
      {src, 8, 8, {4, 4}, {1, 5}, {5, 0}, vekStsMaskSizeErr},
      {src, 8, 8, {4, 4}, {5, 0}, {0, 0}, vekStsMaskSizeErr},
      {src, 8, 8, {4, 4}, {2, 2}, {2, 0}, vekStsAnchorErr},
      {src, 8, 8, {4, 4}, {2, 2}, {0, -1}, vekStsAnchorErr},
  };
  for (const Case& c : cases) {
    for (auto filter : {vekiFilterBox_8u_C1R, vekiFilterBox_8u_C3R}) {
      EXPECT_EQ(filter(c.src, c.srcStep, dst, c.dstStep, c.roi, c.mask, c.anchor), c.status);
    }
  }
  EXPECT_EQ(vekiFilterBox_8u_C1R(src, 0, nullptr, 0, {0, 0}, {0, 0}, {9, 9}), vekStsNullPtrErr);
}

}  // namespace
}  // namespace vek::test
