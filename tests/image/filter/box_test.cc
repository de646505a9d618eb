#include "vek/image.h"

#include <algorithm>

#include "tests/image/filter/neighbourhood.h"

namespace vek::test {
namespace {

uint8_t mean(uint64_t sum, uint64_t n) {
  const auto ratio = [&](uint64_t one) { return one / n + (2 * (one % n) > n); };
  const uint64_t value =
      n <= 128 ? (sum * ratio(16384) + 8192) >> 14 : (sum * ratio(1ull << 32) + (1ull << 31)) >> 32;
  return static_cast<uint8_t>(std::min<uint64_t>(value, 255));
}

void expectBox(const char* name,
               VekStatus (*f)(const Vek8u*, int, Vek8u*, int, VekiSize, VekiSize, VekiPoint)) {
  const auto define = [channels = channelsOf(name)](const Vek8u* src, int srcStep, Vek8u* dst,
                                                    int dstStep, VekiSize roi, VekiSize mask,
                                                    VekiPoint anchor) {
    fromNeighbourhoods(channels, src, srcStep, dst, dstStep, roi, anchor, [mask](auto at) {
      uint64_t sum = 0;
      for (int j = 0; j < mask.height; ++j) {
        for (int i = 0; i < mask.width; ++i) sum += static_cast<uint64_t>(at(i, j));
      }
      return mean(sum, uint64_t(mask.width) * mask.height);
    });
  };
  expectDefinition(name, f, define, 400);
}

TEST(FilterBox, EqualsTheNaiveMean) {
  VEK_C1_C3(expectBox, vekiFilterBox, R);
}

/// White images in areas whose factor would give 256.
TEST(FilterBox, Saturates) {
  const std::vector<Vek8u> white(200, 255);
  for (VekiSize mask : {VekiSize{2, 43}, VekiSize{6, 17}, VekiSize{15, 8}, VekiSize{43, 6}}) {
    const std::vector<uint8_t> expected(70, 255);
    runAtEveryLevel({{{70, 1, 70}, 1, 0, expected}}, [&](auto dst) {
      EXPECT_EQ(vekiFilterBox_8u_C1R(white.data(), 1, dst[0], 70, {70, 1}, mask, {0, 0}), 0);
    });
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

}  // namespace
}  // namespace vek::test
