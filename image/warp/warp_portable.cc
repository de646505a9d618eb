#include <bit>
#include <stdint.h>
#include <string.h>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "core/assert.h"
#include "image/warp/interpolate.h"
#include "image/warp/perspective_body.h"
#include "image/warp/warp_kernels.h"

namespace vek::portable {
namespace {

Vek32s limited(Vek64s position) {
  return static_cast<Vek32s>(position < noPosition    ? noPosition
                             : position > -noPosition ? -noPosition
                                                      : position);
}

/// The positions of a line, of which those of the first and the last pixel are within the limits: those
/// between them are, too, and have the low bits of an unsigned shift, which vectors have.
void shiftedLine(Vek64s at, Vek64s step, int shift, int n, Vek32s* __restrict to) {
  const uint64_t first = static_cast<uint64_t>(at), each = static_cast<uint64_t>(step);
  for (int k = 0; k < n; ++k) {
    to[k] = static_cast<Vek32s>((first + each * static_cast<uint64_t>(k)) >> shift & 0xFFFFFFFF);
  }
}

void affineLine(Vek64s at, Vek64s step, int shift, int n, Vek32s* to) {
  const auto isLimited = [shift](Vek64s v) {
    return v >> shift < noPosition || v >> shift > -noPosition;
  };
  if (!isLimited(at) && !isLimited(at + (n - 1) * step)) {
    return shiftedLine(at, step, shift, n, to);
  }
  for (int k = 0; k < n; ++k) to[k] = limited((at + k * step) >> shift);
}

WarpBox affine(const WarpLine& line, int fractionBits, int n, WarpPositions& to) {
  VEK_ASSERT(n >= 1 && n <= WarpPositions::most && (fractionBits == 0 || fractionBits == 7));
  const int shift = 32 - fractionBits;
  const Vek64s half = Vek64s{1} << (shift - 1);
  affineLine(line.at[0] + half, line.step[0], shift, n, to.columns);
  affineLine(line.at[1] + half, line.step[1], shift, n, to.rows);
  return to.boundsOfLine(n);
}

#if defined(__SSE2__)

// Two divisions at a time, which compilers do not find among comparisons of doubles: nearest
// samples take a quarter less time.

/// (first + k * step) >> 8 as doubles. With 2^44 more it is the lower bits of a double from 2^52 on.
[[gnu::noinline]] void shiftedDoubles(Vek64s first, Vek64s step, int n, double* __restrict to) {
  uint64_t biased = static_cast<uint64_t>(first) + (uint64_t{1} << 52);
  const uint64_t each = static_cast<uint64_t>(step);
  for (int k = 0; k < n; ++k, biased += each) {
    to[k] = std::bit_cast<double>(biased >> 8 | 0x4330000000000000) - (0x1p52 + 0x1p44);
  }
}

/// floor((scale * numerator + depth) / (2 * depth)), limited. The integers are exact as doubles, and
/// quotients those of positionsOneByOne(). The upper lanes are of no use.
inline __m128i twoQuotients(const double* numerators, const double* depths, __m128d scale) {
  const __m128d least = _mm_set1_pd(noPosition), most = _mm_set1_pd(-noPosition);
  const __m128d depth = _mm_load_pd(depths), none = _mm_cmpeq_pd(depth, _mm_setzero_pd());
  const __m128d numerator = _mm_add_pd(_mm_mul_pd(scale, _mm_load_pd(numerators)), depth);
  __m128d q = _mm_div_pd(numerator, _mm_add_pd(depth, depth));
  q = _mm_or_pd(_mm_andnot_pd(none, q), _mm_and_pd(none, least));
  q = _mm_max_pd(_mm_min_pd(q, most), least);
  const __m128i truncated = _mm_cvttpd_epi32(q);
  const __m128i isAbove = _mm_castpd_si128(_mm_cmpgt_pd(_mm_cvtepi32_pd(truncated), q));
  return _mm_add_epi32(truncated, _mm_shuffle_epi32(isAbove, _MM_SHUFFLE(3, 1, 2, 0)));
}

WarpBox perspective(const WarpLine& line, int fractionBits, int n, WarpPositions& to) {
  VEK_ASSERT(n >= 1 && n <= WarpPositions::most && (fractionBits == 0 || fractionBits == 7));
  alignas(16) double numerators[WarpPositions::most + 1], depths[WarpPositions::most + 1];
  shiftedDoubles(line.at[2], line.step[2], n + 1, depths);
  const __m128d scale = _mm_set1_pd(2 << fractionBits);
  Vek32s* const positions[] = {to.columns, to.rows};
  Vek32s least[2], greatest[2];
  for (int i = 0; i < 2; ++i) {
    shiftedDoubles(line.at[i], line.step[i], n + 1, numerators);
    for (int k = 0; k < n; k += 2) {
      _mm_storel_epi64(reinterpret_cast<__m128i*>(positions[i] + k),
                       twoQuotients(numerators + k, depths + k, scale));
    }
    least[i] = greatest[i] = positions[i][0];
    for (int k = 0; k < n; ++k) {
      least[i] = positions[i][k] < least[i] ? positions[i][k] : least[i];
      greatest[i] = positions[i][k] > greatest[i] ? positions[i][k] : greatest[i];
    }
  }
  return {.left = least[0], .top = least[1], .right = greatest[0], .bottom = greatest[1]};
}

#else

constexpr FindPositions perspective = positionsOneByOne;

#endif

int run(const WarpPositions& positions, int first, int n, const WarpBox& box, bool within) {
  VEK_ASSERT(first >= 0 && first < n && n <= WarpPositions::most);
  for (int k = first; k < n; ++k) {
    const Vek32s column = positions.columns[k], row = positions.rows[k];
    const bool inside =
        column >= box.left && column <= box.right && row >= box.top && row <= box.bottom;
    if (inside != within) return k - first;
  }
  return n - first;
}

/// The first sample of column i and row j.
template <int channels>
const Vek8u* sampleAt(const WarpSource& src, int i, int j) {
  return src.data + j * src.step + ptrdiff_t{channels} * i;
}

template <int channels>
void nearest(const WarpSource& src, const Vek32s* columns, const Vek32s* rows, int n, Vek8u* dst) {
  VEK_ASSERT(n >= 1);
  for (int k = 0; k < n; ++k, dst += channels) {
    memcpy(dst, sampleAt<channels>(src, columns[k], rows[k]), channels);
  }
}

#if defined(__SSE2__)

// Sums of two products again, for several samples at a time: about half of the time.

/// Weights 128 - f and f in both halves of each lane.
inline __m128i weightPair(__m128i f) {
  return _mm_add_epi32(_mm_set1_epi32(128), _mm_sub_epi32(_mm_slli_epi32(f, 16), f));
}

/// The samples of pairs in rows and the weights of rows and columns become four linear() samples, in
/// bytes 0 to 3.
inline __m128i blended(__m128i top, __m128i bottom, __m128i columnWeights, __m128i rowWeights) {
  const __m128i upper = _mm_madd_epi16(top, columnWeights);  // at most 32640
  const __m128i lower = _mm_madd_epi16(bottom, columnWeights);
  const __m128i both = _mm_or_si128(upper, _mm_slli_epi32(lower, 16));
  const __m128i sum = _mm_add_epi32(_mm_madd_epi16(both, rowWeights), _mm_set1_epi32(8192));
  const __m128i words = _mm_packs_epi32(_mm_srli_epi32(sum, 14), _mm_setzero_si128());
  return _mm_packus_epi16(words, words);
}

template <class Word>
Word wordAt(const Vek8u* src) {
  Word word;
  memcpy(&word, src, sizeof word);
  return word;
}

inline __m128i lowerHalf(uint64_t bytes) {
  return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(&bytes));
}

/// Four pixels of one channel.
inline void linearVector(const WarpSource& src, const Vek32s* columns, const Vek32s* rows,
                         Vek8u* dst) {
  const auto fractions = [](const Vek32s* positions) {
    const __m128i all = _mm_loadu_si128(reinterpret_cast<const __m128i*>(positions));
    return _mm_and_si128(all, _mm_set1_epi32(127));
  };
  const Vek8u* at[4];
  for (int k = 0; k < 4; ++k) at[k] = sampleAt<1>(src, columns[k] >> 7, rows[k] >> 7);
  const auto pairs = [&at](ptrdiff_t offset) {
    const uint64_t all = wordAt<Vek16u>(at[0] + offset) |
                         Vek32u{wordAt<Vek16u>(at[1] + offset)} << 16 |
                         uint64_t{wordAt<Vek16u>(at[2] + offset)} << 32 |
                         uint64_t{wordAt<Vek16u>(at[3] + offset)} << 48;
    return _mm_unpacklo_epi8(lowerHalf(all), _mm_setzero_si128());
  };
  const __m128i bytes = blended(pairs(0), pairs(src.step), weightPair(fractions(columns)),
                                weightPair(fractions(rows)));
  const int four = _mm_cvtsi128_si32(bytes);
  memcpy(dst, &four, sizeof four);
}

/// A pixel of three channels.
inline void linearPixel(const WarpSource& src, Vek32s column, Vek32s row, Vek8u* dst) {
  const Vek8u* const first = sampleAt<3>(src, column >> 7, row >> 7);
  const auto pairs = [first](ptrdiff_t offset) {
    const uint64_t six =
        wordAt<Vek32u>(first + offset) | uint64_t{wordAt<Vek16u>(first + offset + 4)} << 32;
    const __m128i bytes = lowerHalf(six);
    const __m128i ordered = _mm_unpacklo_epi8(bytes, _mm_srli_epi64(bytes, 24));
    return _mm_unpacklo_epi8(ordered, _mm_setzero_si128());
  };
  const __m128i bytes = blended(pairs(0), pairs(src.step), weightPair(_mm_set1_epi32(column & 127)),
                                weightPair(_mm_set1_epi32(row & 127)));
  const int four = _mm_cvtsi128_si32(bytes);
  memcpy(dst, &four, 3);
}

/// Writes the first of n pixels, and returns how many.
template <int channels>
int linearVectors(const WarpSource& src, const Vek32s* columns, const Vek32s* rows, int n,
                  Vek8u* dst) {
  int k = 0;
  if constexpr (channels == 1) {
    for (; k <= n - 4; k += 4) linearVector(src, columns + k, rows + k, dst + k);
  } else {
    for (; k < n; ++k) linearPixel(src, columns[k], rows[k], dst + 3 * k);
  }
  return k;
}

#else

template <int channels>
int linearVectors(const WarpSource&, const Vek32s*, const Vek32s*, int, Vek8u*) {
  return 0;
}

#endif

template <int channels>
void linearRow(const WarpSource& src, const Vek32s* columns, const Vek32s* rows, int n,
               Vek8u* dst) {
  VEK_ASSERT(n >= 1);
  int k = linearVectors<channels>(src, columns, rows, n, dst);
  dst += channels * k;
  for (; k < n; ++k) {
    const Vek8u* const first = sampleAt<channels>(src, columns[k] >> 7, rows[k] >> 7);
    for (int c = 0; c < channels; ++c) {
      const auto at = [&](int a, int b) { return first[b * src.step + a * channels + c]; };
      *dst++ = linear(at, columns[k] & 127, rows[k] & 127);
    }
  }
}

template <int channels>
void cubicRow(const WarpSource& src, const Vek32s* columns, const Vek32s* rows, int n, Vek8u* dst) {
  VEK_ASSERT(n >= 1);
  for (int k = 0; k < n; ++k) {
    const Vek8u* const first = sampleAt<channels>(src, (columns[k] >> 7) - 1, (rows[k] >> 7) - 1);
    for (int c = 0; c < channels; ++c) {
      const auto at = [&](int a, int b) { return first[b * src.step + a * channels + c]; };
      *dst++ = cubic(at, columns[k] & 127, rows[k] & 127);
    }
  }
}

template <int channels>
constexpr WarpSamplers samplers = {.nearest = {nearest<channels>, channels},
                                   .linear = {linearRow<channels>, 2 * channels},
                                   .cubic = {cubicRow<channels>, 4 * channels}};

}  // namespace

constexpr WarpKernels warpKernels = {
    .affine = affine, .perspective = perspective, .run = run, .c1 = samplers<1>, .c3 = samplers<3>};

}  // namespace vek::portable
