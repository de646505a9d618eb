// What a raw pipeline state holds between InitAlloc and Free.
#pragma once

#include "vek/camera.h"

/// Read-only once InitAlloc has returned it.
struct VekiRggbToYCbCrState {
  const VekiDeadPixel* deadPixels;  ///< in region coordinates: the caller's array, a copy, or null
  Vek32s numDeadPixels;
  Vek16s* yccMatrix;  ///< nine Q8 coefficients, rows Y, Cb, Cr, columns camera R, G, B; owned
  const Vek8u* gammaTable[3];  ///< only the first is used; owned in gamma mode 0
  Vek32u reserved;
  Vek32s filterMode;
  Vek32s rotation;
  Vek32s chromaFormat;
  Vek32s srcStep;
  Vek32s srcWidth;
  Vek32s srcHeight;
  Vek32s dstStep[3];
  Vek32s dstWidth;
  Vek32s dstHeight;
  Vek32s srcBorderValid;
  Vek32u gammaMode;
  Vek32s scale;  ///< 1, 2 or 4
};

namespace vek {

/// Values of VekiRggbGeometry::chromaFormat.
inline constexpr int chroma422 = 8;
inline constexpr int chroma420 = 9;

}  // namespace vek
