// A row of a convolution as its definition reads: for the portable kernels, and at every level for
// short rows and sums of 64 bits.
#pragma once

#include "vek/vek.h"

#include <stddef.h>
#include <stdint.h>
#include <string.h>
#include <type_traits>

#include "core/assert.h"
#include "image/filter/fir/fir_kernels.h"

namespace vek::VEK_LEVEL {
namespace {

/// Taps whose products are added at once: the sums are loaded and stored less often.
constexpr int tapsTogether = 3;

/// Compilers multiply bytes by coefficients of 16 bits in the lanes of the sum.
template <class Sum>
void addProducts(const Vek8u* const* taps, const Vek16s* factors, ptrdiff_t n,
                 Sum* __restrict sums) {
  const Vek8u *const a = taps[0], *const b = taps[1], *const c = taps[2];
  const Vek16s fa = factors[0], fb = factors[1], fc = factors[2];
  for (ptrdiff_t i = 0; i < n; ++i) {
    sums[i] = static_cast<Sum>(sums[i] + Sum{fa} * a[i] + Sum{fb} * b[i] + Sum{fc} * c[i]);
  }
}

/// (sum * multiplier + 2^(shift - 1)) >> shift, clamped as FirScale says.
void scaleSums(const int64_t* __restrict sums, ptrdiff_t n, const FirScale& scale,
               Vek8u* __restrict dst) {
  const uint64_t half = scale.shift == 0 ? 0 : uint64_t{1} << (scale.shift - 1);
  for (ptrdiff_t i = 0; i < n; ++i) {
    const uint64_t v = sums[i] < 0 ? 0 : static_cast<uint64_t>(sums[i]);
    const uint64_t clamped = v < scale.limit ? v : scale.limit;
    dst[i] = static_cast<Vek8u>((clamped * scale.multiplier + half) >> scale.shift);
  }
}

/// `Sum` has at most 32 bits. For a multiplier h * 2^16 + l and sums of 16 bits, which all sums are
/// whose limit has 16 bits, (v * multiplier + 2^31) >> 32 is (v * h + (v * l >> 16) + 2^15) >> 16.
template <class Sum>
void scaleSums(const Sum* __restrict sums, ptrdiff_t n, const FirScale& scale,
               Vek8u* __restrict dst) {
  constexpr uint64_t most = sizeof(Sum) == 2 ? 0x7FFF : 0x7FFFFFFF;
  const Sum limit = static_cast<Sum>(scale.limit < most ? scale.limit : most);
  const auto clamped = [limit](Sum v) {
    const Sum positive = v < 0 ? Sum{0} : v;
    return positive < limit ? positive : limit;
  };
  using Unsigned = std::make_unsigned_t<Sum>;
  constexpr int bits = 8 * sizeof(Sum);
  const Vek32u multiplier = scale.multiplier;
  if (scale.shift < bits) {
    const int shift = scale.shift & (bits - 1);  // a mask that keeps compilers to lanes of the sum
    const Unsigned half = static_cast<Unsigned>(shift == 0 ? 0 : Vek32u{1} << (shift - 1));
    for (ptrdiff_t i = 0; i < n; ++i) {
      const Unsigned rounded =
          static_cast<Unsigned>(static_cast<Unsigned>(clamped(sums[i])) + half);
      dst[i] = static_cast<Vek8u>(rounded >> shift);
    }
  } else if (scale.shift < 32) {
    memset(dst, 0, static_cast<size_t>(n));  // less than one half
  } else if (limit <= 0xFFFF) {
    const Vek16u high = static_cast<Vek16u>(multiplier >> 16);
    const Vek16u low = static_cast<Vek16u>(multiplier & 0xFFFF);
    for (ptrdiff_t i = 0; i < n; ++i) {
      const Vek16u v = static_cast<Vek16u>(clamped(sums[i]));
      const Vek16u rest = static_cast<Vek16u>((Vek32u{v} * low) >> 16);
      dst[i] = static_cast<Vek8u>((Vek32u{v} * high + rest + 0x8000) >> 16);
    }
  } else {
    for (ptrdiff_t i = 0; i < n; ++i) {
      const uint64_t v = static_cast<Vek32u>(clamped(sums[i]));
      dst[i] = static_cast<Vek8u>((v * multiplier + 0x80000000u) >> 32);
    }
  }
}

/// Sums up a block of samples by a few taps at a time, in loops that vectors can take. Each partial
/// sum fits `Sum`.
template <class Sum>
void firRow(const Vek8u* __restrict src, ptrdiff_t srcStep, const FirTaps& taps,
            const FirScale& scale, ptrdiff_t n, Vek8u* __restrict dst) {
  VEK_ASSERT(n >= 1 && taps.width >= 1 && taps.height >= 1);
  VEK_ASSERT(scale.divisor >= 1 && scale.shift <= 32);
  constexpr ptrdiff_t block = 512;
  Sum sums[block];
  for (ptrdiff_t x = 0; x < n; x += block) {
    const ptrdiff_t count = n - x < block ? n - x : block;
    for (ptrdiff_t i = 0; i < count; ++i) sums[i] = 0;
    const Vek32s* coefficient = taps.last;
    const Vek8u* at[tapsTogether];
    Vek16s factors[tapsTogether];
    int listed = 0;
    for (ptrdiff_t j = 0; j < taps.height; ++j) {
      for (ptrdiff_t k = 0; k < taps.width; ++k) {
        const Vek32s factor = *coefficient--;
        if (factor == 0) continue;
        at[listed] = src + x + j * srcStep + k * taps.pixelBytes;
        factors[listed] = static_cast<Vek16s>(factor);
        if (++listed < tapsTogether) continue;
        addProducts(at, factors, count, sums);
        listed = 0;
      }
    }
    if (listed > 0) {
      for (int i = listed; i < tapsTogether; ++i) {
        at[i] = at[0];
        factors[i] = 0;
      }
      addProducts(at, factors, count, sums);
    }
    scaleSums(sums, count, scale, dst + x);
  }
}

}  // namespace
}  // namespace vek::VEK_LEVEL
