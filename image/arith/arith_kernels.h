// Row kernels of the arithmetic with a scale factor.
#pragma once

#include "vek/vek.h"

#include <stddef.h>

#include "core/level.h"
#include "image/arith/pointwise.h"

namespace vek {

/// As PointwiseRow, with the number of bits that the exact value is shifted by.
using ScaledRow = void (*)(const Vek8u* a, const Vek8u* b, ptrdiff_t n, int shift, Vek8u* dst);

/// From the exact value e: (e + 2^(shift - 1)) >> shift with a shift of 1..16; e; e << shift with a
/// shift of 1..8. Each saturates to 255.
struct ScaledRows {
  ScaledRow shiftRight;
  ScaledRow plain;
  ScaledRow shiftLeft;
};

/// `b` is a row of the second image in add, sub, mul, mulScale, and a Pattern in the others. The
/// exact values are a + b; a - b, 0 if negative; a * b. mulScale is (p + (p >> 8) + 1) >> 8 of the
/// product.
struct ArithKernels {
  ScaledRows add, addC;
  ScaledRows sub, subC;
  ScaledRows mul, mulC;
  PointwiseRow mulScale, mulScaleC;
};

VEK_KERNEL_TABLE(ArithKernels, arithKernels)

}  // namespace vek
