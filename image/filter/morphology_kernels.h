// Kernels of erosion and dilation with a 3 x 3 neighbourhood.
#pragma once

#include "vek/vek.h"

#include <stddef.h>

#include "core/level.h"

namespace vek {

/// dst[x] = extreme of the 3 x 3 samples around src[x], for n samples of whole pixels; horizontal
/// neighbours are one (C1) or three (C3) bytes apart.
using MorphologyRow = void (*)(const Vek8u* src, ptrdiff_t srcStep, Vek8u* dst, ptrdiff_t n);

struct MorphologyKernels {
  MorphologyRow Erode3x3_8u_C1S;
  MorphologyRow Erode3x3_8u_C3S;
  MorphologyRow Dilate3x3_8u_C1S;
  MorphologyRow Dilate3x3_8u_C3S;
};

VEK_KERNEL_TABLE(MorphologyKernels, morphologyKernels)

}  // namespace vek
