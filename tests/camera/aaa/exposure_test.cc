#include "vek/camera.h"

#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>
#include <tuple>
#include <vector>

#include "camera/aaa/exposure_kernels.h"
#include "tests/support/differential.h"

namespace vek::test {
namespace {

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
