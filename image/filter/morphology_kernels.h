// Kernels of erosion and dilation with a 3 x 3 neighbourhood.
#pragma once

#include "vek/vek.h"

#include <stddef.h>

#include "core/level.h"

namespace vek {

/// dst[x] = the extreme of the 3 x 3 samples around src[x], for n >= 1 samples of whole pixels. src
/// and dst do not overlap.
using MorphologyRow = void (*)(const Vek8u* src, ptrdiff_t srcStep, Vek8u* dst, ptrdiff_t n);

/// By the distance of horizontal neighbours: one byte or three.
struct MorphologyRows {
  MorphologyRow c1;
  MorphologyRow c3;
};

struct MorphologyKernels {
  MorphologyRows erode;   ///< the least sample
  MorphologyRows dilate;  ///< the greatest
};

VEK_KERNEL_TABLE(MorphologyKernels, morphologyKernels)

}  // namespace vek
