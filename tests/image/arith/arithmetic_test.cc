#include <algorithm>
#include <cmath>

#include "tests/image/arith/pointwise_test.h"

namespace vek::test {
namespace {

int scaled(int exact, int scaleFactor) {
  const double limited = std::clamp(scaleFactor, -30, 30);
  return static_cast<int>(std::min(255.0, std::floor(exact * std::exp2(-limited) + 0.5)));
}

// Of two images, or of an image and a constant.
int sum(const int* x) {
  return scaled(x[0] + x[1], x[2]);
}
int firstFromSecond(const int* x) {
  return scaled(std::max(x[1] - x[0], 0), x[2]);
}
int constantFromImage(const int* x) {
  return scaled(std::max(x[0] - x[1], 0), x[2]);
}
int product(const int* x) {
  return scaled(x[0] * x[1], x[2]);
}
int square(const int* x) {
  return scaled(x[0] * x[0], x[1]);
}
int scaledBy255(const int* x) {
  const int p = x[0] * x[1];
  return (p + (p >> 8) + 1) >> 8;
}

TEST(Arithmetic, EqualsTheDefinition) {
  VEK_C1_C3(expectPointwise, vekiAdd, RSfs, sum);
  VEK_C1_C3(expectPointwise, vekiAddC, RSfs, sum);
  VEK_C1_C3(expectPointwise, vekiSub, RSfs, firstFromSecond);
  VEK_C1_C3(expectPointwise, vekiSubC, RSfs, constantFromImage);
  VEK_C1_C3(expectPointwise, vekiMul, RSfs, product);
  VEK_C1_C3(expectPointwise, vekiMulC, RSfs, product);
  VEK_C1_C3(expectPointwise, vekiSqr, RSfs, square);
  VEK_C1_C3(expectPointwise, vekiMulScale, R, scaledBy255);
  VEK_C1_C3(expectPointwise, vekiMulCScale, R, scaledBy255);
}

/// Every pair of samples, at every scale factor that differs from its neighbours.
template <class... Scale>
void expectAllPairs(VekStatus (*f)(const Vek8u*, int, const Vek8u*, int, Vek8u*, int, VekiSize,
                                   Scale...),
                    Formula formula) {
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
  expectAllPairs(vekiAdd_8u_C1RSfs, sum);
  expectAllPairs(vekiSub_8u_C1RSfs, firstFromSecond);
  expectAllPairs(vekiMul_8u_C1RSfs, product);
  expectAllPairs(vekiMulScale_8u_C1R, scaledBy255);
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

/// Arithmetic and logic test steps before the size, set and copy after it, thresholds not at all;
/// the value of a set comes last.
TEST(Arithmetic, AnswersFaultsInOrder) {
  expectOrder("arith", {{"LTValGTVal_8u_C1", "0.0.1..2."},
                        {"Threshold", "0.0.10000"},
                        {"Set", "3021"},
                        {"Copy", "02021"},
                        {"Sqr|Not", "01012"},
                        {"C_|CScale", "010012"},
                        {"", "0101012"}});
}

}  // namespace
}  // namespace vek::test
