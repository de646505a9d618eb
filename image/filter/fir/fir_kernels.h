// Kernels of the linear filters with a caller's kernel: two-dimensional, row and column filters
// alike are sums over taps.
#pragma once

#include "vek/vek.h"

#include <stddef.h>
#include <stdint.h>

#include "core/level.h"

namespace vek {

/// The taps of a convolution. Tap (x, y) multiplies the sample that is `x` pixels to the right of
/// src and `y` rows below it by the coefficient last[-(y * width + x)]: the caller's kernel is read
/// backwards from its last entry.
struct FirTaps {
  const Vek32s* last;       ///< coefficients of -32768 .. 32767
  ptrdiff_t width, height;  ///< at least 1
  ptrdiff_t pixelBytes;     ///< 1 or 3
};

/// A sum becomes (sum * multiplier + 2^(shift - 1)) >> shift, or stays as it is with a shift of 0,
/// and is clamped to 0..255. For a divisor of 2^k the multiplier is 1 and the shift is k (0..30),
/// for any other the multiplier is round(2^32 / divisor) and the shift is 32.
///
/// `limit` is the least sum that gives 255 or more: a sum clamped to 0..limit gives the same
/// result, and its product stays below 2^41. With a divisor of 100 the multiplier is 42949673 and
/// the limit 25450, which gives 254.5 + 0.5.
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
  ptrdiff_t n, rows;  ///< bytes of a row, and rows: at least 1
};

/// dst[x] = scaled sum of the taps at src + x, in every row. The images do not overlap.
using FirKernel = void (*)(const FirRegion& region, const FirTaps& taps, const FirScale& scale);

/// By the bits that every partial sum fits in, signed.
struct FirKernels {
  FirKernel sums16;  ///< for coefficients of -128 .. 127
  FirKernel sums32;
  FirKernel sums64;
};

VEK_KERNEL_TABLE(FirKernels, firKernels)

}  // namespace vek
