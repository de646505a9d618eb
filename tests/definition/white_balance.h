// What automatic white balance makes of its gains.
#pragma once

#include "vek/camera.h"

#include <algorithm>
#include <cstdlib>

namespace vek::test::definition {

struct Sums {
  Vek32u red = 0, green = 0, blue = 0;
  int samples = 0;  ///< of the quads that count
};

inline Sums accumulate(const VekiAWBParams& p, const Vek16u* window, int step, VekiRect w) {
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

inline bool near(Vek32u ratio, int reference, int tolerance) {
  return std::abs(int64_t{static_cast<int32_t>(ratio - static_cast<Vek32u>(reference))}) <
         tolerance;
}

/// What one frame makes of the gains.
inline VekStatus balance(const VekiAWBParams& p, const Vek16u* src, int step, Vek16u& gainR,
                         Vek16u& gainG, Vek16u& gainB) {
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

}  // namespace vek::test::definition
