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

// Two pixels at a time with one division for both of their positions, which compilers do not find among
// comparisons of doubles: nearest samples take a fifth less time.

/// Successive integers (at + k * step) >> 8 of a line, two at a time as doubles, times a power of two. The
/// integer plus 2^44 is the lower bits of a double from 2^52 on, and twice as much of one from 2^53 on.
class ShiftedPairs {
 public:
  ShiftedPairs(Vek64s at, Vek64s step, int power)
      : next_(_mm_set1_epi64x(at + (Vek64s{1} << 52))),
        step_(_mm_set1_epi64x(2 * step)),
        exponent_(_mm_set1_epi64x((Vek64s{0x433} + power) << 52)),
        offset_(_mm_set1_pd((0x1p52 + 0x1p44) * (1 << power))) {
    next_ = _mm_add_epi64(next_, _mm_set_epi64x(step, 0));
  }
  __m128d next() {
    const __m128i bits = _mm_or_si128(_mm_srli_epi64(next_, 8), exponent_);
    next_ = _mm_add_epi64(next_, step_);
    return _mm_sub_pd(_mm_castsi128_pd(bits), offset_);
  }

 private:
  __m128i next_, step_, exponent_;
  __m128d offset_;
};

/// Quotients rounded to integers, of which the positions are at most one less.
struct Bounds {
  __m128d least = _mm_set1_pd(-noPosition), greatest = _mm_set1_pd(noPosition);

  void include(__m128d v) {
    least = _mm_min_pd(least, v);
    greatest = _mm_max_pd(greatest, v);
  }
  Vek32s lowest() const {
    const __m128d v = _mm_min_sd(least, _mm_unpackhi_pd(least, least));
    return static_cast<Vek32s>(_mm_cvtsd_f64(v)) - 1;
  }
  Vek32s highest() const {
    const __m128d v = _mm_max_sd(greatest, _mm_unpackhi_pd(greatest, greatest));
    return static_cast<Vek32s>(_mm_cvtsd_f64(v));
  }
};

/// Two positions floor(dividend / divisor), limited, to `to`. Both are integers below 2^53, and so is the
/// product of the divisor with the rounded quotient, which is less than 2^-21 off before it is rounded: it
/// is the position, or one more, and then leaves a rest without the divisor's sign.
template <bool negative>
inline void storePositions(__m128d dividend, __m128d divisor, __m128d reciprocal, Bounds& bounds,
                           Vek32s* to) {
  const __m128d least = _mm_set1_pd(noPosition), most = _mm_set1_pd(-noPosition);
  const __m128d integerBits = _mm_set1_pd(0x1.8p52);  // sums with it end in those of integers
  const __m128d q = _mm_max_pd(_mm_min_pd(_mm_mul_pd(dividend, reciprocal), most), least);
  const __m128d sum = _mm_add_pd(q, integerBits), rounded = _mm_sub_pd(sum, integerBits);
  bounds.include(rounded);
  const __m128d rest = _mm_sub_pd(dividend, _mm_mul_pd(rounded, divisor)), zero = _mm_setzero_pd();
  const __m128d isAbove = negative ? _mm_cmpgt_pd(rest, zero) : _mm_cmplt_pd(rest, zero);
  const __m128i floors = _mm_add_epi32(_mm_castpd_si128(sum), _mm_castpd_si128(isAbove));
  _mm_storel_epi64(reinterpret_cast<__m128i*>(to),
                   _mm_shuffle_epi32(floors, _MM_SHUFFLE(3, 1, 2, 0)));
}

/// Depths that are all below 0, or all above.
template <bool negative>
WarpBox pairsOfPositions(const WarpLine& line, int fractionBits, int n, WarpPositions& to) {
  const int power = fractionBits + 1;
  ShiftedPairs x(line.at[0], line.step[0], power), y(line.at[1], line.step[1], power);
  ShiftedPairs z(line.at[2], line.step[2], 0);
  Bounds columns, rows;
  for (int k = 0; k < n; k += 2) {
    const __m128d depth = z.next(), divisor = _mm_add_pd(depth, depth);
    const __m128d reciprocal = _mm_div_pd(_mm_set1_pd(1), divisor);
    storePositions<negative>(_mm_add_pd(x.next(), depth), divisor, reciprocal, columns,
                             to.columns + k);
    storePositions<negative>(_mm_add_pd(y.next(), depth), divisor, reciprocal, rows, to.rows + k);
  }
  return {.left = columns.lowest(),
          .top = rows.lowest(),
          .right = columns.highest(),
          .bottom = rows.highest()};
}

WarpBox perspective(const WarpLine& line, int fractionBits, int n, WarpPositions& to) {
  VEK_ASSERT(n >= 1 && n <= WarpPositions::most && (fractionBits == 0 || fractionBits == 7));
  // With an odd n, one more pixel is calculated.
  const Vek64s first = line.at[2] >> 8, last = (line.at[2] + n * line.step[2]) >> 8;
  if (first > 0 && last > 0) return pairsOfPositions<false>(line, fractionBits, n, to);
  if (first < 0 && last < 0) return pairsOfPositions<true>(line, fractionBits, n, to);
  return positionsOneByOne(line, fractionBits, n, to);
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
