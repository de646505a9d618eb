// Kernels of the linear filters with a caller's kernel: two-dimensional, row and column filters
// alike are sums over taps.
#pragma once

#include "vek/vek.h"

#include <stddef.h>
#include <stdint.h>

#include "core/level.h"

namespace vek {

/// The taps of a convolution. Tap (x, y) multiplies the sample `x` pixels to the right and `y` rows
/// below src; its coefficient is read backwards from the end of the caller's kernel: last[-(y *
/// width + x)].
struct FirTaps {
  const Vek32s* last;
  ptrdiff_t width, height;
  ptrdiff_t pixelBytes;
};

/// A sum becomes (sum * multiplier + 2^(shift - 1)) >> shift, without the rounding term when shift
/// is 0, saturated to 0..255. The multiplier is 1 (shift 0..30) or round(2^32 / divisor) with shift
/// 32. `limit` is the least sum that gives 255 or more: sums clamped to 0..limit give the same
/// result, and their products stay below 2^41.
struct FirScale {
  int divisor;
  Vek32u multiplier;
  int shift;
  uint64_t limit;
};

struct FirRegion {
  const Vek8u* src;
  ptrdiff_t srcStep;
  Vek8u* dst;
  ptrdiff_t dstStep;
  ptrdiff_t n, rows;  ///< bytes of a row, and rows
};

/// dst[x] = scaled sum of the taps at src + x, in every row.
using FirKernel = void (*)(const FirRegion& region, const FirTaps& taps, const FirScale& scale);

/// By the bits that every partial sum fits in, signed.
struct FirKernels {
  FirKernel sums16;  ///< of coefficients of 8 bits, signed
  FirKernel sums32;
  FirKernel sums64;
};

VEK_KERNEL_TABLE(FirKernels, firKernels)

}  // namespace vek
