// The call for each frame: checks, dead pixels, conversion.
#include "vek/camera.h"

#include <stddef.h>

#include "camera/raw/conversion.h"
#include "camera/raw/state.h"
#include "core/check.h"

namespace vek {
namespace {

/// Without a valid border it is the interior, one block in, that starts on aligned addresses.
bool isAligned(Vek8u* const* pDst, const VekiRggbToYCbCrState& state) {
  const uintptr_t unit = state.scale == 1 ? 8 : 4;
  const int edge = state.scale == 1 && state.srcBorderValid == 0 ? 1 : 0;
  return !isMisaligned(pDst[0] + 2 * edge, unit) && !isMisaligned(pDst[1] + edge, unit / 2) &&
         !isMisaligned(pDst[2] + edge, unit / 2);
}

/// In list order, so a run of neighbours listed left to right takes the good sample to its left.
///
/// @quirk Positions are not compared with the region's size: a sensor's list is used for any region
/// of it, and entries beyond the region reach the memory around it.
void replaceDeadPixels(Vek16u* pSrc, int srcStep, const VekiDeadPixel* pList, int count) {
  const ptrdiff_t rowLength = srcStep >> 1;
  for (int i = 0; i < count; ++i) {
    const ptrdiff_t row = pList[i].row, column = pList[i].column;
    const ptrdiff_t pixel = row * rowLength + column;
    if (column > 1) {
      pSrc[pixel] = pSrc[pixel - 2];
    } else if (row > 1) {
      pSrc[pixel] = pSrc[pixel - 2 * rowLength];
    }
  }
}

}  // namespace
}  // namespace vek

extern "C" VekStatus veki10RGGBtoYCbCr_RotRsz_8u_P3R(Vek16u* pSrc, Vek8u* const pDst[3],
                                                     const VekiRggbToYCbCrState* pState) {
  if (vek::anyNull({pState, pSrc}) || vek::anyPlaneNull(pDst) || !vek::isAligned(pDst, *pState)) {
    return vekStsBadArgErr;
  }
  if (pState->deadPixels != nullptr) {
    vek::replaceDeadPixels(pSrc, pState->srcStep, pState->deadPixels, pState->numDeadPixels);
  }
  const vek::Level level = vek::cpuLevel();
  if (pState->scale == 1) {
    vek::convertFullSize(pSrc, pDst, *pState, level);
  } else {
    vek::convertReducedSize(pSrc, pDst, *pState, level);
  }
  return vekStsNoErr;
}
