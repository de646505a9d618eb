// Row kernels of the bitwise logic.
#pragma once

#include "core/level.h"
#include "image/arith/pointwise.h"

namespace vek {

/// a & b, a | b, a ^ b; `b` is a row of the second image, or a Pattern in the C kernels.
struct LogicKernels {
  PointwiseRow andImage, andC;
  PointwiseRow orImage, orC;
  PointwiseRow xorImage, xorC;
};

VEK_KERNEL_TABLE(LogicKernels, logicKernels)

}  // namespace vek
