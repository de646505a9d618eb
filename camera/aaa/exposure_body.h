// The plain loops behind ExposureRows.
#pragma once

#include "camera/aaa/exposure_rows.h"
#include "camera/aaa/quads_body.h"

namespace vek::VEK_LEVEL {
namespace {

/// Each green of a group has bins of its own: neighbours are often equal, and an increment must not
/// wait for the one before it.
GreenHistogram _vekiAEHist_10RGGB(const Vek16u* pSrc, int srcStep, int width, int height,
                                  Vek32u countThresh, Vek32u* pHist) {
  constexpr Vek16u sampleBits = histogramBins - 1;
  Vek32u more[3][histogramBins] = {};
  const ptrdiff_t rowSamples = srcStep / 2;
  for (ptrdiff_t y = 0; y < height; y += 2) {
    const Vek16u* top = pSrc + y * rowSamples;
    const Vek16u* bottom = top + rowSamples;
    for (ptrdiff_t x = 0; x < width; x += 4) {
      const int bins[4] = {top[x + 1] & sampleBits, top[x + 3] & sampleBits, bottom[x] & sampleBits,
                           bottom[x + 2] & sampleBits};
      ++pHist[bins[0]];
      ++more[0][bins[1]];
      ++more[1][bins[2]];
      ++more[2][bins[3]];
    }
  }
  GreenHistogram greens = {0, 0, saturatedSample, 0};
  for (Vek32s i = 0; i < saturatedSample; ++i) {
    const Vek32u count = pHist[i] + more[0][i] + more[1][i] + more[2][i];
    greens.samples += count;
    greens.sum += static_cast<Vek32u>(i) * count;
    if (count >= countThresh) {
      greens.highest = i;
      greens.lowest = greens.lowest < i ? greens.lowest : i;
    }
  }
  return greens;
}

Vek32u _vekiAEWnd_10RGGB(const Vek16u* pWin, int srcStep, int w, int h) {
  Vek32u sum = 0;
  forEachQuad(pWin, srcStep, w, h,
              [&](Vek32u, Vek32u green1, Vek32u green2, Vek32u) { sum += green1 + green2; });
  return sum;
}

}  // namespace
}  // namespace vek::VEK_LEVEL
