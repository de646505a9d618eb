#include "vek/camera.h"

#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>
#include <tuple>
#include <vector>

#include "camera/aaa/exposure_kernels.h"
#include "tests/campaign/definition.h"
#include "tests/support/levels.h"

namespace vek::test {
namespace {

/// What one frame makes of the control values.
VekStatus expose(const VekiAEParams& p, const Vek16u* src, int srcStep, VekiSize roi, Vek16u& step,
                 Vek16u& scale) {
  const auto brighter = [&] {
    const int next = scale < p.scaleMax ? step : std::min(step + p.stepSize, p.stepMax);
    if (scale < p.scaleMax) scale = static_cast<Vek16u>(Vek32u{scale} * p.scaleMultiplier);
    step = static_cast<Vek16u>(next);
  };
  const auto darker = [&] {
    const int next = scale > p.scaleMin ? step : std::max(step - p.stepSize, p.stepMin);
    if (scale > p.scaleMin) scale = static_cast<Vek16u>(scale / p.scaleMultiplier);
    step = static_cast<Vek16u>(next);
  };
  const auto scaleBy = [&](Vek32u numerator, Vek32u denominator) {
    const int quotient = static_cast<Vek16u>(numerator * scale / denominator);
    scale = static_cast<Vek16u>(std::clamp(quotient, p.scaleMin, p.scaleMax));
  };
  const auto at = [&](int x, int y) -> Vek32u { return src[ptrdiff_t{y} * (srcStep / 2) + x]; };
  const int w = roi.width, h = roi.height;

  if (p.mode == vekiAEHistogram) {
    Vek32u bins[1024] = {}, count = 0, sum = 0;
    for (int y = 0; y < (h + 1) / 2 * 2; ++y) {
      for (int x = 1 - y % 2; x < (w + 3) / 4 * 4; x += 2) ++bins[at(x, y) % 1024];
    }
    int low = 1023, high = 0;
    for (int i = 1022; i >= 0; --i) {
      count += bins[i], sum += static_cast<Vek32u>(i) * bins[i];
      if (bins[i] >= p.histCountThresh) low = i, high = std::max(high, i);
    }
    const int mean = count == 0 ? 0 : static_cast<int>(sum / count), target = p.target;
    if (high < p.darkThresh && high - low < p.histSpreadThresh) {
      brighter();
    } else if (low > p.brightThresh) {
      darker();
    } else if (const bool inside = std::abs(mean - target) < p.tolerance; inside || mean != 0) {
      const auto m = static_cast<Vek32u>(mean), t = static_cast<Vek32u>(target);
      if (!inside) scaleBy(t, m);
      if (inside && target != 0) scaleBy(m, t);
    } else {
      scale = static_cast<Vek16u>(count == 0 ? p.scaleMin : p.scaleMax);
    }
  } else {
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
      windows.assign(p.pWindows, p.pWindows + p.numWindows);
      weights.assign(p.pWeights, p.pWeights + p.numWindows);
    }
    Vek32u brightness = 32768;
    for (size_t i = 0; i < windows.size(); ++i) {
      const VekiRect& z = windows[i];
      Vek32u sum = 0;
      const auto quads = static_cast<Vek32u>(z.width * z.height / 4);
      for (int y = z.y; y + 1 < z.y + z.height; y += 2) {
        for (int x = z.x; x + 1 < z.x + z.width; x += 2) sum += at(x + 1, y) + at(x, y + 1);
      }
      if (quads != 0) brightness += sum / quads * weights[i];
    }
    if (brightness >> 16 < static_cast<Vek16u>(p.target - p.tolerance)) {
      brighter();
    } else if (brightness >> 16 > Vek32u{p.target} + p.tolerance) {
      darker();
    }
  }
  const bool atLimit =
      step == p.stepMin || step == p.stepMax || scale == p.scaleMin || scale == p.scaleMax;
  return atLimit ? vekStsAeAtLimit : vekStsNoErr;
}

TEST(Exposure, EqualsTheDefinition) {
  const Call define = [](const Value* v) {
    return expose(*as<const VekiAEParams*>(v[6]), as<const Vek16u*>(v[0]), as<int>(v[1]),
                  as<VekiSize>(v[2]), *as<Vek16u*>(v[3]), *as<Vek16u*>(v[4]));
  };
  expectDefinition("vekiAE_10RGGB_8u_C1R", define, 2000);
}

/// Frames in which more samples have to be counted than the fast levels care for one by one.
TEST(Exposure, LevelsMeasureTheSame) {
  Random random(baseSeed());
  const VekiSize size = {318, 170};
  std::vector<Vek16u> frame(320 * 170);
  const int ends[] = {100, 900, 1023};
  for (Vek32u countThresh : {0u, 1u, 20u, 100u, 65535u}) {
    for (size_t i = 0; i < frame.size(); ++i) {  // darker and brighter at the end
      const int sample = i < 124 * 320 ? random.in(300, 700) : random.of(ends);
      frame[i] = static_cast<Vek16u>(sample);
    }
    const auto measured = [&](Level level) {
      std::vector<Vek32u> bins(histogramBins);
      const GreenHistogram greens =
          select(exposureKernels, level)
              .measureGreens(frame.data(), 640, size.width, size.height, countThresh, bins.data());
      return std::tuple(greens.samples, greens.sum, greens.lowest, greens.highest);
    };
    for (Level level : levels()) {
      EXPECT_EQ(measured(level), measured(Level::portable)) << name(level) << ' ' << countThresh;
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
      {"dark, both at their limits", 0, 50, 300, 700, 512, 20, 997, 60000, 1000, 60000, 32},
      {"at the band's end", 0, 532, 300, 700, 512, 20, 10, 1000, 10, 962, 0},
      {"inside the band", 0, 500, 300, 700, 512, 20, 10, 1000, 10, 976, 0},
      {"all saturated, exposed", 0, 1023, 0, 1023, 512, 20, 10, 1000, 10, 1, 32},
      {"black, exposed", 0, 0, 0, 700, 512, 20, 10, 1000, 10, 60000, 32},
      {"black, as it should be", 0, 0, 0, 700, 0, 20, 10, 1000, 10, 1000, 0},
      {"lower limit below zero", 1, 1000, 0, 0, 10, 20, 10, 1000, 10, 2000, 0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    const std::vector<Vek32u> frame(8 * 8, static_cast<Vek32u>(c.sample) * 0x10001);
    const VekiAEParams p = {c.mode,
                            nullptr,
                            nullptr,
                            0,
                            1,
                            100,
                            Vek16u(c.dark),
                            Vek16u(c.bright),
                            Vek16u(c.target),
                            Vek16u(c.tolerance),
                            2,
                            5,
                            1,
                            60000,
                            1,
                            1000};
    VekiAEState* state = nullptr;
    ASSERT_EQ(vekiInitAlloc_AE_10RGGB_8u_C1R(&p, &state), vekStsNoErr);
    const Vek16u* const src = reinterpret_cast<const Vek16u*>(frame.data());
    Vek16u step = 10, scale = 1000;  // another region before
    EXPECT_GE(vekiAE_10RGGB_8u_C1R(src, 32, {12, 6}, &step, &scale, state), 0);
    step = static_cast<Vek16u>(c.step), scale = static_cast<Vek16u>(c.scale);
    EXPECT_EQ(vekiAE_10RGGB_8u_C1R(src, 32, {16, 8}, &step, &scale, state), c.status);
    EXPECT_EQ(step, c.newStep);
    EXPECT_EQ(scale, c.newScale);
    EXPECT_EQ(vekiFree_AE_10RGGB_8u_C1R(state), vekStsNoErr);
  }
}

}  // namespace
}  // namespace vek::test
