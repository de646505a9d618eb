// Row kernels of the thresholds.
#pragma once

#include "core/level.h"
#include "image/arith/pointwise.h"

namespace vek {

/// `constants` are the function's thresholds and values in the order of its arguments. `dst` may be
/// the same row as `src`.
using ThresholdRow = void (*)(const Vek8u* src, const Pattern* constants, ptrdiff_t n, Vek8u* dst);

struct ThresholdKernels {
  ThresholdRow gt;          ///< v > t ? t : v
  ThresholdRow lt;          ///< v < t ? t : v
  ThresholdRow gtVal;       ///< v > t ? value : v
  ThresholdRow ltVal;       ///< v < t ? value : v
  ThresholdRow ltValGtVal;  ///< v < tLow ? valueLow : v > tHigh ? valueHigh : v
};

VEK_KERNEL_TABLE(ThresholdKernels, thresholdKernels)

}  // namespace vek
