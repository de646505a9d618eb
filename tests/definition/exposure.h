// What automatic exposure makes of its control values.
#pragma once

#include "vek/camera.h"

#include <algorithm>
#include <cstdlib>
#include <vector>

namespace vek::test::definition {

/// What one frame makes of the control values.
inline VekStatus expose(const VekiAEParams& p, const Vek16u* src, int srcStep, VekiSize roi,
                        Vek16u& step, Vek16u& scale) {
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

}  // namespace vek::test::definition
