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

// Two divisions at a time, which compilers do not find among comparisons of doubles: half of the time.

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

template <int channels>
void linearRow(const WarpSource& src, const Vek32s* columns, const Vek32s* rows, int n,
               Vek8u* dst) {
  VEK_ASSERT(n >= 1);
  for (int k = 0; k < n; ++k) {
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
