// Row kernels of the shifts by constants.
#pragma once

#include "vek/vek.h"

#include <stddef.h>

#include "core/level.h"
#include "image/arith/pointwise.h"

namespace vek {

/// Logical shift of n >= 1 samples by `amount`, 0..7. `dst` may be the same row as `src`.
using ShiftRow = void (*)(const Vek8u* src, ptrdiff_t n, int amount, Vek8u* dst);

/// The C3 kernels multiply by a Pattern of factors, since no vector has a shift of each byte by an
/// amount of its own: to the right by 2^(7 - amount), of which the product's upper bits count (v * f
/// >> 7), to the left by 2^amount, of which the low byte counts. The factor 0 leaves 0.
struct ShiftKernels {
  ShiftRow right, left;
  PointwiseRow rightC3, leftC3;
};

VEK_KERNEL_TABLE(ShiftKernels, shiftKernels)

}  // namespace vek
