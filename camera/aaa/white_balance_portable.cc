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

// In 16-bit lanes, with sums of products by 0 or 1, which compilers do not find: half of the time.

/// The even and the odd ones of sixteen samples, at most 32767.
struct Columns {
  __m128i even, odd;

  explicit Columns(const Vek16u* samples) {
    const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(samples));
    const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(samples + 8));
    const __m128i low = _mm_set1_epi32(0xFFFF);
    even = _mm_packs_epi32(_mm_and_si128(a, low), _mm_and_si128(b, low));
    odd = _mm_packs_epi32(_mm_srli_epi32(a, 16), _mm_srli_epi32(b, 16));
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
  const __m128i one = _mm_set1_epi16(1);
  __m128i reds = _mm_setzero_si128(), greens = reds, blues = reds, quads = reds;
  const auto take = [](__m128i& sum, __m128i v, __m128i counted) {
    sum = _mm_add_epi32(sum, _mm_madd_epi16(v, counted));
  };
  const int columns = w / vectorColumns * vectorColumns;
  for (ptrdiff_t y = 0; y < h; y += 2) {
    const Vek16u* const top = pWin + y * (srcStep / 2);
    const Vek16u* const bottom = top + srcStep / 2;
    for (int x = 0; x < columns; x += vectorColumns) {
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
      const __m128i counted = _mm_and_si128(_mm_cmpeq_epi16(excess, _mm_setzero_si128()), one);
      take(reds, red, counted);
      take(greens, green, counted);
      take(blues, blue, counted);
      take(quads, counted, counted);
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
