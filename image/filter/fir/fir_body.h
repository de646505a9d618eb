// A row of a convolution as its definition reads: for the portable kernels, and at every level for
// short rows and sums of 64 bits.
#pragma once

#include "vek/vek.h"

#include <stddef.h>
#include <stdint.h>
#include <string.h>
#include <type_traits>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "core/assert.h"
#include "image/filter/fir/fir_kernels.h"
#include "image/filter/scale_sums.h"

namespace vek::VEK_LEVEL {
namespace {

/// Bytes whose sums are made together.
constexpr ptrdiff_t firBlock = 512;

/// Taps whose products are added at once: the sums are loaded and stored less often.
template <class Sum>
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

#if defined(__SSE2__)

template <>
constexpr int tapsTogether<Vek32s> = 4;

/// Sums of two products are one instruction, which compilers do not find: two thirds of the time.
inline void addProducts(const Vek8u* const* taps, const Vek16s* factors, ptrdiff_t n,
                        Vek32s* __restrict sums) {
  const __m128i zero = _mm_setzero_si128();
  const auto pairOf = [](const Vek16s* f) {
    return _mm_setr_epi16(f[0], f[1], f[0], f[1], f[0], f[1], f[0], f[1]);
  };
  const auto load = [](const void* from) {
    return _mm_loadu_si128(static_cast<const __m128i*>(from));
  };
  const __m128i first = pairOf(factors), second = pairOf(factors + 2);
  ptrdiff_t i = 0;
  for (; i <= n - 16; i += 16) {
    const __m128i a = load(taps[0] + i), b = load(taps[1] + i), c = load(taps[2] + i),
                  d = load(taps[3] + i);
    const auto add = [&](int k, __m128i ab, __m128i cd) {
      Vek32s* const at = sums + i + 4 * k;
      const __m128i products = _mm_add_epi32(_mm_madd_epi16(ab, first), _mm_madd_epi16(cd, second));
      _mm_storeu_si128(reinterpret_cast<__m128i*>(at), _mm_add_epi32(load(at), products));
    };
    const __m128i lowAb = _mm_unpacklo_epi8(a, b), lowCd = _mm_unpacklo_epi8(c, d);
    const __m128i highAb = _mm_unpackhi_epi8(a, b), highCd = _mm_unpackhi_epi8(c, d);
    add(0, _mm_unpacklo_epi8(lowAb, zero), _mm_unpacklo_epi8(lowCd, zero));
    add(1, _mm_unpackhi_epi8(lowAb, zero), _mm_unpackhi_epi8(lowCd, zero));
    add(2, _mm_unpacklo_epi8(highAb, zero), _mm_unpacklo_epi8(highCd, zero));
    add(3, _mm_unpackhi_epi8(highAb, zero), _mm_unpackhi_epi8(highCd, zero));
  }
  for (; i < n; ++i) {
    for (int k = 0; k < 4; ++k) sums[i] += factors[k] * taps[k][i];
  }
}

#endif

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

/// `Sum` has at most 32 bits.
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
  if constexpr (sizeof(void*) == 8) {
    // Where sums of 32 bits are shifted, a multiplication of 16 bits is faster, too.
    if (limit <= 0xFFFF && (scale.shift >= bits || (bits == 32 && scale.shift > 0))) {
      const Vek32u factor = scale.multiplier << (32 - scale.shift);
      Vek16u words[firBlock];
      for (ptrdiff_t i = 0; i < n; ++i) words[i] = static_cast<Vek16u>(clamped(sums[i]));
      return scaleSums16(words, n, static_cast<Vek16u>(factor >> 16),
                         static_cast<Vek16u>(factor & 0xFFFF), dst);
    }
  }
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
  Sum sums[firBlock];
  for (ptrdiff_t x = 0; x < n; x += firBlock) {
    const ptrdiff_t count = n - x < firBlock ? n - x : firBlock;
    for (ptrdiff_t i = 0; i < count; ++i) sums[i] = 0;
    const Vek32s* coefficient = taps.last;
    const Vek8u* at[tapsTogether<Sum>];
    Vek16s factors[tapsTogether<Sum>];
    int listed = 0;
    for (ptrdiff_t j = 0; j < taps.height; ++j) {
      for (ptrdiff_t k = 0; k < taps.width; ++k) {
        const Vek32s factor = *coefficient--;
        if (factor == 0) continue;
        at[listed] = src + x + j * srcStep + k * taps.pixelBytes;
        factors[listed] = static_cast<Vek16s>(factor);
        if (++listed < tapsTogether<Sum>) continue;
        addProducts(at, factors, count, sums);
        listed = 0;
      }
    }
    if (listed > 0) {
      for (int i = listed; i < tapsTogether<Sum>; ++i) {
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
