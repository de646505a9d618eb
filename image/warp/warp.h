// What the affine and the perspective warp share: arguments and their checks, and the walk over the
// destination.
#pragma once

#include "vek/vek.h"

namespace vek {

/// The arguments of both warps, with as many coefficients as the warp has.
struct WarpArguments {
  const Vek8u* pSrc;
  int srcStep;
  VekiSize srcSize;
  Vek8u* pDst;
  int dstStep;
  VekiRect dstRect;
  const Vek64f* pCoeffs;
  int direction, interpolation, border;
  const Vek8u* borderValue;  ///< one for each channel; may be null if none is needed
};

/// All checks but those of the coefficients' values.
VekStatus checkWarp(const WarpArguments& a, int channels);

/// v * 2^power, rounded to nearest, halves to even. v is finite and the result at most 2^62 in magnitude.
Vek64s scaledInteger(Vek64f v, int power);

/// (|row[0]| + |row[1]|) * 32768 + |row[2]|: no numerator within the destination's bounds is greater in
/// magnitude.
Vek64f mostNumerator(const Vek64f* row);

/// Writes the destination. `map` has three integers for each of columns, rows and denominators, which are
/// X = map[0] x + map[1] y + map[2] and so on of the destination's pixel (x, y), within the limits that
/// FindPositions has. Affine maps have no denominator.
void warp(const WarpArguments& a, int channels, const Vek64s (&map)[9], bool perspective);

}  // namespace vek
