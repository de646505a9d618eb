// Kernels that accumulate norms over a region.
#pragma once

#include "vek/vek.h"

#include <stddef.h>
#include <stdint.h>

#include "core/level.h"

namespace vek {

/// `rows` rows of `rowBytes` bytes, a whole number of pixels. `b` is used by the difference
/// kernels alone.
struct NormRegion {
  const Vek8u* a;
  ptrdiff_t aStep;
  const Vek8u* b;
  ptrdiff_t bStep;
  ptrdiff_t rowBytes;
  ptrdiff_t rows;
};

/// Takes the samples v = a, or v = |a - b|, of each channel c into totals[c].
using NormKernel = void (*)(const NormRegion& region, uint64_t* totals);

struct MeasureKernels {
  NormKernel c1;
  NormKernel c3;

  NormKernel of(int channels) const { return channels == 1 ? c1 : c3; }
};

struct NormKernels {
  MeasureKernels inf, diffInf;  ///< the largest of the total and all v
  MeasureKernels l1, diffL1;    ///< adds the sum of v; the low 32 bits count
  MeasureKernels l2, diffL2;    ///< adds the sum of v * v
};

VEK_KERNEL_TABLE(NormKernels, normKernels)

}  // namespace vek
