#include "vek/image.h"

#include <algorithm>
#include <bit>
#include <climits>
#include <cstring>
#include <gtest/gtest.h>

#include "image/stat/norm_scale.h"
#include "tests/footprint/stat.h"
#include "tests/support/differential.h"

namespace vek::test {
namespace {

__extension__ typedef unsigned __int128 Wide;

constexpr Vek32s top = 0x7fffffff;
constexpr int factors[] = {INT_MIN, -300, -257, -256, -63, -62, -61, -60, -32, -31, -30, -24,
                           -8,      -2,   -1,   0,    0,   0,   0,   1,   2,   3,   4,   8,
                           15,      16,   23,   24,   31,  32,  33,  64,  255, 256, 257, INT_MAX};

using One = VekStatus (*)(const Vek8u*, int, VekiSize, Vek32s*, int);
using Two = VekStatus (*)(const Vek8u*, int, const Vek8u*, int, VekiSize, Vek32s*, int);

/// By kind (Inf, L1, L2) and channels (1, 3).
constexpr One norms[3][2] = {{vekiNorm_Inf_8u_C1RSfs, vekiNorm_Inf_8u_C3RSfs},
                             {vekiNorm_L1_8u_C1RSfs, vekiNorm_L1_8u_C3RSfs},
                             {vekiNorm_L2_8u_C1RSfs, vekiNorm_L2_8u_C3RSfs}};
constexpr Two diffs[3][2] = {{vekiNormDiff_Inf_8u_C1RSfs, vekiNormDiff_Inf_8u_C3RSfs},
                             {vekiNormDiff_L1_8u_C1RSfs, vekiNormDiff_L1_8u_C3RSfs},
                             {vekiNormDiff_L2_8u_C1RSfs, vekiNormDiff_L2_8u_C3RSfs}};
constexpr Two quotients[3][2] = {{vekiNormRel_Inf_8u_C1RSfs, vekiNormRel_Inf_8u_C3RSfs},
                                 {vekiNormRel_L1_8u_C1RSfs, vekiNormRel_L1_8u_C3RSfs},
                                 {vekiNormRel_L2_8u_C1RSfs, vekiNormRel_L2_8u_C3RSfs}};

struct Result {
  VekStatus status;
  Vek32s value;
};

/// sqrt(d / r) * 2^-s to the nearest, by its meaning: the number of odd 2k - 1 up to twice the
/// root.
Result root(uint64_t d, uint64_t r, int s) {
  if (d == 0) return {0, 0};
  const int width = 2 + std::bit_width(d) - 2 * std::clamp(s, -100, 100);
  if (width > 127) return {3, top};
  const int shift = 2 - 2 * std::clamp(s, -100, 60);
  const Wide square = (shift >= 0 ? Wide{d} << shift : Wide{d} >> -shift) / r;
  uint64_t low = 0, high = uint64_t{1} << 32;
  while (high - low > 1) {
    const uint64_t k = (low + high) / 2;
    (Wide{2 * k - 1} * (2 * k - 1) <= square ? low : high) = k;
  }
  return low > uint64_t{top} ? Result{3, top} : Result{0, static_cast<Vek32s>(low)};
}

Result scaled(int kind, uint64_t total, int s) {
  if (kind == 2) return root(total, 1, s);
  const uint64_t v = total & 0xFFFFFFFF;
  if (s >= 0) return {0, static_cast<Vek32s>(v >> std::min(s % 256, 31))};
  const int64_t amount = -int64_t{s} % 256;
  return {0, static_cast<Vek32s>(static_cast<Vek32u>(amount < 32 ? v << amount : 0))};
}

Result quotient(int kind, uint64_t d, uint64_t r, int s) {
  if (kind == 1) d &= 0xFFFFFFFF, r &= 0xFFFFFFFF;
  if (r == 0) return {6, top};
  if (d == 0) return {0, 0};
  if (kind == 2) return root(d, r, s);
  if (kind == 0 && s >= 0) {
    return {0, static_cast<Vek32s>((d * 256 / r + 128) >> std::min(s + 8LL, 63LL))};
  }
  const int bits = std::bit_width(d);
  const int64_t shift = 1 - int64_t{s};
  if (kind == 0) {
    if (shift > 100) return {0, top};
    return {0, static_cast<Vek32s>(std::min<Wide>((((Wide{d} << shift) / r) + 1) / 2, Wide{top}))};
  }
  uint64_t t;
  if (bits - int64_t{s} < 63) {
    t = shift >= 0 ? d << shift : d >> std::min<int64_t>(-shift, 63);
  } else {
    t = d << (63 - bits);
    r >>= std::min<int64_t>(bits - int64_t{s} - 62, 63);
  }
  if (r == 0) return {0, top};
  return {0, static_cast<Vek32s>(static_cast<Vek32u>((t / r + 1) / 2))};
}

/// The totals of v by kind and channel.
struct Totals {
  uint64_t at[3][3] = {};

