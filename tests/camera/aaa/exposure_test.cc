#include "vek/camera.h"

#include <climits>
#include <gtest/gtest.h>
#include <vector>

#include "camera/aaa/exposure_rows.h"
#include "tests/camera/aaa/raw_frame.h"
#include "tests/footprint/aaa.h"
#include "tests/support/differential.h"

namespace vek::test {
namespace {

Vek32u windowGreens(RawFrame& frame, const VekiRect& w) {
  Vek32u sum = 0;
  for (int y = w.y; y + 1 < w.y + w.height; y += 2) {
    for (int x = w.x; x + 1 < w.x + w.width; x += 2) sum += frame.at(x + 1, y) + frame.at(x, y + 1);
  }
  return sum;
}

std::vector<Vek32u> histogram(RawFrame& frame, VekiSize roi) {
  std::vector<Vek32u> bins(1024);
  for (int y = 0; y < roi.height; y += 2) {
    for (int x = 0; x < roi.width; x += 4) {
      ++bins[frame.at(x + 1, y) % 1024];
      ++bins[frame.at(x + 3, y) % 1024];
      ++bins[frame.at(x, y + 1) % 1024];
      ++bins[frame.at(x + 2, y + 1) % 1024];
    }
  }
  return bins;
}

TEST(Exposure, KernelsEqualTheirDefinition) {
  Random random(baseSeed());
  for (int round = 0; round < 300 && !testing::Test::HasFailure(); ++round) {
    const VekiSize size = {random.size(300), random.size(40)};
    const int step = 2 * size.width + 2 * random.in(0, 3);
    const int noise[] = {2, 30, 500, 65535};
    const Light light = {512, random.in(0, 1023), 1023, random.of(noise), random.in(0, 65535)};
    SCOPED_TRACE(testing::Message() << size.width << 'x' << size.height << ", step " << step);
    RawFrame window(footprint::exposureZones(size, step), random, light);
    RawFrame groups(footprint::exposureHistogram(size, step), random, light);
    std::vector<Vek32u> bins = histogram(groups, size);
    bins.pop_back();  // saturated samples do not count
    const Vek32u countThresh = bins[groups.at(1, 0) % 1023] + (random.chance(50) ? 1 : 0);
    Vek32u samples = 0, sum = 0;
    std::vector<int> populated;
    for (Vek32u i = 0; i < bins.size(); ++i) {
      samples += bins[i], sum += i * bins[i];
      if (bins[i] >= countThresh) populated.push_back(static_cast<int>(i));
    }
    for (Level level : levels()) {
      SCOPED_TRACE(name(level));
      const ExposureRows& rows = select(exposureRows, level);
      EXPECT_EQ(rows.wnd(window.data(), step, size.width, size.height),
                windowGreens(window, {0, 0, size.width, size.height}));
      std::vector<Vek32u> room(1024);
      const GreenHistogram greens =
          rows.hist(groups.data(), step, size.width, size.height, countThresh, room.data());
      EXPECT_EQ(greens.samples, samples);
      EXPECT_EQ(greens.sum, sum);
      EXPECT_EQ(greens.lowest, populated.empty() ? 1023 : populated.front());
      EXPECT_EQ(greens.highest, populated.empty() ? 0 : populated.back());
    }
  }
}

const VekiRect wholeWindow = {0, 0, 16, 8};
const Vek16u wholeWeight = 65535;

VekiAEParams params(Vek32s mode) {
  return {mode, &wholeWindow, &wholeWeight, 1, 1, 100, 300, 700, 512, 20, 2, 5, 1, 60000, 1, 1000};
}

/// One frame through a fresh state.
VekStatus expose(const VekiAEParams& p, const Vek16u* src, int srcStep, VekiSize roi, Vek16u* step,
                 Vek16u* scale) {
  VekiAEState* state = nullptr;
  EXPECT_EQ(vekiInitAlloc_AE_10RGGB_8u_C1R(&p, &state), vekStsNoErr);
  const VekStatus status = vekiAE_10RGGB_8u_C1R(src, srcStep, roi, step, scale, state);
  EXPECT_EQ(vekiFree_AE_10RGGB_8u_C1R(state), vekStsNoErr);
  return status;
}

/// With the brightness itself as the target and no tolerance, any other measurement is a move.
TEST(Exposure, MetersTheWindowsOfEachMode) {
  Random random(baseSeed() + 1);
  for (int round = 0; round < 400 && !testing::Test::HasFailure(); ++round) {
    VekiAEParams p = params(random.in(1, 4));
    VekiSize roi = {random.size(150), random.size(60)};
    const int w = roi.width, h = roi.height;
    const auto even = [](int v) { return v / 2 * 2; };
    const int w2 = even(w / 2), w4 = even(w / 4), w34 = even(w / 2 + w / 4);
    const int h2 = even(h / 2), h4 = even(h / 4), h34 = even(h / 2 + h / 4);
    std::vector<VekiRect> windows = {{0, 0, w, h}};
    std::vector<Vek16u> weights = {65535};
    if (p.mode == vekiAEFiveZones) {
      windows = {
          {0, 0, w, h4}, {0, h4, w4, h2}, {w34, h4, w2, h4}, {0, h34, w, h4}, {w4, h4, w2, h2}};
      weights = {0x4444, 0x2222, 0x2222, 0x4444, 0x3333};
    } else if (p.mode == vekiAECentre) {
      windows = {{even(w * 27 / 64), even(h * 27 / 64), even(w * 10 / 64), even(h * 10 / 64)}};
    } else if (p.mode == vekiAECallerWindows) {
      windows = {{2 * random.in(0, 20), 0, 2 * random.in(1, 30), 2 * random.in(1, 9)},
                 {0, 2 * random.in(0, 10), 2 * random.in(1, 30), 2 * random.in(1, 9)}};
      weights = {static_cast<Vek16u>(random.in(1, 30000)), 30000};
      p.pWindows = windows.data();
      p.pWeights = weights.data();
      p.numWindows = 2;
      const Area area = footprint::windows(p.pWindows, 2, 0);
      roi = {static_cast<int>(area.bytes / 2), static_cast<int>(area.rows)};
    }
    const int srcStep = (2 * roi.width + 3) / 4 * 4 + 4 * random.in(0, 2);
    RawFrame frame(footprint::exposureZones(roi, srcStep), random, {0, 250, 0, 600, 511});
    Vek32u sum = 32768;
    for (size_t i = 0; i < windows.size(); ++i) {
      const Vek32u quads = static_cast<Vek32u>(windows[i].width * windows[i].height / 4);
      if (quads != 0) sum += windowGreens(frame, windows[i]) / quads * weights[i];
    }
    if (sum >> 16 > 1023) continue;  // the padding that the right zone reads is brighter
    p.target = static_cast<Vek16u>(sum >> 16);
    p.tolerance = 0;
    for (Level level : levels()) {
      const LevelScope scope(level);
      Vek16u step = 10, scale = 1000;
      EXPECT_EQ(expose(p, frame.data(), srcStep, roi, &step, &scale), vekStsNoErr);
      EXPECT_EQ(scale, 1000) << "mode " << p.mode << ", " << roi.width << 'x' << roi.height;
    }
  }
}

/// Flat frames of 16 x 8.
TEST(Exposure, KnownDecisions) {
  struct Case {
    const char* what;
    int mode, sample, dark, bright, target, tolerance, step, scale;
    int newStep, newScale;
    VekStatus status;
  };
  const Case cases[] = {
      {"dark, modulo", 0, 50, 300, 700, 512, 20, 10, 40000, 10, 14464, 0},
      {"dark, scale at its limit", 0, 50, 300, 700, 512, 20, 10, 60000, 15, 60000, 32},
      {"dark, both at their limits", 0, 50, 300, 700, 512, 20, 997, 60000, 1000, 60000, 32},
      {"bright", 0, 800, 300, 700, 512, 20, 10, 1001, 10, 500, 0},
      {"bright, scale at its limit", 0, 800, 300, 700, 512, 20, 8, 1, 3, 1, 32},
      {"bright, both at their limits", 0, 800, 300, 700, 512, 20, 5, 1, 1, 1, 32},
      {"outside the band", 0, 400, 300, 700, 512, 20, 10, 1000, 10, 1280, 0},
      {"at the band's end", 0, 532, 300, 700, 512, 20, 10, 1000, 10, 962, 0},
      {"inside the band", 0, 500, 300, 700, 512, 20, 10, 1000, 10, 976, 0},
      {"clamped", 0, 310, 300, 700, 1000, 20, 10, 20000, 10, 60000, 32},
      {"all saturated is dark", 0, 1023, 300, 700, 512, 20, 10, 1000, 10, 2000, 0},
      {"all saturated, exposed", 0, 1023, 0, 1023, 512, 20, 10, 1000, 10, 1, 32},
      {"black, exposed", 0, 0, 0, 700, 512, 20, 10, 1000, 10, 60000, 32},
      {"black, as it should be", 0, 0, 0, 700, 0, 20, 10, 1000, 10, 1000, 0},
      {"greens in the band", 1, 256, 0, 0, 512, 0, 10, 1000, 10, 1000, 0},
      {"greens above it", 1, 257, 0, 0, 512, 0, 10, 1001, 10, 500, 0},
      {"lower limit below zero", 1, 1000, 0, 0, 10, 20, 10, 1000, 10, 2000, 0},
      {"a limit without a move", 1, 256, 0, 0, 512, 0, 1000, 1000, 1000, 1000, 32},
      {"centre without a quad", 3, 256, 0, 0, 0, 0, 10, 1000, 10, 1000, 0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    const std::vector<Vek32u> frame(8 * 8, static_cast<Vek32u>(c.sample) * 0x10001);
    VekiAEParams p = params(c.mode);
    p.darkThresh = static_cast<Vek16u>(c.dark);
    p.brightThresh = static_cast<Vek16u>(c.bright);
    p.target = static_cast<Vek16u>(c.target);
    p.tolerance = static_cast<Vek16u>(c.tolerance);
    Vek16u step = static_cast<Vek16u>(c.step), scale = static_cast<Vek16u>(c.scale);
    const Vek16u* const src = reinterpret_cast<const Vek16u*>(frame.data());
    EXPECT_EQ(expose(p, src, 32, {16, 8}, &step, &scale), c.status);
    EXPECT_EQ(step, c.newStep);
    EXPECT_EQ(scale, c.newScale);
  }
}

/// 32 greens of 50 and 32 of 250: their mean, 150, would scale 1000 to 3413.
TEST(Exposure, PopulatedBinsDecide) {
  std::vector<Vek16u> frame(16 * 8);
  for (size_t i = 0; i < frame.size(); ++i) frame[i] = i / 16 % 2 == 0 ? 50 : 250;
  const int cases[][3] = {{32, 201, 2000}, {32, 200, 3413}, {33, 0, 2000}};  // 33: none populated
  for (const auto& [count, spread, newScale] : cases) {
    VekiAEParams p = params(0);
    p.histCountThresh = static_cast<Vek16u>(count);
    p.histSpreadThresh = static_cast<Vek16u>(spread);
    Vek16u step = 10, scale = 1000;
    EXPECT_EQ(expose(p, frame.data(), 32, {16, 8}, &step, &scale), vekStsNoErr);
    EXPECT_EQ(scale, newScale) << count << ", " << spread;
  }
}

}  // namespace
}  // namespace vek::test
