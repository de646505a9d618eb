// A row of a convolution as its definition reads: for the portable kernels, and at every level for
// short rows and sums of 64 bits.
#pragma once

#include "vek/vek.h"

#include <stddef.h>
#include <stdint.h>

#include "core/assert.h"
#include "image/filter/fir/fir_kernels.h"

namespace vek::VEK_LEVEL {
namespace {

Vek8u scaleSum(int64_t sum, const FirScale& scale) {
  if (sum <= 0) return 0;
  uint64_t v = static_cast<uint64_t>(sum);
  if (v >= scale.limit) return 255;
  v *= scale.multiplier;
  if (scale.shift != 0) v = (v + (uint64_t{1} << (scale.shift - 1))) >> scale.shift;
  return static_cast<Vek8u>(v);
}

/// Sums up a block of samples tap by tap, in loops that vectors can take.
template <class Sum>
void firRow(const Vek8u* __restrict src, ptrdiff_t srcStep, const FirTaps& taps,
            const FirScale& scale, ptrdiff_t n, Vek8u* __restrict dst) {
  VEK_ASSERT(n >= 1 && taps.width >= 1 && taps.height >= 1);
  VEK_ASSERT(scale.divisor >= 1 && scale.shift <= 32);
  constexpr ptrdiff_t block = 256;
  Sum sums[block];
  for (ptrdiff_t x = 0; x < n; x += block) {
    const ptrdiff_t count = n - x < block ? n - x : block;
    for (ptrdiff_t i = 0; i < count; ++i) sums[i] = 0;
    const Vek32s* coefficient = taps.last;
    for (ptrdiff_t j = 0; j < taps.height; ++j) {
      for (ptrdiff_t k = 0; k < taps.width; ++k) {
        const Vek8u* at = src + x + j * srcStep + k * taps.pixelBytes;
        const Sum factor = *coefficient--;
        for (ptrdiff_t i = 0; i < count; ++i) sums[i] += factor * at[i];
      }
    }
    for (ptrdiff_t i = 0; i < count; ++i) dst[x + i] = scaleSum(sums[i], scale);
  }
}

}  // namespace
}  // namespace vek::VEK_LEVEL