  void take(int channel, uint64_t v) {
    at[0][channel] = std::max(at[0][channel], v);
    at[1][channel] += v;
    at[2][channel] += v * v;
  }
};

/// Runs call(pNorm) at every level and compares results and status with what `of` gives a channel.
template <class Expected, class Call>
void expectResults(const char* name, int kind, int channels, Expected of, Call call) {
  SCOPED_TRACE(testing::Message() << name << " kind " << kind << " channels " << channels);
  std::vector<uint8_t> bytes(static_cast<size_t>(4 * channels));
  VekStatus status = 0;
  for (int c = 0; c < channels; ++c) {
    const Result result = of(c);
    status = std::max(status, result.status);
    memcpy(bytes.data() + 4 * c, &result.value, 4);
  }
  runAtEveryLevel({{footprint::normResult(channels), 4, 0, bytes}},
                  [&](auto dst) { EXPECT_EQ(call(reinterpret_cast<Vek32s*>(dst[0])), status); });
}

TEST(Norm, EqualsTheDefinition) {
  Random random(baseSeed());
  for (int round = 0; round < 400 && !testing::Test::HasFailure(); ++round) {
    const int channels = round % 2 == 0 ? 1 : 3, form = channels / 2;
    const VekiSize roi = {random.size(400), random.in(1, 6)};
    const int row = roi.width * channels;
    const int aStep = row + (random.chance(50) ? 0 : random.in(1, 70));
    const int bStep = random.chance(50) ? aStep : row + random.in(0, 70);
    const auto guard = random.chance(50) ? Buffer::Guard::after : Buffer::Guard::before;
    Buffer a(footprint::normSource(roi, channels, aStep), 1, guard);
    Buffer b(footprint::normSource(roi, channels, bStep), 1, guard);
    a.fill(random, allPatterns[random.in(0, 5)]);
    b.fill(random, allPatterns[random.in(0, 5)]);
    Totals single, second, difference;
    const std::vector<uint8_t> p = a.contents(), q = b.contents();
    for (size_t i = 0; i < p.size(); ++i) {
      const int c = static_cast<int>(i % static_cast<size_t>(channels));
      single.take(c, p[i]);
      second.take(c, q[i]);
      difference.take(c, static_cast<uint64_t>(std::abs(p[i] - q[i])));
    }
    const int s = factors[random.in(0, static_cast<int>(std::size(factors)) - 1)];
    SCOPED_TRACE(testing::Message() << roi.width << 'x' << roi.height << " steps " << aStep << ' '
                                    << bStep << " scale " << s);
    for (int kind = 0; kind < 3; ++kind) {
      expectResults(
          "norm", kind, channels, [&](int c) { return scaled(kind, single.at[kind][c], s); },
          [&](Vek32s* n) { return norms[kind][form](a.data(), aStep, roi, n, s); });
      expectResults(
          "difference", kind, channels,
          [&](int c) { return scaled(kind, difference.at[kind][c], s); },
          [&](Vek32s* n) {
            return diffs[kind][form](a.data(), aStep, b.data(), bStep, roi, n, s);
          });
      expectResults(
          "quotient", kind, channels,
          [&](int c) { return quotient(kind, difference.at[kind][c], second.at[kind][c], s); },
          [&](Vek32s* n) {
            return quotients[kind][form](a.data(), aStep, b.data(), bStep, roi, n, s);
          });
    }
  }
}

/// Long enough for every intermediate sum to be emptied, in rows that overlap to save memory: white
/// against black, so that a lane that ran over would show.
TEST(Norm, DoesNotOverflow) {
  const VekiSize roi = {30000, 500};
  const std::vector<Vek8u> white(91000, 255), black(91000, 0);
  const uint64_t n = 30000 * 500;
  const uint64_t total[3] = {255, n * 255, n * 255 * 255};
  for (int kind = 0; kind < 3; ++kind) {
    for (int channels : {1, 3}) {
      const auto all = [&](int) { return scaled(kind, total[kind], 1); };
      expectResults("norm", kind, channels, all, [&](Vek32s* v) {
        return norms[kind][channels / 2](white.data(), 1, roi, v, 1);
      });
      expectResults("difference", kind, channels, all, [&](Vek32s* v) {
        return diffs[kind][channels / 2](black.data(), 1, white.data(), 1, roi, v, 1);
      });
    }
  }
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
    Vek64s values[2] = {static_cast<Vek64s>(d), 0};
    const Result single = root(d, 1, s), expected = root(d, r, s);
    ASSERT_EQ(ownSqrt_64s_ISfs(values, 2, s), single.status == 0 ? 0 : -1);
    ASSERT_EQ(values[0], single.value);
    ASSERT_EQ(values[1], 0);
    Vek32s result;
    ASSERT_EQ(relativeL2(d, r, s, &result), expected.status);
    ASSERT_EQ(result, expected.value);
    const uint64_t d32 = std::max<uint64_t>(number(32), 1), r32 = std::max<uint64_t>(number(32), 1);
    relativeL1(d32, r32, s, &result);
    ASSERT_EQ(result, quotient(1, d32, r32, s).value) << d32 << " / " << r32;
    const uint64_t d8 = (d32 & 255) | 1, r8 = (r32 & 255) | 1;
    relativeInf(d8, r8, s, &result);
    ASSERT_EQ(result, quotient(0, d8, r8, s).value) << d8 << " / " << r8;
  }
}

TEST(Norm, KnownResults) {
  const Vek8u white[12] = {255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255};
  const Vek8u a[3] = {4, 9, 0}, b[3] = {3, 9, 0}, steps[3] = {8, 6, 0};
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
  EXPECT_EQ(n[1], 0);
  EXPECT_EQ(n[2], top);
  // One channel that does not fit, one of zeros: the zeros decide the status.
  EXPECT_EQ(vekiNormRel_L2_8u_C3RSfs(a, 3, b, 3, pixel, n, -40), vekStsDivByZero);
  EXPECT_EQ(vekiNormRel_L2_8u_C1RSfs(a, 1, b, 1, pixel, n, -40), vekStsSqrtWrn);
}

TEST(Norm, RefusesBadArguments) {
  Vek8u image[48] = {};
  for (int kind = 0; kind < 3; ++kind) {
    for (int form = 0; form < 2; ++form) {
      Vek32s n[3] = {77, 77, 77};
      const VekiSize good = {2, 2}, noWidth = {0, 2}, noHeight = {2, INT_MIN};
      const One one = norms[kind][form];
      EXPECT_EQ(one(image, 6, good, nullptr, 0), -8);
      EXPECT_EQ(one(nullptr, 0, noWidth, n, 0), -8);
      EXPECT_EQ(one(image, 0, noWidth, n, 0), -6);
      EXPECT_EQ(one(image, 6, noHeight, n, 0), -6);
      EXPECT_EQ(one(image, INT_MIN, good, n, 0), -14);
      for (const Two two : {diffs[kind][form], quotients[kind][form]}) {
        EXPECT_EQ(two(nullptr, 6, image, 6, noWidth, n, 0), -8);
        EXPECT_EQ(two(image, 6, nullptr, 0, good, n, 0), -8);
        EXPECT_EQ(two(image, 6, image, 6, good, nullptr, 0), -8);
        EXPECT_EQ(two(image, 0, image, 6, noHeight, n, 0), -6);
        EXPECT_EQ(two(image, 0, image, 6, good, n, 0), -14);
        EXPECT_EQ(two(image, 6, image, -6, good, n, 0), -14);
      }
      EXPECT_EQ(n[0] + n[1] + n[2], 231);
    }
  }
}

}  // namespace
}  // namespace vek::test
