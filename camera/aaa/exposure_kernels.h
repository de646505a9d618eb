// Kernels that measure the green samples of raw frames.
#pragma once

#include "vek/vek.h"

#include "core/level.h"

namespace vek {

inline constexpr int histogramBins = 1024;
inline constexpr Vek32s saturatedSample = histogramBins - 1;

/// What the histogram of the greens tells, saturated samples left out.
struct GreenHistogram {
  Vek32u samples, sum;     ///< modulo 2^32
  Vek32s lowest, highest;  ///< populated bins; 1023 and 0 when there is none
};

struct ExposureKernels {
  /// Measures the greens of every group of four columns and two rows by their low 10 bits; a bin
  /// that holds at least countThresh of them is populated.
  ///
  /// @quirk The width is rounded up to a multiple of 4 and the height to a multiple of 2, so samples
  /// beyond the region are counted: callers' thresholds are tuned to whole groups. In the lower row
  /// of a group the fourth sample is not read.
  ///
  /// The size is at least 1 x 1 and srcStep is even. pHist has 1024 bins to count in, all zero;
  /// their contents afterwards differ between levels.
  GreenHistogram (*measureGreens)(const Vek16u* pSrc, int srcStep, int width, int height,
                                  Vek32u countThresh, Vek32u* pHist);

  /// The sum modulo 2^32 of both greens of every whole quad of a window. srcStep is even.
  Vek32u (*sumGreens)(const Vek16u* pWin, int srcStep, int w, int h);
};

VEK_KERNEL_TABLE(ExposureKernels, exposureKernels)

}  // namespace vek
