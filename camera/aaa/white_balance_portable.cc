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

}  // namespace

constexpr WhiteBalanceKernels whiteBalanceKernels = {.sumAll = sumAll,
                                                     .sumWhitePoints = sumWhitePoints};

}  // namespace vek::portable
