#include "vek/camera.h"

#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>
#include <vector>

#include "tests/campaign/definition.h"

namespace vek::test {
namespace {

struct Sums {
  Vek32u red = 0, green = 0, blue = 0;
  int samples = 0;  ///< of the quads that count
};

Sums accumulate(const VekiAWBParams& p, const Vek16u* window, int step, VekiRect w) {
  Sums s;
  for (int y = 0; y < w.height; y += 2) {
    for (int x = 0; x < w.width; x += 2) {
      const Vek16u* const top = window + ptrdiff_t{y} * (step / 2) + x;
      const Vek16u* const bottom = top + step / 2;
      const int r = top[0], g = top[1] + bottom[0], b = bottom[1], all = r + g + b;
      const bool white =
          std::abs(r - (g + 1) / 2) < p.wpdLimit1 && std::abs(b - (g + 1) / 2) < p.wpdLimit2 &&
          std::abs(g - (r + b)) < p.wpdLimit3 && all > 4 * p.wpdLow && all < 4 * p.wpdHigh;
      if (p.method == vekiAWBWhitePoints && !white) continue;
      s.red += static_cast<Vek32u>(r), s.green += static_cast<Vek32u>(g);
      s.blue += static_cast<Vek32u>(b), s.samples += 4;
    }
  }
  return s;
}

bool near(Vek32u ratio, int reference, int tolerance) {
  return std::abs(int64_t{static_cast<int32_t>(ratio - static_cast<Vek32u>(reference))}) <
         tolerance;
}

/// What one frame makes of the gains.
VekStatus balance(const VekiAWBParams& p, const Vek16u* src, int step, Vek16u& gainR, Vek16u& gainG,
                  Vek16u& gainB) {
  Vek32u red = 0, blue = 0, weights = 0;
  for (int i = 0; i < p.numWindows; ++i) {
    const VekiRect w = p.pWindows[i];
    const Sums s = accumulate(p, src + ptrdiff_t{w.y} * (step / 2) + w.x, step, w);
    if (p.method == vekiAWBWhitePoints && s.samples < p.minWhiteCount) continue;
    Vek32u a = 2 * s.red, b = 2 * s.blue, shift = 0;
    for (; shift < 10 && std::max(a, b) < 1u << 31; ++shift) a *= 2, b *= 2;
    const Vek32u g = a == 0 && b == 0 ? s.green : s.green >> (10 - shift);
    if (g == 0) continue;
    red += a / g * p.pWeights[i], blue += b / g * p.pWeights[i], weights += p.pWeights[i];
  }
  if (weights == 0) return vekStsAwbNoData;
  red /= weights, blue /= weights;
  if (near(red, p.refRatioR, p.holdTolR) && near(blue, p.refRatioB, p.holdTolB)) return vekStsNoErr;

  const auto over = [](Vek32u n, Vek32u d, Vek32u none) { return d == 0 ? none : n / d; };
  Vek32u target[3] = {p.defaultGainR, p.defaultGainG, p.defaultGainB};
  if (near(over(red * gainG, gainR, 0), p.refRatioR, p.validTolR) &&
      near(over(blue * gainG, gainB, 0), p.refRatioB, p.validTolB)) {
    target[0] = over(Vek32u{p.refRatioR} * gainR, red, gainR);
    target[1] = gainG;
    target[2] = over(Vek32u{p.refRatioB} * gainB, blue, gainB);
  }
  bool atLimit = false;
  Vek16u* const gains[3] = {&gainR, &gainG, &gainB};
  for (int i = 0; i < 3; ++i) {
    const int change = static_cast<Vek16u>(target[i]) - *gains[i], most = p.maxGainStep;
    *gains[i] = static_cast<Vek16u>(
        std::clamp<int>(*gains[i] + std::clamp(change, -most, most), p.gainMin, p.gainMax));
    atLimit |= *gains[i] == p.gainMin || *gains[i] == p.gainMax;
  }
  return atLimit ? vekStsAwbGainAtLimit : vekStsNoErr;
}

TEST(WhiteBalance, EqualsTheDefinition) {
  const Call define = [](const Value* v) {
    return balance(*as<const VekiAWBParams*>(v[7]), as<const Vek16u*>(v[0]), as<int>(v[1]),
                   *as<Vek16u*>(v[3]), *as<Vek16u*>(v[4]), *as<Vek16u*>(v[5]));
  };
  expectDefinition("vekiAWB_10RGGB_8u_C1R", define, 2000);
}

/// Flat windows: grey is 1024 to 1024; held within 10 and 20, valid within 2000 and 1500; gains
/// 10..4000 move by at most 50.
TEST(WhiteBalance, KnownDecisions) {
  using Gains = std::vector<Vek16u>;
  const struct {
    const char* what;
    int method, red, green, blue;
    Gains before, after;
    VekStatus status;
    int columns = 8, rows = 8, spare = 0;  ///< samples that are not wanted in white quads
  } cases[] = {
      {"held, even at a limit", 1, 512, 512, 512, {4000, 10, 10}, {4000, 10, 10}, 0},
      {"just not held", 0, 517, 512, 517, {300, 256, 300}, {297, 256, 297}, 0},
      {"reaches the maximum", 0, 256, 512, 512, {3960, 256, 400}, {4000, 256, 400}, 33},
      {"reaches the minimum", 0, 900, 512, 512, {12, 12, 400}, {10, 12, 400}, 33},
      {"not believed: to the defaults", 0, 1000, 64, 64, {200, 320, 290}, {250, 270, 300}, 0},
      {"pure green is valid, but no divisor", 0, 0, 512, 0, {320, 256, 300}, {320, 256, 300}, 0},
      {"no white point", 1, 100, 512, 512, {300, 256, 300}, {300, 256, 300}, 34, 8, 8, 60},
      {"sums above 16 bits", 1, 16700, 16700, 16700, {300, 256, 300}, {300, 256, 300}, 34},
      {"too few", 1, 512, 512, 512, {300, 256, 300}, {300, 256, 300}, 34, 8, 8, -1},
      {"almost 2^23 samples", 1, 899, 899, 899, {10, 10, 10}, {10, 10, 10}, 0, 4096, 2040},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    std::vector<uint64_t> frame(static_cast<size_t>(c.columns * c.rows / 4));
    Vek16u* const src = reinterpret_cast<Vek16u*>(frame.data());
    for (int i = 0; i < c.columns * c.rows; ++i) {
      const int x = i % 2, y = i / c.columns % 2;
      src[i] = static_cast<Vek16u>(x != y ? c.green : x == 0 ? c.red : c.blue);
    }
    const VekiRect window = {0, 0, c.columns, c.rows};
    const Vek8u weight = 1;
    const int wanted = c.columns * c.rows - c.spare;
    const VekiAWBParams p = {c.method, 1,    &window, &weight, 1024, 1024, 10,  20,
                             2000,     1500, 200,     200,     200,  50,   900, wanted,
                             50,       10,   4000,    300,     256,  300};
    VekiAWBState* state = nullptr;
    ASSERT_EQ(vekiInitAlloc_AWB_10RGGB_8u_C1R(&p, &state), vekStsNoErr);
    for (Level level : levels()) {
      const LevelScope scope(level);
      Gains g = c.before;
      EXPECT_EQ(vekiAWB_10RGGB_8u_C1R(src, 2 * c.columns, {c.columns, c.rows}, &g[0], &g[1], &g[2],
                                      state),
                c.status);
      EXPECT_EQ(g, c.after);
    }
    EXPECT_EQ(vekiFree_AWB_10RGGB_8u_C1R(state), vekStsNoErr);
  }
}

}  // namespace
}  // namespace vek::test
