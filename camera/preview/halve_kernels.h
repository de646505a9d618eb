// Row kernels that make 4:2:0 of 4:2:2: two rows share one row of chroma.
#pragma once

#include "vek/vek.h"

#include <stddef.h>

#include "core/level.h"

namespace vek {

struct HalveKernels {
  /// dst[i] = (top[i] + bottom[i] + 1) >> 1 for 0 <= i < n, n >= 1. No source is the destination.
  void (*averageRows)(const Vek8u* top, const Vek8u* bottom, ptrdiff_t n, Vek8u* dst);

  /// Two rows of n pixels (n even, at least 2), which are groups Cb, Y0, Cr, Y1 of two: n samples of
  /// luma from each row, and n / 2 averages as above of either chroma.
  void (*splitRows)(const Vek8u* top, const Vek8u* bottom, ptrdiff_t n, Vek8u* topLuma,
                    Vek8u* bottomLuma, Vek8u* cb, Vek8u* cr);
};

VEK_KERNEL_TABLE(HalveKernels, halveKernels)

}  // namespace vek
