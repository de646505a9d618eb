// Preparing and releasing the state of the raw pipeline.
#include "camera/raw/state.h"

#include <stddef.h>

#include "camera/raw/gamma.h"
#include "core/allocate.h"
#include "core/check.h"
#include "core/orientation.h"

namespace vek {
namespace {

enum GammaMode : Vek32u { builtInCurve = 0, callerTable = 1 };

/// R, G, B to Y, Cb, Cr in Q8. Y sums to 249 and Cb to 13 instead of 256 and 0: white comes out
/// slightly below 255 and Cb slightly above 128.
constexpr Vek16s rgbToYcc[3][3] = {{77, 143, 29}, {-30, -85, 128}, {128, -107, -21}};

/// Rows and columns of the region as it is seen after its rotation.
struct TurnedSize {
  Vek64s width, height;
};

TurnedSize turnedSize(const VekiRggbGeometry& g) {
  if (isTransposed(g.rotation)) return {g.srcHeight, g.srcWidth};
  return {g.srcWidth, g.srcHeight};
}

/// 1, 2 or 4; 0 if the destination is none of these fractions of the region.
int reduction(const VekiRggbGeometry& g) {
  const TurnedSize size = turnedSize(g);
  for (int scale : {1, 2, 4}) {
    if (size.width == Vek64s{g.dstWidth} * scale && size.height == Vek64s{g.dstHeight} * scale) {
      return scale;
    }
  }
  return 0;
}

bool isKept(const VekiRggbColorParam& p, const VekiDeadPixel& pixel) {
  return pixel.row >= p.rowOffset && pixel.column >= p.colOffset;
}

/// A list in sensor coordinates is copied into region coordinates unless they are the same.
bool needsCopy(const VekiRggbColorParam& p) {
  return p.deadPixels != nullptr && (p.rowOffset != 0 || p.colOffset != 0);
}

/// A list to be copied has entries, and the first one inside the region is not its origin.
bool isListAccepted(const VekiRggbColorParam& p) {
  if (!needsCopy(p)) return true;
  if (p.numDeadPixels < 1) return false;
  for (Vek32s i = 0; i < p.numDeadPixels; ++i) {
    const VekiDeadPixel& pixel = p.deadPixels[i];
    if (isKept(p, pixel)) return pixel.row != p.rowOffset || pixel.column != p.colOffset;
  }
  return true;
}

bool isColorAccepted(const VekiRggbColorParam& p) {
  if (p.gammaMode != builtInCurve && p.gammaMode != callerTable) return false;
  if (p.gammaMode == builtInCurve && p.gammaCurve[0] > 1) return false;
  if (p.gammaMode == callerTable && p.gammaTable[0] == nullptr) return false;
  return p.reserved == 0 && p.rowOffset >= 0 && p.colOffset >= 0 && p.colorMatrix != nullptr;
}

bool isGeometryAccepted(const VekiRggbGeometry& g) {
  if (isOdd(g.srcStep) || isOdd(g.srcWidth) || isOdd(g.srcHeight)) return false;
  if (anyBelowOne({g.dstWidth, g.dstHeight})) return false;
  if (g.rotation < 0 || g.rotation > 3) return false;
  if (g.chromaFormat != chroma422 && g.chromaFormat != chroma420) return false;

  const int scale = reduction(g);
  if (scale == 0) return false;
  const int chromaWidth = g.dstWidth / 2;
  if (g.dstStep[0] < g.dstWidth || g.dstStep[1] < chromaWidth || g.dstStep[2] < chromaWidth) {
    return false;
  }
  // Destination rows start where stores of eight (full size) or four luma samples are aligned.
  const int lumaUnit = scale == 1 ? 8 : 4;
  if (isMisaligned(g.dstStep[0], lumaUnit) || isMisaligned(g.dstStep[1], lumaUnit / 2) ||
      isMisaligned(g.dstStep[2], lumaUnit / 2)) {
    return false;
  }
  if (scale == 1) return g.filterMode == 2;
  return !isMisaligned(g.dstWidth, 4) && !isOdd(g.dstHeight) && g.filterMode == 3;
}

/// Moves the kept entries into region coordinates; returns how many they are.
Vek32s copyDeadPixels(const VekiRggbColorParam& p, VekiDeadPixel* copy) {
  Vek32s kept = 0;
  for (Vek32s i = 0; i < p.numDeadPixels; ++i) {
    const VekiDeadPixel& pixel = p.deadPixels[i];
    if (isKept(p, pixel)) copy[kept++] = {pixel.row - p.rowOffset, pixel.column - p.colOffset};
  }
  return kept;
}

/// Colour correction and conversion in one: rgbToYcc * colorMatrix, rounded to Q8. The entries wrap
/// to 16 bits; the sums stay below 256 * 32768 + 128.
void combineMatrices(const Vek16s* colorMatrix, Vek16s* combined) {
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) {
      Vek32s sum = 128;
      for (int k = 0; k < 3; ++k) sum += rgbToYcc[i][k] * colorMatrix[3 * k + j];
      combined[3 * i + j] = static_cast<Vek16s>(sum >> 8);
    }
  }
}

