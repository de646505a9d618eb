// Kernels that accumulate the colours of a window of a raw frame.
#pragma once

#include "vek/vek.h"

#include "core/level.h"

namespace vek {

/// Sums modulo 2^32; green holds both greens.
struct ColorSums {
  Vek32u red;
  Vek32u green;
  Vek32u blue;
};

/// With gs the sum of both greens and ga = (gs + 1) >> 1, a quad is a white point if
/// |red - ga| < redLimit, |blue - ga| < blueLimit, |gs - (red + blue)| < greenLimit and
/// 4 * low < gs + red + blue < 4 * high.
struct WhitePointLimits {
  Vek16u redLimit;    ///< 1..1023
  Vek16u blueLimit;   ///< 1..1023
  Vek16u greenLimit;  ///< 1..2047
  Vek16u low4;        ///< 4 * low, at least 4
  Vek16u high4;       ///< 4 * high, at most 4092
};

/// A window's width and height are even, and so is srcStep.
struct WhiteBalanceKernels {
  /// The sums over all quads: the grey-world measurement.
  ColorSums (*sumAll)(const Vek16u* pWin, int srcStep, int w, int h);

  /// The sums over the white points alone; *pCount is the number of samples in them.
  ColorSums (*sumWhitePoints)(const Vek16u* pWin, int srcStep, int w, int h,
                              const WhitePointLimits& limits, Vek32u* pCount);
};

VEK_KERNEL_TABLE(WhiteBalanceKernels, whiteBalanceKernels)

}  // namespace vek
