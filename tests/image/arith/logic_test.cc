// Logic, shifts, thresholds, set and copy.
#include <climits>

#include "tests/image/arith/pointwise_test.h"

namespace vek::test {
namespace {

TEST(Logic, EqualsTheDefinition) {
  const auto conjunction = [](const int* x) { return x[0] & x[1]; };
  const auto disjunction = [](const int* x) { return x[0] | x[1]; };
  const auto difference = [](const int* x) { return x[0] ^ x[1]; };
  VEK_C1_C3(expectPointwise, vekiAnd, R, conjunction);
  VEK_C1_C3(expectPointwise, vekiAndC, R, conjunction);
  VEK_C1_C3(expectPointwise, vekiOr, R, disjunction);
  VEK_C1_C3(expectPointwise, vekiOrC, R, disjunction);
  VEK_C1_C3(expectPointwise, vekiXor, R, difference);
  VEK_C1_C3(expectPointwise, vekiXorC, R, difference);
  VEK_C1_C3(expectPointwise, vekiNot, R, [](const int* x) { return 255 - x[0]; });
  VEK_C1_C3(expectPointwise, vekiSet, R, [](const int* x) { return x[0]; });
  VEK_C1_C3(expectPointwise, vekiCopy, R, [](const int* x) { return x[0]; });
}

TEST(Shift, EqualsTheDefinition) {  // amounts are unsigned
  VEK_C1_C3(expectPointwise, vekiRShiftC, R,
            [](const int* x) { return x[1] < 0 || x[1] > 7 ? 0 : x[0] >> x[1]; });
  VEK_C1_C3(expectPointwise, vekiLShiftC, R,
            [](const int* x) { return x[1] < 0 || x[1] > 7 ? 0 : x[0] << x[1] & 255; });
}

TEST(Threshold, EqualsTheDefinition) {
  VEK_C1_C3(expectPointwise, vekiThreshold_GT, R,
            [](const int* x) { return x[0] > x[1] ? x[1] : x[0]; });
  VEK_C1_C3(expectPointwise, vekiThreshold_LT, R,
            [](const int* x) { return x[0] < x[1] ? x[1] : x[0]; });
  VEK_C1_C3(expectPointwise, vekiThreshold_GTVal, R,
            [](const int* x) { return x[0] > x[1] ? x[2] : x[0]; });
  VEK_C1_C3(expectPointwise, vekiThreshold_LTVal, R,
            [](const int* x) { return x[0] < x[1] ? x[2] : x[0]; });
  VEK_C1_C3(expectPointwise, vekiThreshold_LTValGTVal, R, [](const int* x) {
    return x[0] < x[1] ? x[2] : x[0] > x[3] ? x[4] : x[0];
  });
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
