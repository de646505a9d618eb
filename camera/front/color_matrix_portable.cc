#include "camera/front/color_matrix_kernels.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "core/assert.h"

namespace vek::portable {
namespace {

/// The sums are at most 4 * 1023, and products with them at most 2^27; what larger samples give is of no
/// use, but wraps as it does in the lanes of the fast kernels.
Vek16u mixed(const Vek16u* up, const Vek16u* at, const Vek16u* down,
             const ColorMatrixWeights& weights, size_t c) {
  const auto product = [](Vek16s weight, int sum) {
    return static_cast<Vek32u>(weight * static_cast<Vek16s>(sum));
  };
  const Vek32u sum = product(weights.own[c], 4 * at[0]) +
                     product(weights.beside[c], at[-1] + at[1]) +
                     product(weights.vertical[c], up[0] + down[0]) +
                     product(weights.diagonal[c], up[-1] + up[1] + down[-1] + down[1]);
  const Vek32s value = static_cast<Vek32s>(sum + (1 << 13)) >> 14;
  return static_cast<Vek16u>(value < 0 ? 0 : value < 1023 ? value : 1023);
}

#if defined(__SSE2__)

// Compilers do not find the sums of two products in 32 bits, which halve the time.

constexpr ptrdiff_t vectorSamples = 8;

/// The weights of two sums for both colors, as _mm_madd_epi16 takes them.
inline __m128i weightPairs(const Vek16s* first, const Vek16s* second) {
  return _mm_setr_epi16(first[0], second[0], first[1], second[1], first[0], second[0], first[1],
                        second[1]);
}

inline __m128i samplesAt(const Vek16u* p) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}

inline void mixVector(const Vek16u* up, const Vek16u* at, const Vek16u* down, __m128i atWeights,
                      __m128i aroundWeights, Vek16u* dst) {
  const __m128i own = _mm_slli_epi16(samplesAt(at), 2);
  const __m128i beside = _mm_add_epi16(samplesAt(at - 1), samplesAt(at + 1));
  const __m128i vertical = _mm_add_epi16(samplesAt(up), samplesAt(down));
  const __m128i diagonal = _mm_add_epi16(_mm_add_epi16(samplesAt(up - 1), samplesAt(up + 1)),
                                         _mm_add_epi16(samplesAt(down - 1), samplesAt(down + 1)));
  const auto products = [&](__m128i atPairs, __m128i aroundPairs) {
    const __m128i sum = _mm_add_epi32(_mm_madd_epi16(atPairs, atWeights),
                                      _mm_madd_epi16(aroundPairs, aroundWeights));
    return _mm_srai_epi32(_mm_add_epi32(sum, _mm_set1_epi32(1 << 13)), 14);
  };
  const __m128i mixed = _mm_packs_epi32(
      products(_mm_unpacklo_epi16(own, beside), _mm_unpacklo_epi16(vertical, diagonal)),
      products(_mm_unpackhi_epi16(own, beside), _mm_unpackhi_epi16(vertical, diagonal)));
  const __m128i clamped =
      _mm_min_epi16(_mm_max_epi16(mixed, _mm_setzero_si128()), _mm_set1_epi16(1023));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(dst), clamped);
}

#endif

void row(const Vek16u* up, const Vek16u* at, const Vek16u* down, Vek16u* dst, ptrdiff_t n,
         const ColorMatrixWeights& weights) {
  VEK_ASSERT(n >= 1);
  const ColorMatrixWeights w = weights;
  ptrdiff_t i = 0;
#if defined(__SSE2__)
  const __m128i atWeights = weightPairs(w.own, w.beside);
  const __m128i aroundWeights = weightPairs(w.vertical, w.diagonal);
  for (; i + vectorSamples <= n; i += vectorSamples) {
    mixVector(up + i, at + i, down + i, atWeights, aroundWeights, dst + i);
  }
#endif
  for (; i + 2 <= n; i += 2) {
    dst[i] = mixed(up + i, at + i, down + i, w, 0);
    dst[i + 1] = mixed(up + i + 1, at + i + 1, down + i + 1, w, 1);
  }
  if (i < n) dst[i] = mixed(up + i, at + i, down + i, w, 0);
}

}  // namespace

constexpr ColorMatrixKernels colorMatrixKernels = {.row = row};

}  // namespace vek::portable
