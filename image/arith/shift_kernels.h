// Row kernels of the shifts by constants.
#pragma once

#include "vek/vek.h"

#include <stddef.h>

#include "core/level.h"
#include "image/arith/pointwise.h"

namespace vek {

/// Logical shift of n >= 1 samples by `amount`, 0..7. `dst` may be the same row as `src`.
using ShiftRow = void (*)(const Vek8u* src, ptrdiff_t n, int amount, Vek8u* dst);

/// The C3 kernels shift by a Pattern of amounts 0..8; 8 leaves 0.
struct ShiftKernels {
  ShiftRow right, left;
  PointwiseRow rightC3, leftC3;
};

VEK_KERNEL_TABLE(ShiftKernels, shiftKernels)

}  // namespace vek
