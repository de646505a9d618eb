// Sums of 16 bits over a divisor, in lanes of 16 bits.
// Compiled into kernels of every level, so everything sits in the level's own namespace.
#pragma once

#include "vek/vek.h"

#include <stddef.h>

namespace vek::VEK_LEVEL {
namespace {

/// dst[i] = (sums[i] * multiplier + 2^31) >> 32, at most 255, for a multiplier of 2^16 high + low: this is
/// (sum * high + (sum * low >> 16) + 2^15) >> 16. A function of its own, so that compilers see factors
/// of 16 bits and take halves of the products.
[[gnu::noinline, maybe_unused]] void scaleSums16(const Vek16u* __restrict sums, ptrdiff_t n,
                                                 Vek16u high, Vek16u low, Vek8u* __restrict dst) {
  for (ptrdiff_t i = 0; i < n; ++i) {
    const Vek16u rest = static_cast<Vek16u>((Vek32u{sums[i]} * low) >> 16);
    const Vek16u upper = static_cast<Vek16u>((Vek32u{sums[i]} * high) >> 16);
    const Vek16u fraction = static_cast<Vek16u>(Vek32u{sums[i]} * high + rest);
    const int carry = fraction < rest ? 1 : 0;
    const Vek16s rounded = static_cast<Vek16s>(upper + carry + (fraction >> 15));
    dst[i] = static_cast<Vek8u>(rounded < 255 ? rounded : 255);
  }
}

}  // namespace
}  // namespace vek::VEK_LEVEL
