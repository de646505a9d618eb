#include "vek/camera.h"

#include <climits>
#include <gtest/gtest.h>
#include <vector>

#include "camera/aaa/white_balance_rows.h"
#include "tests/camera/aaa/raw_frame.h"
#include "tests/footprint/aaa.h"
#include "tests/support/differential.h"

namespace vek::test {
namespace {

struct Sums {
  Vek32u red, green, blue, count;
  bool operator==(const Sums&) const = default;
};

/// Of the white points, or without limits of all quads.
Sums accumulate(RawFrame& frame, const VekiRect& w, const WhitePointLimits* l) {
  Sums s = {};
  for (int y = w.y; y < w.y + w.height; y += 2) {
    for (int x = w.x; x < w.x + w.width; x += 2) {
      const Vek32u red = frame.at(x, y), blue = frame.at(x + 1, y + 1);
      const Vek32u green = frame.at(x + 1, y) + frame.at(x, y + 1);
      const int r = static_cast<int>(red), b = static_cast<int>(blue), g = static_cast<int>(green);
      if (l == nullptr ||
          (std::abs(r - (g + 1) / 2) < l->redLimit && std::abs(b - (g + 1) / 2) < l->blueLimit &&
           std::abs(g - (r + b)) < l->greenLimit && r + g + b > l->low4 && r + g + b < l->high4)) {
        s = {s.red + red, s.green + green, s.blue + blue, s.count + 4};
      }
    }
  }
  return s;
}

void compareKernels(RawFrame& frame, int step, VekiSize size, const WhitePointLimits& limits) {
  const VekiRect window = {0, 0, size.width, size.height};
  const Sums all = accumulate(frame, window, nullptr), white = accumulate(frame, window, &limits);
  for (Level level : levels()) {
    SCOPED_TRACE(name(level));
    const WhiteBalanceRows& rows = select(whiteBalanceRows, level);
    const ColourSums wga = rows.wga(frame.data(), step, size.width, size.height);
    EXPECT_EQ((Sums{wga.red, wga.green, wga.blue, all.count}), all);
    Vek32u count = 1;
    const ColourSums wpd = rows.wpd(frame.data(), step, size.width, size.height, limits, &count);
    EXPECT_EQ((Sums{wpd.red, wpd.green, wpd.blue, count}), white);
  }
}

TEST(WhiteBalance, KernelsEqualTheirDefinition) {
  Random random(baseSeed());
  for (int round = 0; round < 400 && !testing::Test::HasFailure(); ++round) {
    const VekiSize size = {(random.size(300) + 3) / 4 * 4, (random.size(40) + 7) / 8 * 8};
    const int step = 2 * size.width + 8 * random.in(0, 2);
    SCOPED_TRACE(testing::Message() << size.width << 'x' << size.height << ", round " << round);
    // Small samples and limits make ties; the whole 16-bit range must neither wrap nor count.
    const int most = random.chance(30) ? 10 : random.chance(50) ? 1023 : 65535;
    const bool wraps = most == 65535 && random.chance(50);  // four samples just above 2^16
    const int level = wraps ? 16384 * random.in(1, 3) + random.in(0, 200) : random.in(0, most);
    const int noise = random.in(0, wraps ? 20 : most), low = random.in(1, std::min(1022, most));
    const auto limit = [&](int top) {
      return static_cast<Vek16u>(random.in(1, std::min(top, most)));
    };
    const WhitePointLimits limits = {limit(1023), limit(1023), limit(2047), Vek16u(4 * low),
                                     Vek16u(4 * random.in(low + 1, 1023))};
    RawFrame frame({2 * size.width, size.height, step}, random, {level, level, level, noise, most});
    compareKernels(frame, step, size, limits);
  }
}

const VekiRect wholeWindow = {0, 0, 8, 8};
const Vek8u wholeWeight = 1;

struct Gains {
  Vek16u red, green, blue;
  bool operator==(const Gains&) const = default;
};

/// Grey is 1024 to 1024; held within 10 and 20, valid within 2000 and 1500; gains 10..4000 move by
/// at most 50.
VekiAWBParams params(Vek32s method) {
  return {method, 1,   &wholeWindow, &wholeWeight, 1024, 1024, 10, 20,   2000, 1500, 200,
          200,    200, 50,           900,          64,   50,   10, 4000, 300,  256,  300};
}

/// One frame through a fresh state.
VekStatus balance(const VekiAWBParams& p, const Vek16u* src, int srcStep, VekiSize roi,
                  Gains& gains) {
  VekiAWBState* state = nullptr;
  EXPECT_EQ(vekiInitAlloc_AWB_10RGGB_8u_C1R(&p, &state), vekStsNoErr);
  const VekStatus status =
      vekiAWB_10RGGB_8u_C1R(src, srcStep, roi, &gains.red, &gains.green, &gains.blue, state);
  EXPECT_EQ(vekiFree_AWB_10RGGB_8u_C1R(state), vekStsNoErr);
  return status;
}

/// Just below 2^23 samples, and samples whose sums pass 2^32.
TEST(WhiteBalance, LargeWindows) {
  Random random(baseSeed() + 1);
  const VekiRect window = {0, 0, 4096, 2040};
  for (int sample : {1023, 65535}) {
    RawFrame frame({8192, window.height, 8192}, random, {sample, sample, sample, 0, sample});
    compareKernels(frame, 8192, {window.width, window.height}, {1023, 1023, 2047, 4, 4092});
    if (sample != 1023) continue;
    VekiAWBParams p = params(0);
    p.pWindows = &window;
    p.holdTolR = p.holdTolB = 1;
    Gains gains = {10, 10, 10};
    EXPECT_EQ(balance(p, frame.data(), 8192, {window.width, window.height}, gains), vekStsNoErr);
    EXPECT_EQ(gains, (Gains{10, 10, 10}));
  }
}

/// With the frame's ratios as the references and a tolerance of 1, only they are held.
TEST(WhiteBalance, MeasuresTheWeightedRatios) {
  Random random(baseSeed() + 2);
  for (int round = 0; round < 400 && !testing::Test::HasFailure(); ++round) {
    VekiRect windows[3];
    Vek8u weights[3];
    VekiAWBParams p = params(random.in(0, 1));
    p.pWindows = windows;
    p.pWeights = weights;
    p.numWindows = random.in(1, 3);
    p.minWhiteCount = random.in(-10, 100);
    p.holdTolR = p.holdTolB = 1;
    for (int i = 0; i < p.numWindows; ++i) {
      windows[i] = {4 * random.in(0, 5), 8 * random.in(0, 2), 4 * random.size(32),
                    8 * random.in(1, 8)};
      weights[i] = static_cast<Vek8u>(random.in(1, 255));
    }
    const int srcStep = 296 + 8 * random.in(0, 2);
    const int green = random.in(0, random.chance(30) ? 5 : 900);
    const Area area = footprint::windows(windows, p.numWindows, srcStep);
    RawFrame frame(area, random,
                   {green * random.in(0, 12) / 10, green, green, random.in(0, green / 4 + 1)});

    const WhitePointLimits limits = {p.wpdLimit1, p.wpdLimit2, p.wpdLimit3, Vek16u(4 * p.wpdLow),
                                     Vek16u(4 * p.wpdHigh)};
    Vek32u red = 0, blue = 0, weight = 0;
    for (int i = 0; i < p.numWindows; ++i) {
      const Sums s = accumulate(frame, windows[i], p.method == 1 ? &limits : nullptr);
      if (p.method == 1 && static_cast<int>(s.count) < p.minWhiteCount) continue;
      Vek32u a = 2 * s.red, b = 2 * s.blue, shift = 0;
      for (; shift < 10 && std::max(a, b) < 1u << 31; ++shift) a *= 2, b *= 2;
      const Vek32u g = a == 0 && b == 0 ? s.green : s.green >> (10 - shift);
      if (g == 0) continue;
      red += a / g * weights[i];
      blue += b / g * weights[i];
      weight += weights[i];
    }
    if (weight != 0 && std::max(red, blue) / weight > 65535) continue;
    if (weight != 0) p.refRatioR = static_cast<Vek16u>(red / weight);
    if (weight != 0) p.refRatioB = static_cast<Vek16u>(blue / weight);
    for (Level level : levels()) {
      const LevelScope scope(level);
      const Gains before = {300, 256, 300};
      Gains gains = before;
      const VekiSize roi = {static_cast<int>(area.bytes / 2), static_cast<int>(area.rows)};
      EXPECT_EQ(balance(p, frame.data(), srcStep, roi, gains), weight == 0 ? vekStsAwbNoData : 0)
          << "round " << round;
      EXPECT_EQ(gains, before) << "round " << round;
    }
  }
}

/// Flat quads of 8 x 8.
TEST(WhiteBalance, KnownDecisions) {
  struct Case {
    const char* what;
    int method;
    Light light;
    Gains before, after;
    VekStatus status;
  };
  const Case cases[] = {
      {"held, even at a limit", 1, {512, 512, 512}, {4000, 10, 10}, {4000, 10, 10}, 0},
      {"red is not held", 0, {519, 512, 519}, {300, 256, 300}, {295, 256, 295}, 0},
      {"blue is held", 0, {512, 512, 519}, {300, 256, 300}, {300, 256, 300}, 0},
      {"blue is not believed", 0, {128, 128, 337}, {256, 256, 256}, {300, 256, 300}, 0},
      {"red is believed", 0, {337, 128, 128}, {256, 256, 256}, {206, 256, 256}, 0},
      {"a step towards the targets", 0, {256, 512, 500}, {300, 256, 400}, {350, 256, 409}, 0},
      {"a step downwards", 0, {512, 400, 440}, {300, 256, 400}, {250, 256, 363}, 0},
      {"reaches the maximum", 0, {256, 512, 512}, {3960, 256, 400}, {4000, 256, 400}, 33},
      {"reaches the minimum", 0, {900, 512, 512}, {12, 12, 400}, {10, 12, 400}, 33},
      {"not believed: to the defaults", 0, {1000, 64, 64}, {200, 320, 290}, {250, 270, 300}, 0},
      {"corrected for the gains", 0, {512, 128, 128}, {400, 100, 100}, {350, 100, 100}, 0},
      {"pure green is valid, but no divisor", 0, {0, 512, 0}, {320, 256, 300}, {320, 256, 300}, 0},
      {"no green", 0, {512, 0, 512}, {300, 256, 300}, {300, 256, 300}, 34},
      {"no white point", 1, {100, 512, 512}, {300, 256, 300}, {300, 256, 300}, 34},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    Random random(1);
    RawFrame frame({16, 8, 16}, random, c.light);
    Gains gains = c.before;
    EXPECT_EQ(balance(params(c.method), frame.data(), 16, {8, 8}, gains), c.status);
    EXPECT_EQ(gains, c.after);
    VekiAWBParams fussy = params(1);  // 16 white quads have 64 samples
    fussy.minWhiteCount = 65;
    gains = {300, 256, 300};
    EXPECT_EQ(balance(fussy, frame.data(), 16, {8, 8}, gains), vekStsAwbNoData);
  }
}

}  // namespace
}  // namespace vek::test
