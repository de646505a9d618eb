// The histogram of the greens as it is defined, and how vectors do with a part of it: levels have their
// own way to find the samples that must be counted.
#pragma once

#include <stddef.h>
#include <stdint.h>

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

/// Whether the fullest bin of `counted` row pairs would reach the threshold with `most` of them.
inline bool isPopulatedSoon(const Vek32u* hist, Vek32u countThresh, ptrdiff_t counted,
                            ptrdiff_t most) {
  Vek32u fullest = 0;
  for (int i = 0; i < saturatedSample; ++i) fullest = fullest > hist[i] ? fullest : hist[i];
  return uint64_t{fullest} * static_cast<uint64_t>(most) >=
         uint64_t{countThresh} * static_cast<uint64_t>(counted);
}

/// Rows of groups of four columns.
struct GreenRows {
  const Vek16u* data;
  ptrdiff_t step;            ///< in samples
  ptrdiff_t columns, pairs;  ///< pairs of rows
};

/// Only the lowest and the highest populated bin are wanted. The first rows are counted in a plain
/// histogram until a bin is populated; if the fullest one tells that none will be, so is everything.
/// From then on a sample is counted only if it lies outside of the populated bins, in most frames next
/// to none. One that is takes longer than in a plain histogram, which measures the rest of a frame in
/// which they do not become few.
///
/// measureOutside(rows, y, most, countThresh, pHist, greens) measures rows from pair y on, until all are or
/// more than `most` samples had to be counted, and returns the first pair that is left. Samples between
/// bins that are already known to be populated need not be counted, nor saturated ones.
template <class MeasureOutside>
GreenHistogram measureGreensBy(MeasureOutside measureOutside, const Vek16u* pSrc, int srcStep,
                               int width, int height, Vek32u countThresh, Vek32u* pHist) {
  VEK_ASSERT(width >= 1 && height >= 1 && srcStep % 2 == 0);
  const GreenRows rows = {.data = pSrc,
                          .step = srcStep / 2,
                          .columns = (ptrdiff_t{width} + 3) / 4 * 4,
                          .pairs = (ptrdiff_t{height} + 1) / 2};
  GreenHistogram greens = {0, 0, saturatedSample, 0};
  ptrdiff_t y = 0;
  const auto countPlainly = [&](ptrdiff_t pairs) {
    const ptrdiff_t wanted = 2 * pairs, left = height - 2 * y;
    const GreenHistogram part =
        countAllGreens(pSrc + 2 * y * rows.step, srcStep, width,
                       static_cast<int>(wanted < left ? wanted : left), countThresh, pHist);
    greens.samples += part.samples;
    greens.sum += part.sum;
    greens.lowest = greens.lowest < part.lowest ? greens.lowest : part.lowest;
    greens.highest = greens.highest > part.highest ? greens.highest : part.highest;
    y += pairs;
  };
  const ptrdiff_t few = 8192 / rows.columns + rows.pairs / 128 + 1;  // then twice as many
  for (ptrdiff_t pairs = few; y < rows.pairs && greens.lowest > greens.highest; pairs = y) {
    const bool isFutile = y > 0 && !isPopulatedSoon(pHist, countThresh, y, rows.pairs);
    countPlainly(isFutile ? rows.pairs - y : pairs);
  }
  const ptrdiff_t mostCounted = rows.columns * rows.pairs / 8 + 16384;
  if (y < rows.pairs) y = measureOutside(rows, y, mostCounted, countThresh, pHist, greens);
  if (y < rows.pairs) countPlainly(rows.pairs - y);
  return greens;
}

}  // namespace
}  // namespace vek::VEK_LEVEL
