#include "tests/definition/norm.h"

#include "vek/image.h"

#include <algorithm>
#include <bit>
#include <climits>
#include <cstring>
#include <gtest/gtest.h>

#include "image/stat/norm_scale.h"
#include "tests/support/differential.h"

namespace vek::test {
namespace {

using namespace definition;

constexpr int factors[] = {INT_MIN, -300, -257, -256, -63, -62, -61, -32, -31, -2,  -1,
                           0,       1,    2,    8,    15,  24,  31,  32,  256, 257, INT_MAX};

/// Long enough for every intermediate sum to be emptied, in rows that overlap to save memory: white
/// against black, so that a lane that ran over would show.
TEST(Norm, DoesNotOverflow) {
  constexpr int width = 30000, height = 500;
  constexpr VekiSize roi = {width, height};
  const std::vector<Vek8u> white(91000, 255), black(91000, 0);
  const auto expectTotals = [&](auto norm, auto difference, int channels, Kind kind) {
    const uint64_t total = uint64_t{width} * height * (kind == Kind::l1 ? 255 : 255 * 255);
    for (int s : {1, 32}) {
      for (Level level : levels()) {
        const LevelScope scope(level);
        for (bool ofTwo : {false, true}) {
          Vek32s results[3] = {};
          EXPECT_EQ(ofTwo ? difference(white.data(), 1, black.data(), 1, roi, results, s)
                          : norm(white.data(), 1, roi, results, s),
                    0);
          for (int c = 0; c < channels; ++c) {
            EXPECT_EQ(results[c], scaled(kind, total, s).value) << name(level) << ' ' << ofTwo;
          }
        }
      }
    }
  };
  expectTotals(vekiNorm_L1_8u_C1RSfs, vekiNormDiff_L1_8u_C1RSfs, 1, Kind::l1);
  expectTotals(vekiNorm_L1_8u_C3RSfs, vekiNormDiff_L1_8u_C3RSfs, 3, Kind::l1);
  expectTotals(vekiNorm_L2_8u_C1RSfs, vekiNormDiff_L2_8u_C1RSfs, 1, Kind::l2);
  expectTotals(vekiNorm_L2_8u_C3RSfs, vekiNormDiff_L2_8u_C3RSfs, 3, Kind::l2);
}

/// Totals of every size, which images of a test cannot have.
TEST(Norm, ScalesAnyTotal) {
  Random random(baseSeed());
  for (int round = 0; round < 20000; ++round) {
    const int s = round % 3 == 0 ? factors[random.in(0, static_cast<int>(std::size(factors)) - 1)]
                                 : random.in(-70, 40);
    const auto number = [&](int most) {
      const uint64_t v = random.bits() >> random.in(64 - most, 63);
      const uint64_t near = (v & 0x7FFFFFFF) * (v & 0x7FFFFFFF) + static_cast<uint64_t>(round % 5);
      return most > 32 && random.chance(50) ? std::max<uint64_t>(near, 2) - 2 : v;
    };
    const uint64_t d = std::max<uint64_t>(number(63), 1), r = std::max<uint64_t>(number(63), 1);
    SCOPED_TRACE(testing::Message() << d << " / " << r << " scale " << s);
    const Result single = root(d, 1, s), expected = root(d, r, s);
    Vek32s result;
    ASSERT_EQ(scaleRoot(d, s, &result), single.status == 0);
    ASSERT_EQ(result, single.value);
    ASSERT_EQ(relativeL2(d, r, s, &result), expected.status);
    ASSERT_EQ(result, expected.value);
    const uint64_t d32 = std::max<uint64_t>(number(32), 1), r32 = std::max<uint64_t>(number(32), 1);
    relativeL1(d32, r32, s, &result);
    ASSERT_EQ(result, quotient(Kind::l1, d32, r32, s).value) << d32 << " / " << r32;
    const uint64_t d8 = (d32 & 255) | 1, r8 = (r32 & 255) | 1;
    relativeInf(d8, r8, s, &result);
    ASSERT_EQ(result, quotient(Kind::inf, d8, r8, s).value) << d8 << " / " << r8;
  }
}

TEST(Norm, KnownResults) {
  const Vek8u white[12] = {255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255};
  const Vek8u a[3] = {4, 0, 9}, b[3] = {3, 0, 9}, steps[3] = {8, 6, 0};
  const VekiSize square = {2, 2}, pixel = {1, 1};
  Vek32s n[3];
  const int infCases[][2] = {{0, 255}, {4, 15}, {-1, 510}, {32, 0}, {256, 255}, {INT_MIN, 255}};
  for (const auto& c : infCases) {
    EXPECT_EQ(vekiNorm_Inf_8u_C1RSfs(white, 2, square, n, c[0]), 0);
    EXPECT_EQ(n[0], c[1]) << c[0];
  }
  EXPECT_EQ(vekiNorm_L1_8u_C1RSfs(white, 2, square, n, 0), 0);
  EXPECT_EQ(n[0], 1020);
  EXPECT_EQ(vekiNorm_L1_8u_C1RSfs(white, 2, square, n, -30), 0);
  EXPECT_EQ(n[0], 0);
  EXPECT_EQ(vekiNorm_L2_8u_C3RSfs(steps, 3, pixel, n, 4), 0);  // 0.5, 0.375, 0
  EXPECT_EQ(n[0] * 100 + n[1] * 10 + n[2], 100);
  EXPECT_EQ(vekiNorm_L2_8u_C1RSfs(white, 2, square, n, -23), vekStsSqrtWrn);
  EXPECT_EQ(n[0], top);
  EXPECT_EQ(vekiNormRel_Inf_8u_C3RSfs(a, 3, b, 3, pixel, n, -2), vekStsDivByZero);
  EXPECT_EQ(n[0], 1);  // (8 / 3 + 1) >> 1
  EXPECT_EQ(n[1], top);
  EXPECT_EQ(n[2], 0);
  EXPECT_EQ(vekiNormRel_L2_8u_C1RSfs(a, 1, b, 1, pixel, n, -40), vekStsSqrtWrn);
}

/// Any channel warns, whatever the others do: of what does not fit or, more gravely, of zeros.
TEST(Norm, WarnsOfEachChannel) {
  const VekiSize pixel = {1, 1};
  const Vek8u black[3] = {};
  Vek32s n[3];
  for (int channel = 0; channel < 3; ++channel) {
    Vek8u bright[3] = {1, 1, 1}, dark[3] = {1, 1, 1};
    bright[channel] = 255, dark[channel] = 0;
    EXPECT_EQ(vekiNorm_L2_8u_C3RSfs(bright, 3, pixel, n, -30), vekStsSqrtWrn);
    EXPECT_EQ(vekiNormDiff_L2_8u_C3RSfs(bright, 3, black, 3, pixel, n, -30), vekStsSqrtWrn);
    for (auto relative :
         {vekiNormRel_Inf_8u_C3RSfs, vekiNormRel_L1_8u_C3RSfs, vekiNormRel_L2_8u_C3RSfs}) {
      for (int s : {0, -40}) {  // the other channels fit, or do not
        EXPECT_EQ(relative(bright, 3, dark, 3, pixel, n, s), vekStsDivByZero) << channel;
      }
    }
    EXPECT_EQ(vekiNormRel_L2_8u_C3RSfs(bright, 3, bright, 3, pixel, n, -30), 0);
  }
}

}  // namespace
}  // namespace vek::test
