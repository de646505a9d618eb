// Affine warps.
#include "vek/image.h"

#include <math.h>
#include <string.h>

#include "image/warp/warp.h"

namespace vek {
namespace {

/// The map from destination to source, for coefficients from source to destination. False if it has
/// none.
bool invert(const Vek64f (&c)[6], Vek64f (&b)[6]) {
  const Vek64f determinant = c[0] * c[4] - c[1] * c[3];
  if (determinant == 0 || !isfinite(determinant)) return false;
  const Vek64f r = 1 / determinant;
  b[0] = c[4] * r, b[1] = -(c[1] * r);
  b[3] = -(c[3] * r), b[4] = c[0] * r;
  b[2] = -(b[0] * c[2] + b[1] * c[5]);
  b[5] = -(b[3] * c[2] + b[4] * c[5]);
  return true;
}

VekStatus affineWarp(const WarpArguments& a, int channels) {
  const VekStatus status = checkWarp(a, channels);
  if (status != vekStsNoErr) return status;
  Vek64f coefficients[6], b[6];
  memcpy(coefficients, a.pCoeffs, sizeof coefficients);  // at any address
  if (a.direction == vekiWarpInverse) {
    memcpy(b, coefficients, sizeof b);
  } else if (!invert(coefficients, b)) {
    return vekStsCoeffRangeErr;
  }
  // False for what is no number, too.
  if (!(mostNumerator(b) < 0x1p30 && mostNumerator(b + 3) < 0x1p30)) return vekStsCoeffRangeErr;
  Vek64s map[9] = {};
  for (int i = 0; i < 6; ++i) map[i] = scaledInteger(b[i], 32);
  warp(a, channels, map, false);
  return vekStsNoErr;
}

}  // namespace
}  // namespace vek

extern "C" VekStatus vekiAffineWarp_8u_C1R(const Vek8u* pSrc, int srcStep, VekiSize srcSize,
                                           Vek8u* pDst, int dstStep, VekiRect dstRect,
                                           const Vek64f* pCoeffs, int direction, int interpolation,
                                           int border, Vek8u borderValue) {
  return vek::affineWarp({pSrc, srcStep, srcSize, pDst, dstStep, dstRect, pCoeffs, direction,
                          interpolation, border, &borderValue},
                         1);
}

extern "C" VekStatus vekiAffineWarp_8u_C3R(const Vek8u* pSrc, int srcStep, VekiSize srcSize,
                                           Vek8u* pDst, int dstStep, VekiRect dstRect,
                                           const Vek64f* pCoeffs, int direction, int interpolation,
                                           int border, const Vek8u borderValue[3]) {
  return vek::affineWarp({pSrc, srcStep, srcSize, pDst, dstStep, dstRect, pCoeffs, direction,
                          interpolation, border, borderValue},
                         3);
}
