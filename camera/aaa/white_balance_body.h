// The plain loops behind WhiteBalanceRows.
#pragma once

#include "camera/aaa/quads_body.h"
#include "camera/aaa/white_balance_rows.h"

namespace vek::VEK_LEVEL {
namespace {

ColourSums _vekiAWB_accum_10RGGB_WGA(const Vek16u* pWin, int srcStep, int w, int h) {
  ColourSums sums = {};
  forEachQuad(pWin, srcStep, w, h, [&](Vek32u red, Vek32u green1, Vek32u green2, Vek32u blue) {
    sums.red += red;
    sums.green += green1 + green2;
    sums.blue += blue;
  });
  return sums;
}

bool isCloser(Vek32u a, Vek32u b, Vek32u limit) {
  return (a > b ? a - b : b - a) < limit;
}

ColourSums _vekiAWB_accum_10RGGB_WPD(const Vek16u* pWin, int srcStep, int w, int h,
                                     const WhitePointLimits& limits, Vek32u* pCount) {
  const WhitePointLimits l = limits;
  ColourSums sums = {};
  Vek32u quads = 0;
  forEachQuad(pWin, srcStep, w, h, [&](Vek32u red, Vek32u green1, Vek32u green2, Vek32u blue) {
    const Vek32u green = green1 + green2;
    const Vek32u average = (green + 1) >> 1;
    const Vek32u total = green + red + blue;
    const bool isWhite = isCloser(red, average, l.redLimit) & isCloser(blue, average, l.blueLimit) &
                         isCloser(green, red + blue, l.greenLimit) & (l.low4 < total) &
                         (total < l.high4);
    sums.red += isWhite ? red : 0;
    sums.green += isWhite ? green : 0;
    sums.blue += isWhite ? blue : 0;
    quads += isWhite;
  });
  *pCount = quads * 4;
  return sums;
}

}  // namespace
}  // namespace vek::VEK_LEVEL
