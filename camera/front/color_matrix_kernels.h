// The row kernel of the colour matrix of raw frames.
#pragma once

#include "vek/vek.h"

#include <stddef.h>

#include "core/level.h"

namespace vek {

/// What a row's samples and the sums of their neighbours are multiplied by, in 1/4096 / 4. Samples belong
/// to two colours alternately, of which each has its own weights; the first ones are those of the row's
/// first sample. Weights are at most 2 * 16383 in magnitude, those of a colour together at most
/// 4 * 16383.
struct ColorMatrixWeights {
  Vek16s own[2];       ///< of four times the sample
  Vek16s beside[2];    ///< of the two samples to its left and right
  Vek16s vertical[2];  ///< of the two samples above and below it
  Vek16s diagonal[2];  ///< of the four samples at its corners
};

struct ColorMatrixKernels {
  /// For 0 <= i < n and c = i % 2, with samples of up to 1023, 0 <= dst[i] <= 1023 is
  ///
  ///   (own[c] * 4 at[i] + beside[c] * (at[i-1] + at[i+1]) + vertical[c] * (up[i] + down[i]) +
  ///    diagonal[c] * (up[i-1] + up[i+1] + down[i-1] + down[i+1]) + 2^13) >> 14, clamped.
  ///
  /// n >= 1; samples -1 to n of the three rows are read. dst overlaps none of them.
  void (*row)(const Vek16u* up, const Vek16u* at, const Vek16u* down, Vek16u* dst, ptrdiff_t n,
              const ColorMatrixWeights& weights);
};

VEK_KERNEL_TABLE(ColorMatrixKernels, colorMatrixKernels)

}  // namespace vek
