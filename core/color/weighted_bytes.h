// Weighted sums of three channels of bytes, for portable kernels: what compilers do not find by
// themselves.
#pragma once

#include "vek/vek.h"

#include <stddef.h>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace vek::portable {
namespace {

/// An output is (weight[0] a + weight[1] b + weight[2] c + offset) >> shift, clamped to 0..255. The
/// sum fits 32 bits.
struct ByteWeights {
  Vek16s weight[3];
  Vek32s offset;
};

/// Whether no output leaves 0..255 before it is clamped.
template <int shift>
constexpr bool staysInBytes(const ByteWeights& weights) {
  Vek32s least = weights.offset, most = weights.offset;
  for (Vek16s w : weights.weight) (w < 0 ? least : most) += 255 * w;
  return least >= 0 && most >> shift <= 255;
}

/// For processors without vectors: the output of n pixels of three bytes, `dstStep` bytes apart.
template <int shift, bool clamps>
[[gnu::noinline]] void weighTriples(const Vek8u* __restrict pixels, ptrdiff_t n,
                                    const ByteWeights& weights, Vek8u* __restrict dst,
                                    ptrdiff_t dstStep) {
  const ByteWeights* given = &weights;
  // Where compilers know the weights, they multiply in several additions each.
  asm("" : "+r"(given));
  const ByteWeights w = *given;
  for (ptrdiff_t i = 0; i < n; ++i, pixels += 3, dst += dstStep) {
    const Vek32s v =
        (w.offset + w.weight[0] * pixels[0] + w.weight[1] * pixels[1] + w.weight[2] * pixels[2]) >>
        shift;
    *dst = static_cast<Vek8u>(!clamps ? v : v < 0 ? 0 : v > 255 ? 255 : v);
  }
}

#if defined(__SSE2__)

constexpr bool weighsVectors = true;

// Products of bytes by weights are summed in 32 bits two by two, by one instruction. Compilers multiply
// them one by one instead, in four. Several outputs share the pairs. Conversions take half of
// the time.

/// Sixteen samples of each output.
template <int shift, int outputs>
inline void weighVector(const Vek8u* a, const Vek8u* b, const Vek8u* c, const __m128i* pairWeights,
                        const __m128i* thirdWeights, const __m128i* offsets, Vek8u* const* dst) {
  const auto load = [](const Vek8u* from) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
  };
  const __m128i zero = _mm_setzero_si128(), first = load(a), second = load(b), third = load(c);
  const __m128i lowPairs = _mm_unpacklo_epi8(first, second);
  const __m128i highPairs = _mm_unpackhi_epi8(first, second);
  const __m128i lowThirds = _mm_unpacklo_epi8(third, zero);
  const __m128i highThirds = _mm_unpackhi_epi8(third, zero);
  const __m128i pairs[] = {_mm_unpacklo_epi8(lowPairs, zero), _mm_unpackhi_epi8(lowPairs, zero),
                           _mm_unpacklo_epi8(highPairs, zero), _mm_unpackhi_epi8(highPairs, zero)};
  const __m128i thirds[] = {
      _mm_unpacklo_epi16(lowThirds, zero), _mm_unpackhi_epi16(lowThirds, zero),
      _mm_unpacklo_epi16(highThirds, zero), _mm_unpackhi_epi16(highThirds, zero)};
  for (int k = 0; k < outputs; ++k) {
    const auto sums = [&](int i) {
      const __m128i products = _mm_add_epi32(_mm_madd_epi16(pairs[i], pairWeights[k]),
                                             _mm_madd_epi16(thirds[i], thirdWeights[k]));
      return _mm_srai_epi32(_mm_add_epi32(products, offsets[k]), shift);
    };
    _mm_storeu_si128(
        reinterpret_cast<__m128i*>(dst[k]),
        _mm_packus_epi16(_mm_packs_epi32(sums(0), sums(1)), _mm_packs_epi32(sums(2), sums(3))));
  }
}

/// Computes outputs of the first of n samples, and returns of how many.
template <int shift, int outputs>
ptrdiff_t weighVectors(const Vek8u* a, const Vek8u* b, const Vek8u* c, ptrdiff_t n,
                       const ByteWeights (&weights)[outputs], Vek8u* const (&dst)[outputs]) {
  __m128i pairWeights[outputs], thirdWeights[outputs], offsets[outputs];
  for (int k = 0; k < outputs; ++k) {
    const Vek16s* const w = weights[k].weight;
    pairWeights[k] = _mm_setr_epi16(w[0], w[1], w[0], w[1], w[0], w[1], w[0], w[1]);
    thirdWeights[k] = _mm_setr_epi16(w[2], 0, w[2], 0, w[2], 0, w[2], 0);
    offsets[k] = _mm_set1_epi32(weights[k].offset);
  }
  ptrdiff_t i = 0;
  for (; i <= n - 16; i += 16) {
    Vek8u* to[outputs];
    for (int k = 0; k < outputs; ++k) to[k] = dst[k] + i;
    weighVector<shift, outputs>(a + i, b + i, c + i, pairWeights, thirdWeights, offsets, to);
  }
  return i;
}

#else

constexpr bool weighsVectors = false;

template <int shift, int outputs>
ptrdiff_t weighVectors(const Vek8u*, const Vek8u*, const Vek8u*, ptrdiff_t,
                       const ByteWeights (&)[outputs], Vek8u* const (&)[outputs]) {
  return 0;
}

#endif

}  // namespace
}  // namespace vek::portable
