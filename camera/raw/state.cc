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

/// R, G, B to Y, Cb, Cr in Q8.
///
/// @quirk Y sums to 249 and Cb to 13 instead of 256 and 0, so white comes out slightly below 255 and
/// with Cb slightly above 128. Applications are tuned to these coefficients.
constexpr Vek16s rgbToYcc[3][3] = {{77, 143, 29}, {-30, -85, 128}, {128, -107, -21}};

// ---- Checks -----------------------------------------------------------------------------------

bool isColorAccepted(const VekiRggbColorParam& p) {
  const bool hasGamma = p.gammaMode == builtInCurve  ? p.gammaCurve[0] <= 1
                        : p.gammaMode == callerTable ? p.gammaTable[0] != nullptr
                                                     : false;
  return hasGamma && p.reserved == 0 && p.rowOffset >= 0 && p.colOffset >= 0 &&
         p.colorMatrix != nullptr;
}

/// 1, 2 or 4; 0 if the destination is none of these fractions of the region.
int reduction(const VekiRggbGeometry& g) {
  const bool transposed = isTransposed(g.rotation);
  const Vek64s width = transposed ? g.srcHeight : g.srcWidth;
  const Vek64s height = transposed ? g.srcWidth : g.srcHeight;
  for (int scale : {1, 2, 4}) {
    if (width == Vek64s{g.dstWidth} * scale && height == Vek64s{g.dstHeight} * scale) return scale;
  }
  return 0;
}

/// Destination rows hold the picture and start where stores of `lumaUnit` luma samples are aligned.
bool areStepsAccepted(const VekiRggbGeometry& g, int lumaUnit) {
  const int chromaWidth = g.dstWidth / 2, chromaUnit = lumaUnit / 2;
  return g.dstStep[0] >= g.dstWidth && !isMisaligned(g.dstStep[0], lumaUnit) &&
         g.dstStep[1] >= chromaWidth && !isMisaligned(g.dstStep[1], chromaUnit) &&
         g.dstStep[2] >= chromaWidth && !isMisaligned(g.dstStep[2], chromaUnit);
}

bool isFullSizeAccepted(const VekiRggbGeometry& g) {
  return areStepsAccepted(g, 8) && g.filterMode == 2;
}

bool isReducedSizeAccepted(const VekiRggbGeometry& g) {
  return areStepsAccepted(g, 4) && g.filterMode == 3 && !isMisaligned(g.dstWidth, 4) &&
         !isOdd(g.dstHeight);
}

bool isGeometryAccepted(const VekiRggbGeometry& g) {
  const int scale = reduction(g);
  return !isOdd(g.srcStep | g.srcWidth | g.srcHeight) && !anyBelowOne({g.dstWidth, g.dstHeight}) &&
         g.rotation >= vekiRotNone && g.rotation <= vekiRot180 &&
         (g.chromaFormat == chroma422 || g.chromaFormat == chroma420) && scale != 0 &&
         (scale == 1 ? isFullSizeAccepted(g) : isReducedSizeAccepted(g));
}

bool isKept(const VekiRggbColorParam& p, const VekiDeadPixel& pixel) {
  return pixel.row >= p.rowOffset && pixel.column >= p.colOffset;
}

/// A list in sensor coordinates is copied into region coordinates unless they are the same.
bool needsCopy(const VekiRggbColorParam& p) {
  return p.deadPixels != nullptr && (p.rowOffset != 0 || p.colOffset != 0);
}

/// @quirk A list to be copied must have entries, and the first one that is kept must not be the
/// region's origin. A list that is used in place may have both.
bool isListAccepted(const VekiRggbColorParam& p) {
  if (!needsCopy(p)) return true;
  if (p.numDeadPixels < 1) return false;
  for (Vek32s i = 0; i < p.numDeadPixels; ++i) {
    const VekiDeadPixel& pixel = p.deadPixels[i];
    if (isKept(p, pixel)) return pixel.row != p.rowOffset || pixel.column != p.colOffset;
  }
  return true;
}

bool areAccepted(const VekiRggbColorParam* pParam, const VekiRggbGeometry* pGeom,
                 VekiRggbToYCbCrState* const* ppState) {
  return !anyNull({pParam, pGeom, ppState}) && isColorAccepted(*pParam) &&
         isGeometryAccepted(*pGeom) && isListAccepted(*pParam);
}

// ---- Preparation ------------------------------------------------------------------------------

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
  const bool copies = needsCopy(p), builds = p.gammaMode == builtInCurve;
  // @quirk Twice what the entries need. An application's allocator may be sized for it.
  auto* const copy = copies ? allocate<VekiDeadPixel>(Vek64s{2} * p.numDeadPixels) : nullptr;
  auto* const matrix = allocate<Vek16s>(9);
  auto* const builtIn = builds ? allocate<Vek8u>(gammaTableSize) : nullptr;
  if ((copies && copy == nullptr) || matrix == nullptr || (builds && builtIn == nullptr)) {
    vekiFree(builtIn);
    vekiFree(matrix);
    vekiFree(copy);
    return vekStsMemAllocErr;
  }
  if (builds) fillGammaTable(builtIn, gammaCurvePoints(p.gammaCurve[0]));
  combineMatrices(p.colorMatrix, matrix);
  *state = {.deadPixels = copies ? copy : p.deadPixels,
            .numDeadPixels = copies ? copyDeadPixels(p, copy) : p.numDeadPixels,
            .yccMatrix = matrix,
            .gammaTable = {builds ? builtIn : p.gammaTable[0], nullptr, nullptr},
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
  // @quirk The block is taken before the checks, and lost when one of them fails. Callers that count
  // what their allocator gives out know it so.
  auto* const state = vek::allocate<VekiRggbToYCbCrState>();
  if (!vek::areAccepted(pParam, pGeom, ppState)) return vekStsBadArgErr;
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
  // @quirk A list is never released, be it the caller's or a copy, which is lost; only an absent one
  // goes to vekiFree, as null.
  if (pState->deadPixels == nullptr) vekiFree(nullptr);
  vekiFree(pState);
  return vekStsNoErr;
}

}  // extern "C"
