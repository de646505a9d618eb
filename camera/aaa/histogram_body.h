// The histogram of the greens as it is defined. The portable level measures whole frames with it, the
// fast ones what is left of a frame in which too much has to be counted.
#pragma once

#include <stddef.h>

#include "camera/aaa/exposure_kernels.h"
#include "core/assert.h"

namespace vek::VEK_LEVEL {
namespace {

/// ExposureKernels::measureGreens for rows before which pHist was counted: those counts help to
/// populate bins but are not part of the sums. Each green of a group has bins of its own, since
/// neighbours are often equal and an increment must not wait for the one before it. Nor may equal bins
/// be multiples of 4096 bytes apart, which processors take for the same at first.
GreenHistogram countAllGreens(const Vek16u* pSrc, int srcStep, int width, int height,
                              Vek32u countThresh, Vek32u* pHist) {
  VEK_ASSERT(width >= 1 && height >= 1 && srcStep % 2 == 0);
  constexpr Vek16u sampleBits = histogramBins - 1;
  Vek32u bins[4][histogramBins + 32] = {};
  const ptrdiff_t rowSamples = srcStep / 2;
  for (ptrdiff_t y = 0; y < height; y += 2) {
    const Vek16u* top = pSrc + y * rowSamples;
    const Vek16u* bottom = top + rowSamples;
    for (ptrdiff_t x = 0; x < width; x += 4) {
      ++bins[0][top[x + 1] & sampleBits];
      ++bins[1][top[x + 3] & sampleBits];
      ++bins[2][bottom[x] & sampleBits];
      ++bins[3][bottom[x + 2] & sampleBits];
    }
  }
  GreenHistogram greens = {0, 0, saturatedSample, 0};
  for (Vek32s i = 0; i < saturatedSample; ++i) {
    const Vek32u count = bins[0][i] + bins[1][i] + bins[2][i] + bins[3][i];
    greens.samples += count;
    greens.sum += static_cast<Vek32u>(i) * count;
    pHist[i] += count;
    if (pHist[i] >= countThresh) {
      greens.highest = i;
      greens.lowest = greens.lowest < i ? greens.lowest : i;
    }
  }
  return greens;
}

}  // namespace
}  // namespace vek::VEK_LEVEL
