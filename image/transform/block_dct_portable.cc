#include <string.h>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "core/assert.h"
#include "image/transform/block_dct_basis.h"
#include "image/transform/block_dct_kernels.h"

namespace vek::portable {
namespace {

template <class T>
using Block = T[8][8];

/// Both passes work on columns, and rows become columns in between.
template <class T>
void transpose(const Block<T>& from, Block<T>& to) {
  for (int i = 0; i < 8; ++i) {
    for (int j = 0; j < 8; ++j) to[j][i] = from[i][j];
  }
}

/// to[k][i] = (sum over j of the factor of k and j * from[j][i] + half) >> shift, whatever the samples.
template <bool inverse, int shift>
void passWide(const Block<Vek32s>& from, Block<Vek32s>& to) {
  for (int k = 0; k < 8; ++k) {
    Vek64s sums[8] = {};
    for (int j = 0; j < 8; ++j) {
      const Vek64s factor = inverse ? dctBasis[j][k] : dctBasis[k][j];
      for (int i = 0; i < 8; ++i) sums[i] += factor * from[j][i];
    }
    for (int i = 0; i < 8; ++i) {
      to[k][i] = static_cast<Vek32s>((sums[i] + (Vek64s{1} << (shift - 1))) >> shift);
    }
  }
}

/// (sum + half) >> shift of a sum below 2^31, which leaves no room for the half.
template <int shift>
Vek32s scaled(Vek32s sum) {
  return ((sum >> (shift - 1)) + 1) >> 1;
}

/// The same of samples from -16384 to 16383: sums and differences of two fit 16 bits. The factors of a
/// result sum to at most 2^17 in magnitude, so that the sums are from -2^31 to below 2^31.
template <bool inverse, int shift>
void passNarrow(const Block<Vek16s>& from, Block<Vek32s>& to) {
  Vek16s even[4][8], odd[4][8];
  for (int j = 0; j < 4; ++j) {
    for (int i = 0; i < 8; ++i) {
      const Vek16s a = inverse ? from[2 * j][i] : from[j][i];
      const Vek16s b = inverse ? from[2 * j + 1][i] : from[7 - j][i];
      even[j][i] = inverse ? a : static_cast<Vek16s>(a + b);
      odd[j][i] = inverse ? b : static_cast<Vek16s>(a - b);
    }
  }
  for (int k = 0; k < 4; ++k) {
    Vek32s evenSums[8] = {}, oddSums[8] = {};
    for (int j = 0; j < 4; ++j) {
      const Vek16s evenFactor = inverse ? dctBasis[2 * j][k] : dctBasis[2 * k][j];
      const Vek16s oddFactor = inverse ? dctBasis[2 * j + 1][k] : dctBasis[2 * k + 1][j];
      for (int i = 0; i < 8; ++i) {
        evenSums[i] += evenFactor * even[j][i];
        oddSums[i] += oddFactor * odd[j][i];
      }
    }
    for (int i = 0; i < 8; ++i) {
      const Vek32s a = evenSums[i], b = oddSums[i];
      to[inverse ? k : 2 * k][i] = scaled<shift>(inverse ? a + b : a);
      to[inverse ? 7 - k : 2 * k + 1][i] = scaled<shift>(inverse ? a - b : b);
    }
  }
}

template <bool inverse, int shift>
void pass(const Block<Vek32s>& from, Block<Vek32s>& to) {
  Block<Vek16s> narrow;
  Vek32s outside = 0;
  for (int j = 0; j < 8; ++j) {
    for (int i = 0; i < 8; ++i) {
      outside |= (from[j][i] + 16384) & ~32767;
      narrow[j][i] = static_cast<Vek16s>(from[j][i]);
    }
  }
  if (outside == 0) {
    passNarrow<inverse, shift>(narrow, to);
  } else {
    passWide<inverse, shift>(from, to);
  }
}

#if defined(__SSE2__)

// With sums of two products, which compilers do not find, and rows and columns exchanged in registers: an
// eighth of the time.

/// Interleaves each vector of the first four with the one four behind it. Three times transposes.
inline void interleaveHalves(__m128i (&v)[8]) {
  __m128i to[8];
  for (int i = 0; i < 4; ++i) {
    to[2 * i] = _mm_unpacklo_epi16(v[i], v[i + 4]);
    to[2 * i + 1] = _mm_unpackhi_epi16(v[i], v[i + 4]);
  }
  for (int i = 0; i < 8; ++i) v[i] = to[i];
}

/// Whether all samples are from -16384 to 16383.
inline bool areNarrow(const __m128i (&v)[8]) {
  __m128i signs = _mm_setzero_si128();
  for (const __m128i& row : v) {
    signs = _mm_or_si128(signs, _mm_add_epi16(row, _mm_set1_epi16(16384)));
  }
  return (_mm_movemask_epi8(signs) & 0xAAAA) == 0;
}

/// passNarrow() with results that saturate at 16 bits.
template <bool inverse, int shift>
inline void passVectors(__m128i (&v)[8]) {
  __m128i pairs[2][2][2];  // of even and odd ones, the first and second two of four, by halves
  for (int j = 0; j < 4; j += 2) {
    const auto interleave = [&](int odd, __m128i a, __m128i b) {
      pairs[odd][j / 2][0] = _mm_unpacklo_epi16(a, b);
      pairs[odd][j / 2][1] = _mm_unpackhi_epi16(a, b);
    };
    if (inverse) {
      interleave(0, v[2 * j], v[2 * j + 2]);
      interleave(1, v[2 * j + 1], v[2 * j + 3]);
    } else {
      interleave(0, _mm_add_epi16(v[j], v[7 - j]), _mm_add_epi16(v[j + 1], v[6 - j]));
      interleave(1, _mm_sub_epi16(v[j], v[7 - j]), _mm_sub_epi16(v[j + 1], v[6 - j]));
    }
  }
  const auto scaled = [](__m128i sum) {
    return _mm_srai_epi32(_mm_add_epi32(_mm_srai_epi32(sum, shift - 1), _mm_set1_epi32(1)), 1);
  };
  for (int k = 0; k < 4; ++k) {
    const auto sum = [&](int odd, int half) {
      const auto factors = [&](int j) {
        const Vek16s first = inverse ? dctBasis[2 * j + odd][k] : dctBasis[2 * k + odd][j];
        const Vek16s second = inverse ? dctBasis[2 * j + 2 + odd][k] : dctBasis[2 * k + odd][j + 1];
        return _mm_setr_epi16(first, second, first, second, first, second, first, second);
      };
      return _mm_add_epi32(_mm_madd_epi16(pairs[odd][0][half], factors(0)),
                           _mm_madd_epi16(pairs[odd][1][half], factors(2)));
    };
    const __m128i evenLow = sum(0, 0), evenHigh = sum(0, 1), oddLow = sum(1, 0),
                  oddHigh = sum(1, 1);
    if (inverse) {
      v[k] = _mm_packs_epi32(scaled(_mm_add_epi32(evenLow, oddLow)),
                             scaled(_mm_add_epi32(evenHigh, oddHigh)));
      v[7 - k] = _mm_packs_epi32(scaled(_mm_sub_epi32(evenLow, oddLow)),
                                 scaled(_mm_sub_epi32(evenHigh, oddHigh)));
    } else {
      v[2 * k] = _mm_packs_epi32(scaled(evenLow), scaled(evenHigh));
      v[2 * k + 1] = _mm_packs_epi32(scaled(oddLow), scaled(oddHigh));
    }
  }
}

/// Transforms a block if all samples are narrow before both passes.
template <bool inverse>
bool transformNarrow(const Vek8u* src, ptrdiff_t srcStep, Vek8u* dst, ptrdiff_t dstStep) {
  __m128i v[8];
  for (int y = 0; y < 8; ++y) {
    v[y] = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + y * srcStep));
  }
  if (!areNarrow(v)) return false;
  for (int i = 0; i < 3; ++i) interleaveHalves(v);
  passVectors<inverse, 11>(v);
  if (!areNarrow(v)) return false;
  for (int i = 0; i < 3; ++i) interleaveHalves(v);
  passVectors<inverse, 20>(v);
  for (int y = 0; y < 8; ++y) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + y * dstStep), v[y]);
  }
  return true;
}

