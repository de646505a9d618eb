#include "vek/image.h"

#include "tests/definition/filter.h"
#include "tests/support/differential.h"

namespace vek::test {
namespace {

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
      expected.push_back(definition::mean(sum, uint64_t(side) * uint64_t(side)));
    }
    runAtEveryLevel({{{width, 1, width}, 1, 0, expected}}, [&](auto dst) {
      EXPECT_EQ(
          vekiFilterBox_8u_C1R(src.data(), 1, dst[0], width, {width, 1}, {side, side}, {0, 0}), 0);
    });
  }
}

}  // namespace
}  // namespace vek::test
