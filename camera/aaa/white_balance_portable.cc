#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "camera/aaa/quads_portable.h"
#include "camera/aaa/white_balance_kernels.h"
#include "core/assert.h"

namespace vek::portable {
namespace {

ColorSums sumAll(const Vek16u* pWin, int srcStep, int w, int h) {
  VEK_ASSERT(w % 2 == 0 && h % 2 == 0);
  ColorSums sums = {};
  forEachQuad(pWin, srcStep, w, h, [&](Vek32u red, Vek32u green1, Vek32u green2, Vek32u blue) {
    sums.red += red;
    sums.green += green1 + green2;
    sums.blue += blue;
  });
  return sums;
}

/// All bits if low < value < high, as signed numbers. These are masks because the loop below is
/// vectorised only without branches.
Vek32u between(Vek32u value, Vek32s low, Vek32s high) {
  const Vek32s v = static_cast<Vek32s>(value);
  return 0 - static_cast<Vek32u>((low < v) & (v < high));
}

ColorSums sumWhitePoints(const Vek16u* pWin, int srcStep, int w, int h,
                         const WhitePointLimits& limits, Vek32u* pCount) {
  VEK_ASSERT(w % 2 == 0 && h % 2 == 0);
  const WhitePointLimits l = limits;
  ColorSums sums = {};
  Vek32u quads = 0;
  forEachQuad(pWin, srcStep, w, h, [&](Vek32u red, Vek32u green1, Vek32u green2, Vek32u blue) {
    const Vek32u green = green1 + green2;
    const Vek32u average = (green + 1) >> 1;
    const Vek32u isWhite = between(red - average, -l.redLimit, l.redLimit) &
                           between(blue - average, -l.blueLimit, l.blueLimit) &
                           between(green - (red + blue), -l.greenLimit, l.greenLimit) &
                           between(green + red + blue, l.low4, l.high4);
    sums.red += red & isWhite;
    sums.green += green & isWhite;
    sums.blue += blue & isWhite;
    quads += 1 & isWhite;
  });
  *pCount = quads * 4;
  return sums;
}

#if defined(__SSE2__)

// In 16-bit lanes, with saturated sums and without packing, which compilers do not find: half of the time.

/// The even and the odd ones of sixteen samples.
struct Columns {
  __m128i even, odd;

  explicit Columns(const Vek16u* samples) {
    const __m128 a = halves(samples), b = halves(samples + 8);
    even = _mm_castps_si128(_mm_shuffle_ps(a, b, _MM_SHUFFLE(2, 0, 2, 0)));
    odd = _mm_castps_si128(_mm_shuffle_ps(a, b, _MM_SHUFFLE(3, 1, 3, 1)));
  }

 private:
  /// Two even ones, two odd ones, and the same again.
  static __m128 halves(const Vek16u* samples) {
    constexpr int evenFirst = _MM_SHUFFLE(3, 1, 2, 0);
    const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(samples));
    return _mm_castsi128_ps(_mm_shufflehi_epi16(_mm_shufflelo_epi16(v, evenFirst), evenFirst));
  }
};

/// 16 bits are enough for samples of any value. A white point's four samples sum to less than 4092, so
/// none of them, nor a difference between them, is larger. Any other quad fails the test of the
/// saturated sum.
ColorSums sumWhitePointVectors(const Vek16u* pWin, int srcStep, int w, int h,
                               const WhitePointLimits& limits, Vek32u* pCount) {
  VEK_ASSERT(w % 2 == 0 && h % 2 == 0 && srcStep % 2 == 0);
  constexpr int vectorColumns = 16;
  // What lies in an interval leaves 0 where its length is subtracted from the distance to its start.
  struct Interval {
    __m128i start, length;

    Interval(int low, int high)  // exclusive
        : start(_mm_set1_epi16(static_cast<Vek16s>(low + 1))),
          length(_mm_set1_epi16(static_cast<Vek16s>(high - low - 2))) {}
    __m128i excess(__m128i v) const { return _mm_subs_epu16(_mm_sub_epi16(v, start), length); }
  };
  const Interval redRange(-limits.redLimit, limits.redLimit),
      blueRange(-limits.blueLimit, limits.blueLimit),
      greenRange(-limits.greenLimit, limits.greenLimit), sumRange(limits.low4, limits.high4);
  const __m128i zero = _mm_setzero_si128();
  __m128i reds = zero, greens = zero, blues = zero, quads = zero;
  const auto widen = [](__m128i& sum, __m128i words) {
    sum = _mm_add_epi32(sum, _mm_and_si128(words, _mm_set1_epi32(0xFFFF)));
    sum = _mm_add_epi32(sum, _mm_srli_epi32(words, 16));
  };
  const int columns = w / vectorColumns * vectorColumns;
  for (ptrdiff_t y = 0; y < h; y += 2) {
    const Vek16u* const top = pWin + y * (srcStep / 2);
    const Vek16u* const bottom = top + srcStep / 2;
    for (int x = 0; x < columns;) {
      // Sixteen numbers below 4092 fit a word.
      const int left = columns - x,
                end = x + (left < 16 * vectorColumns ? left : 16 * vectorColumns);
      __m128i someReds = zero, someGreens = zero, someBlues = zero, someQuads = zero;
#pragma GCC unroll 2
      for (; x < end; x += vectorColumns) {
        const Columns redGreen(top + x), greenBlue(bottom + x);
        const __m128i red = redGreen.even, blue = greenBlue.odd;
        const __m128i green = _mm_adds_epu16(redGreen.odd, greenBlue.even);
        const __m128i average = _mm_avg_epu16(redGreen.odd, greenBlue.even);
        const __m128i redBlue = _mm_adds_epu16(red, blue);
        const __m128i all = _mm_adds_epu16(green, redBlue);
        const __m128i excess = _mm_or_si128(
            _mm_or_si128(redRange.excess(_mm_sub_epi16(red, average)),
                         blueRange.excess(_mm_sub_epi16(blue, average))),
            _mm_or_si128(greenRange.excess(_mm_sub_epi16(green, redBlue)), sumRange.excess(all)));
        const __m128i isWhite = _mm_cmpeq_epi16(excess, zero);
        someReds = _mm_add_epi16(someReds, _mm_and_si128(red, isWhite));
        someGreens = _mm_add_epi16(someGreens, _mm_and_si128(green, isWhite));
        someBlues = _mm_add_epi16(someBlues, _mm_and_si128(blue, isWhite));
        someQuads = _mm_sub_epi16(someQuads, isWhite);
      }
      widen(reds, someReds);
      widen(greens, someGreens);
      widen(blues, someBlues);
      widen(quads, someQuads);
    }
  }
  const auto total = [](__m128i v) {
    Vek32u lanes[4];
    _mm_storeu_si128(reinterpret_cast<__m128i*>(lanes), v);
    return lanes[0] + lanes[1] + lanes[2] + lanes[3];
  };
  ColorSums sums = {};
  if (columns < w) sums = sumWhitePoints(pWin + columns, srcStep, w - columns, h, limits, pCount);
  *pCount = (columns < w ? *pCount : 0) + 4 * total(quads);
  return {sums.red + total(reds), sums.green + total(greens), sums.blue + total(blues)};
}

#else

constexpr auto sumWhitePointVectors = sumWhitePoints;

#endif

}  // namespace

constexpr WhiteBalanceKernels whiteBalanceKernels = {.sumAll = sumAll,
                                                     .sumWhitePoints = sumWhitePointVectors};

}  // namespace vek::portable
