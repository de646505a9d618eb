#if defined(__SSE2__)
#include <emmintrin.h>
#include <string.h>
#endif

#include "camera/aaa/exposure_kernels.h"
#include "camera/aaa/histogram_body.h"
#include "camera/aaa/quads_portable.h"

namespace vek::portable {
namespace {

#if defined(__SSE2__)

// Few samples have to be counted in most frames, and SSE2 finds them eight at a time: half of the time.

/// The greens of eight columns of two rows, each plus 1 modulo 1024: 1 to 1023, or 0 if it is saturated.
__m128i greensAt(const Vek16u* top, const Vek16u* bottom) {
  const __m128i lowHalves = _mm_set1_epi32(0xFFFF);
  const __m128i upper = _mm_loadu_si128(reinterpret_cast<const __m128i*>(top));
  const __m128i lower = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bottom));
  const __m128i samples =
      _mm_or_si128(_mm_andnot_si128(lowHalves, upper), _mm_and_si128(lowHalves, lower));
  return _mm_and_si128(_mm_add_epi16(samples, _mm_set1_epi16(1)), _mm_set1_epi16(saturatedSample));
}

/// The sum of all lanes.
Vek32u total(__m128i v) {
  Vek32u lanes[4];
  _mm_storeu_si128(reinterpret_cast<__m128i*>(lanes), v);
  return lanes[0] + lanes[1] + lanes[2] + lanes[3];
}

/// What measureGreensBy() wants.
ptrdiff_t measureOutside(const GreenRows& rows, ptrdiff_t y, ptrdiff_t most, Vek32u countThresh,
                         Vek32u* pHist, GreenHistogram& greens) {
  constexpr ptrdiff_t vectorColumns = 8, block = 2 * vectorColumns;
  const __m128i one = _mm_set1_epi16(1), biased = _mm_set1_epi16(0x7FFF);
  __m128i sum = _mm_setzero_si128(), samples = sum;
  __m128i low, high;  // of values minus 32768 and of values plus 1
  const auto setBounds = [&] {
    low = _mm_set1_epi16(static_cast<Vek16s>(greens.lowest - 32768));
    high = _mm_set1_epi16(static_cast<Vek16s>(greens.highest + 1));
  };
  setBounds();
  ptrdiff_t counted = 0;
  const auto count = [&](__m128i more) {
    Vek16s lanes[vectorColumns];
    _mm_storeu_si128(reinterpret_cast<__m128i*>(lanes), more);
    for (Vek16s lane : lanes) {
      const Vek32s bin = lane - 1;
      if (bin < 0 || (bin >= greens.lowest && bin <= greens.highest)) continue;
      ++counted;
      if (++pHist[bin] < countThresh) continue;
      greens.lowest = greens.lowest < bin ? greens.lowest : bin;
      greens.highest = greens.highest > bin ? greens.highest : bin;
    }
  };
  // Neither comparison finds a saturated sample: plus 32767 it is the largest number, and as it is 0.
  const auto measure = [&](__m128i a, __m128i b) {
    sum = _mm_add_epi32(sum, _mm_madd_epi16(_mm_add_epi16(a, b), one));
    const __m128i unsaturated = _mm_add_epi16(_mm_min_epi16(a, one), _mm_min_epi16(b, one));
    samples = _mm_add_epi32(samples, _mm_madd_epi16(unsaturated, one));
    const __m128i least = _mm_min_epi16(_mm_add_epi16(a, biased), _mm_add_epi16(b, biased));
    const __m128i outside =
        _mm_or_si128(_mm_cmplt_epi16(least, low), _mm_cmpgt_epi16(_mm_max_epi16(a, b), high));
    if (__builtin_expect(_mm_movemask_epi8(outside) == 0, 1)) return;
    count(a);
    count(b);
    setBounds();
  };
  for (; y < rows.pairs && counted <= most; ++y) {
    const Vek16u* const top = rows.data + 2 * y * rows.step;
    const Vek16u* const bottom = top + rows.step;
    ptrdiff_t x = 0;
    // The last sample of the lower row must not be read, so the last block is always a copy, with saturated
    // samples behind it.
    for (; x + block < rows.columns; x += block) {
      measure(greensAt(top + x, bottom + x),
              greensAt(top + x + vectorColumns, bottom + x + vectorColumns));
    }
    const auto n = static_cast<size_t>(rows.columns - x);
    Vek16u last[2][block];
    memset(last, 0xFF, sizeof last);
    memcpy(last[0], top + x, n * sizeof *top);
    memcpy(last[1], bottom + x, (n - 1) * sizeof *bottom);
    measure(greensAt(last[0], last[1]), greensAt(last[0] + vectorColumns, last[1] + vectorColumns));
  }
  greens.samples += total(samples);
  greens.sum += total(sum) - total(samples);
  return y;
}

GreenHistogram measureGreens(const Vek16u* pSrc, int srcStep, int width, int height,
                             Vek32u countThresh, Vek32u* pHist) {
  return measureGreensBy(measureOutside, pSrc, srcStep, width, height, countThresh, pHist);
}

#else

constexpr auto measureGreens = countAllGreens;

#endif

Vek32u sumGreens(const Vek16u* pWin, int srcStep, int w, int h) {
  Vek32u sum = 0;
  forEachQuad(pWin, srcStep, w, h,
              [&](Vek32u, Vek32u green1, Vek32u green2, Vek32u) { sum += green1 + green2; });
  return sum;
}

}  // namespace

constexpr ExposureKernels exposureKernels = {.measureGreens = measureGreens,
                                             .sumGreens = sumGreens};

}  // namespace vek::portable
