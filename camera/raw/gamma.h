// The built-in gamma curves of the raw pipeline.
#pragma once

#include "vek/vek.h"

namespace vek {

inline constexpr int gammaTableSize = 1024;  ///< one entry for each 10-bit code

/// Control points x0, y0, x1, y1, ... of curve 0 (linear) or 1 (standard).
const Vek16u* gammaCurvePoints(Vek32u curve);

/// Fills pTable[0..1023] by straight lines between control points. Both scales run from 0 to 1024;
/// x starts at 0, ends above 1023 and increases, y never falls.
void fillGammaTable(Vek8u* pTable, const Vek16u* pPoints);

}  // namespace vek