#else

template <bool inverse>
bool transformNarrow(const Vek8u*, ptrdiff_t, Vek8u*, ptrdiff_t) {
  return false;
}

#endif

template <bool inverse>
void transformBlocks(const Vek8u* src, ptrdiff_t srcStep, ptrdiff_t blocks, Vek8u* dst,
                     ptrdiff_t dstStep) {
  VEK_ASSERT(blocks >= 1);
  for (ptrdiff_t b = 0; b < blocks; ++b) {
    if (transformNarrow<inverse>(src + 16 * b, srcStep, dst + 16 * b, dstStep)) continue;
    Block<Vek32s> samples, transposed, columns;
    for (int y = 0; y < 8; ++y) {
      Vek16s row[8];
      memcpy(row, src + y * srcStep + 16 * b, sizeof row);
      for (int x = 0; x < 8; ++x) samples[y][x] = row[x];
    }
    transpose(samples, transposed);
    pass<inverse, 11>(transposed, columns);
    transpose(columns, transposed);
    pass<inverse, 20>(transposed, samples);
    for (int y = 0; y < 8; ++y) {
      Vek16s row[8];
      for (int x = 0; x < 8; ++x) {
        const Vek32s v = samples[y][x];
        row[x] = static_cast<Vek16s>(v < -32768 ? -32768 : v > 32767 ? 32767 : v);
      }
      memcpy(dst + y * dstStep + 16 * b, row, sizeof row);
    }
  }
}

}  // namespace

constexpr BlockDctKernels blockDctKernels = {
    .forward = transformBlocks<false>,
    .inverse = transformBlocks<true>,
};

}  // namespace vek::portable