VekStatus initState(const VekiRggbColorParam& p, const VekiRggbGeometry& g,
                    VekiRggbToYCbCrState* state) {
  // Twice what the entries need.
  VekiDeadPixel* const copy =
      needsCopy(p) ? allocate<VekiDeadPixel>(Vek64s{2} * p.numDeadPixels) : nullptr;
  Vek16s* const matrix = allocate<Vek16s>(9);
  Vek8u* const builtIn = p.gammaMode == builtInCurve ? allocate<Vek8u>(gammaTableSize) : nullptr;
  if ((needsCopy(p) && copy == nullptr) || matrix == nullptr ||
      (p.gammaMode == builtInCurve && builtIn == nullptr)) {
    vekiFree(builtIn);
    vekiFree(matrix);
    vekiFree(copy);
    return vekStsMemAllocErr;
  }
  if (builtIn != nullptr) _ReconstructGammaTable(builtIn, gammaCurvePoints(p.gammaCurve[0]));
  combineMatrices(p.colorMatrix, matrix);
  *state = {.deadPixels = copy != nullptr ? copy : p.deadPixels,
            .numDeadPixels = copy != nullptr ? copyDeadPixels(p, copy) : p.numDeadPixels,
            .yccMatrix = matrix,
            .gammaTable = {builtIn != nullptr ? builtIn : p.gammaTable[0], nullptr, nullptr},
            .reserved = p.reserved,
            .filterMode = g.filterMode,
            .rotation = g.rotation,
            .chromaFormat = g.chromaFormat,
            .srcStep = g.srcStep,
            .srcWidth = g.srcWidth,
            .srcHeight = g.srcHeight,
            .dstStep = {g.dstStep[0], g.dstStep[1], g.dstStep[2]},
            .dstWidth = g.dstWidth,
            .dstHeight = g.dstHeight,
            .srcBorderValid = g.srcBorderValid,
            .gammaMode = p.gammaMode,
            .scale = reduction(g)};
  return vekStsNoErr;
}

}  // namespace
}  // namespace vek

extern "C" {

VekStatus vekiInitAlloc_10RGGBtoYCbCr_RotRsz_P3R(const VekiRggbColorParam* pParam,
                                                 const VekiRggbGeometry* pGeom,
                                                 VekiRggbToYCbCrState** ppState) {
  // Taken before the checks, and lost when one of them fails.
  auto* const state = vek::allocate<VekiRggbToYCbCrState>();
  if (vek::anyNull({pParam, pGeom}) || !vek::isColorAccepted(*pParam) ||
      !vek::isGeometryAccepted(*pGeom) || !vek::isListAccepted(*pParam) || ppState == nullptr) {
    return vekStsBadArgErr;
  }
  if (state == nullptr) return vekStsMemAllocErr;
  const VekStatus status = vek::initState(*pParam, *pGeom, state);
  if (status == vekStsNoErr) {
    *ppState = state;
  } else {
    vekiFree(state);
  }
  return status;
}

VekStatus vekiFree_10RGGBtoYCbCr_RotRsz_P3R(VekiRggbToYCbCrState* pState) {
  if (pState == nullptr) return vekStsNoErr;
  vekiFree(pState->yccMatrix);
  if (pState->gammaMode == vek::builtInCurve) vekiFree(const_cast<Vek8u*>(pState->gammaTable[0]));
  // A list is never released, be it the caller's or a copy; only an absent one passes as null.
  if (pState->deadPixels == nullptr) vekiFree(nullptr);
  vekiFree(pState);
  return vekStsNoErr;
}

}  // extern "C"
