#include "vek/image.h"

#include <climits>
#include <gtest/gtest.h>

#include "tests/definition/pointwise.h"
#include "tests/support/levels.h"

namespace vek::test {
namespace {

/// Every pair of samples, at every scale factor that differs from its neighbours.
template <class... Scale>
void expectAllPairs(VekStatus (*f)(const Vek8u*, int, const Vek8u*, int, Vek8u*, int, VekiSize,
                                   Scale...),
                    definition::Formula formula) {
  std::vector<Vek8u> a, b, dst(65536);
  for (int i = 0; i < 65536; ++i) {
    a.push_back(static_cast<Vek8u>(i)), b.push_back(static_cast<Vek8u>(i >> 8));
  }
  for (int scale = -9; scale <= 17; ++scale) {
    for (Level level : levels()) {
      const LevelScope scope(level);
      f(a.data(), 256, b.data(), 256, dst.data(), 256, {256, 256}, Scale{scale}...);
      for (size_t i = 0; i < 65536; ++i) {
        const int operands[] = {a[i], b[i], scale};
        ASSERT_EQ(dst[i], formula(operands)) << int{a[i]} << ", " << int{b[i]} << " by " << scale;
      }
    }
  }
}

TEST(Arithmetic, AllPairsOfSamples) {
  expectAllPairs(vekiAdd_8u_C1RSfs, definition::sum);
  expectAllPairs(vekiSub_8u_C1RSfs, definition::firstFromSecond);
  expectAllPairs(vekiMul_8u_C1RSfs, definition::product);
  expectAllPairs(vekiMulScale_8u_C1R, definition::scaledBy255);
}

TEST(Arithmetic, KnownResults) {
  const auto one = [](auto f, Vek8u a, Vek8u b, auto... scale) {
    Vek8u dst = 99;
    EXPECT_EQ(f(&a, 1, &b, 1, &dst, 1, {1, 1}, scale...), 0);
    return int{dst};
  };
  EXPECT_EQ(one(vekiAdd_8u_C1RSfs, 200, 100, 0), 255);
  EXPECT_EQ(one(vekiAdd_8u_C1RSfs, 200, 100, 1), 150);
  EXPECT_EQ(one(vekiAdd_8u_C1RSfs, 3, 4, 1), 4);
  EXPECT_EQ(one(vekiSub_8u_C1RSfs, 10, 3, 0), 0);
  EXPECT_EQ(one(vekiSub_8u_C1RSfs, 3, 10, 1), 4);
  EXPECT_EQ(one(vekiMul_8u_C1RSfs, 255, 255, 8), 254);
  EXPECT_EQ(one(vekiMul_8u_C1RSfs, 255, 255, 16), 1);
  EXPECT_EQ(one(vekiMulScale_8u_C1R, 255, 1), 1);
  EXPECT_EQ(one(vekiMulScale_8u_C1R, 128, 128), 64);
}

TEST(Logic, KnownResults) {
  const Vek8u src[3] = {200, 50, 129}, low[3] = {5, 50, 5}, high[3] = {5, 50, 4};
  const Vek32u amounts[3] = {1, 9, 1};
  Vek8u dst[3];
  const VekiSize pixel = {1, 1};
  EXPECT_EQ(vekiLShiftC_8u_C1R(src, 1, 1, dst, 1, pixel), 0);
  EXPECT_EQ(dst[0], 144);
  EXPECT_EQ(vekiRShiftC_8u_C3R(src, 3, amounts, dst, 3, pixel), 0);
  EXPECT_EQ(dst[0] << 16 | dst[1] << 8 | dst[2], 100 << 16 | 0 << 8 | 64);
  // Thresholds: comparisons are strict, no step is tested, and equal thresholds are in order.
  EXPECT_EQ(vekiThreshold_GT_8u_C1R(src, INT_MIN, dst, 0, {2, 1}, 199), 0);
  EXPECT_EQ(dst[0] << 8 | dst[1], 199 << 8 | 50);
  EXPECT_EQ(vekiThreshold_LTValGTVal_8u_C1R(src, 0, dst, 0, {2, 1}, 50, 1, 50, 2), 0);
  EXPECT_EQ(dst[0] << 8 | dst[1], 2 << 8 | 50);
  EXPECT_EQ(vekiThreshold_LTValGTVal_8u_C3R(src, 3, dst, 3, pixel, low, src, high, src), -18);
}

}  // namespace
}  // namespace vek::test
