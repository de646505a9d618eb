// Row kernels of the arithmetic with a scale factor.
#pragma once

#include "vek/vek.h"

#include <stddef.h>

#include "core/level.h"
#include "image/arith/pointwise.h"

namespace vek {

/// As PointwiseRow, with the number of bits that the exact value is shifted by.
using ScaledRow = void (*)(const Vek8u* a, const Vek8u* b, ptrdiff_t n, int shift, Vek8u* dst);

/// What becomes of the exact value e. Each kernel saturates to 255.
struct ScaledKernels {
  ScaledRow shiftRight;  ///< (e + 2^(shift - 1)) >> shift, shift 1..16
  ScaledRow plain;       ///< e; the shift is not looked at
  ScaledRow shiftLeft;   ///< e << shift, shift 1..8
};

/// `b` is a row of the second image in add, sub, mul and mulScale, and the bytes of a Pattern in the
/// others.
struct ArithmeticKernels {
  ScaledKernels add, addC;           ///< a + b
  ScaledKernels sub, subC;           ///< a - b, 0 if negative
  ScaledKernels mul, mulC;           ///< a * b
  PointwiseRow mulScale, mulScaleC;  ///< (p + (p >> 8) + 1) >> 8 with p = a * b
};

VEK_KERNEL_TABLE(ArithmeticKernels, arithmeticKernels)

}  // namespace vek
