#include <algorithm>
#include <climits>
#include <cmath>

#include "tests/image/arith/pointwise_test.h"

namespace vek::test {
namespace {

int scaled(int exact, int scaleFactor) {
  const double limited = std::clamp(scaleFactor, -30, 30);
  return static_cast<int>(std::min(255.0, std::floor(exact * std::exp2(-limited) + 0.5)));
}

int mulScale(int p) {
  return (p + (p >> 8) + 1) >> 8;
}

/// Every function of the family with the constants v, which must outlive the result.
std::vector<Pointwise> functions(const Vek8u* v, int scale) {
  const auto sum = [](int a, int b) { return a + b; };
  const auto product = [](int a, int b) { return a * b; };
  const auto secondMinusFirst = [](int a, int b) { return std::max(b - a, 0); };
  const auto difference = [](int a, int b) { return std::max(a - b, 0); };
  const auto two = [=](auto exact) {
    return [=](int a, int b, int) { return scaled(exact(a, b), scale); };
  };
  const auto constant = [=](auto exact) {
    return [=](int a, int, int channel) { return scaled(exact(a, v[channel]), scale); };
  };
  const auto square = [=](int a, int, int) { return scaled(a * a, scale); };
  const auto scale255 = [](int a, int b, int) { return mulScale(a * b); };
  const auto scale255C = [=](int a, int, int channel) { return mulScale(a * v[channel]); };
  return {{"Add C1", 2, 1, onTwo(vekiAdd_8u_C1RSfs, scale), two(sum)},
          {"Add C3", 2, 3, onTwo(vekiAdd_8u_C3RSfs, scale), two(sum)},
          {"AddC C1", 1, 1, onValue(vekiAddC_8u_C1RSfs, v[0], scale), constant(sum)},
          {"AddC C3", 1, 3, onValue(vekiAddC_8u_C3RSfs, v, scale), constant(sum)},
          {"Sub C1", 2, 1, onTwo(vekiSub_8u_C1RSfs, scale), two(secondMinusFirst)},
          {"Sub C3", 2, 3, onTwo(vekiSub_8u_C3RSfs, scale), two(secondMinusFirst)},
          {"SubC C1", 1, 1, onValue(vekiSubC_8u_C1RSfs, v[0], scale), constant(difference)},
          {"SubC C3", 1, 3, onValue(vekiSubC_8u_C3RSfs, v, scale), constant(difference)},
          {"Mul C1", 2, 1, onTwo(vekiMul_8u_C1RSfs, scale), two(product)},
          {"Mul C3", 2, 3, onTwo(vekiMul_8u_C3RSfs, scale), two(product)},
          {"MulC C1", 1, 1, onValue(vekiMulC_8u_C1RSfs, v[0], scale), constant(product)},
          {"MulC C3", 1, 3, onValue(vekiMulC_8u_C3RSfs, v, scale), constant(product)},
          {"Sqr C1", 1, 1, onOne(vekiSqr_8u_C1RSfs, scale), square},
          {"Sqr C3", 1, 3, onOne(vekiSqr_8u_C3RSfs, scale), square},
          {"MulScale C1", 2, 1, onTwo(vekiMulScale_8u_C1R), scale255},
          {"MulScale C3", 2, 3, onTwo(vekiMulScale_8u_C3R), scale255},
          {"MulCScale C1", 1, 1, onValue(vekiMulCScale_8u_C1R, v[0]), scale255C},
          {"MulCScale C3", 1, 3, onValue(vekiMulCScale_8u_C3R, v), scale255C}};
}

TEST(Arithmetic, EqualsTheDefinition) {
  Random random(baseSeed());
  const Vek8u likely[] = {0, 1, 2, 127, 128, 254, 255};
  const int factors[] = {INT_MIN, -9, -8, -7, -3, -2, -1, 0,  0,  0,  1,  1,
                         2,       3,  4,  6,  7,  8,  9,  10, 15, 16, 17, INT_MAX};
  for (int scale : factors) {
    Vek8u values[3];
    for (Vek8u& v : values) {
      v = random.chance(50) ? likely[random.in(0, 6)] : static_cast<Vek8u>(random.bits());
    }
    for (const Pointwise& op : functions(values, scale)) {
      SCOPED_TRACE(scale);
      compare(op, random, 4);
    }
  }
}

/// Every pair of samples, at every scale factor that differs from its neighbours.
TEST(Arithmetic, AllPairsOfSamples) {
  static Vek8u a[256 * 256], b[256 * 256], dst[256 * 256];
  for (int i = 0; i < 256 * 256; ++i)
    a[i] = static_cast<Vek8u>(i), b[i] = static_cast<Vek8u>(i >> 8);
  const Vek8u unused[3] = {};
  for (int scale = -9; scale <= 17; ++scale) {
    for (const Pointwise& op : functions(unused, scale)) {
      if (op.channels != 1 || op.sources != 2) continue;
      for (Level level : levels()) {
        const LevelScope scope(level);
        ASSERT_EQ(op.call({a, 256, b, 256, dst, 256, {256, 256}}), 0);
        for (int i = 0; i < 256 * 256; ++i) {
          ASSERT_EQ(dst[i], op.formula(a[i], b[i], 0))
              << op.name << ' ' << int{a[i]} << ", " << int{b[i]} << " scale " << scale;
        }
      }
    }
  }
}

TEST(Arithmetic, KnownResults) {
  struct Case {
    const char* name;
    int a, b, scale, result;
  };
  const Case cases[] = {{"Add C1", 200, 100, 0, 255},     {"Add C1", 200, 100, 1, 150},
                        {"Add C1", 200, 100, -1, 255},    {"Add C1", 3, 4, 1, 4},
                        {"Sub C1", 10, 3, 0, 0},          {"Sub C1", 3, 10, 1, 4},
                        {"Mul C1", 255, 255, 8, 254},     {"Mul C1", 255, 255, 16, 1},
                        {"Mul C1", 255, 255, 17, 0},      {"Mul C1", 255, 255, 0, 255},
                        {"MulScale C1", 255, 1, 0, 1},    {"MulScale C1", 128, 128, 0, 64},
                        {"MulScale C1", 255, 255, 0, 255}};
  const Vek8u unused[3] = {};
  for (const Case& c : cases) {
    for (const Pointwise& op : functions(unused, c.scale)) {
      if (op.name != c.name) continue;
      const Vek8u a = static_cast<Vek8u>(c.a), b = static_cast<Vek8u>(c.b);
      Vek8u dst = 99;
      EXPECT_EQ(op.call({&a, 1, &b, 1, &dst, 1, {1, 1}}), 0);
      EXPECT_EQ(dst, c.result) << c.name << ' ' << c.a << ", " << c.b << ", " << c.scale;
    }
  }
}

TEST(Arithmetic, RefusesBadArguments) {
  const Vek8u values[3] = {1, 2, 3};
  for (const Pointwise& op : functions(values, 0)) expectChecks(op, false);
  Vek8u image[12] = {};
  EXPECT_EQ(vekiAddC_8u_C3RSfs(image, 0, nullptr, image, 6, {2, 2}, 0), -8);
  EXPECT_EQ(vekiSubC_8u_C3RSfs(image, 6, nullptr, image, 6, {0, 2}, 0), -8);
  EXPECT_EQ(vekiMulC_8u_C3RSfs(image, 6, nullptr, image, 6, {2, 2}, 0), -8);
  EXPECT_EQ(vekiMulCScale_8u_C3R(image, 6, nullptr, image, 0, {2, 2}), -8);
}

}  // namespace
}  // namespace vek::test
