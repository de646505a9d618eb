// Perspective warps.
#include "vek/image.h"

#include <math.h>
#include <stdint.h>
#include <string.h>

#include "image/warp/warp.h"

namespace vek {
namespace {

/// The map from destination to source, which may have any scale, for coefficients from source to
/// destination. False if it has none.
bool invert(const Vek64f (&c)[9], Vek64f (&b)[9]) {
  b[0] = c[4] * c[8] - c[5] * c[7];
  b[1] = c[2] * c[7] - c[1] * c[8];
  b[2] = c[1] * c[5] - c[2] * c[4];
  b[3] = c[5] * c[6] - c[3] * c[8];
  b[4] = c[0] * c[8] - c[2] * c[6];
  b[5] = c[2] * c[3] - c[0] * c[5];
  b[6] = c[3] * c[7] - c[4] * c[6];
  b[7] = c[1] * c[6] - c[0] * c[7];
  b[8] = c[0] * c[4] - c[1] * c[3];
  const Vek64f determinant = (c[0] * b[0] + c[1] * b[3]) + c[2] * b[6];
  return determinant != 0 && isfinite(determinant);
}

/// e with 2^(e - 1) <= v < 2^e, for finite v > 0.
int exponentOf(Vek64f v) {
  const int raised = v < 0x1p-1022 ? 54 : 0;  // subnormal numbers have no exponent of their own
  const Vek64f normal = raised != 0 ? v * 0x1p54 : v;
  uint64_t bits;
  memcpy(&bits, &normal, sizeof bits);
  return static_cast<int>(bits >> 52) - 1022 - raised;
}

/// The map in integers of up to 51 bits. Its scale does not matter, so that the largest number that the
/// destination can make of it is given all of them. False if a number is not finite, or all are 0.
bool integersOf(const Vek64f (&b)[9], Vek64s (&map)[9]) {
  Vek64f most = 0;
  for (int i = 0; i < 9; i += 3) {
    const Vek64f numerator = mostNumerator(b + i);
    if (!isfinite(numerator)) return false;
    if (numerator > most) most = numerator;
  }
  if (most == 0) return false;
  const int power = 51 - exponentOf(most);
  for (int i = 0; i < 9; ++i) map[i] = scaledInteger(b[i], power);
  return true;
}

VekStatus perspectiveWarp(const WarpArguments& a, int channels) {
  const VekStatus status = checkWarp(a, channels);
  if (status != vekStsNoErr) return status;
  Vek64f coefficients[9], b[9];
  memcpy(coefficients, a.pCoeffs, sizeof coefficients);  // at any address
  if (a.direction == vekiWarpInverse) {
    memcpy(b, coefficients, sizeof b);
  } else if (!invert(coefficients, b)) {
    return vekStsCoeffRangeErr;
  }
  Vek64s map[9];
  if (!integersOf(b, map)) return vekStsCoeffRangeErr;
  warp(a, channels, map, true);
  return vekStsNoErr;
}

}  // namespace
}  // namespace vek

extern "C" VekStatus vekiPerspectiveWarp_8u_C1R(const Vek8u* pSrc, int srcStep, VekiSize srcSize,
                                                Vek8u* pDst, int dstStep, VekiRect dstRect,
                                                const Vek64f* pCoeffs, int direction,
                                                int interpolation, int border, Vek8u borderValue) {
  return vek::perspectiveWarp({pSrc, srcStep, srcSize, pDst, dstStep, dstRect, pCoeffs, direction,
                               interpolation, border, &borderValue},
                              1);
}

extern "C" VekStatus vekiPerspectiveWarp_8u_C3R(const Vek8u* pSrc, int srcStep, VekiSize srcSize,
                                                Vek8u* pDst, int dstStep, VekiRect dstRect,
                                                const Vek64f* pCoeffs, int direction,
                                                int interpolation, int border,
                                                const Vek8u borderValue[3]) {
  return vek::perspectiveWarp({pSrc, srcStep, srcSize, pDst, dstStep, dstRect, pCoeffs, direction,
                               interpolation, border, borderValue},
                              3);
}
