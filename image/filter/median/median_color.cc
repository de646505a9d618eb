// Median filter of whole three-channel pixels.
#include "vek/image.h"

#include "core/check.h"
#include "image/filter/median/median_color_kernels.h"

extern "C" VekStatus vekiFilterMedianColor_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst,
                                                  int dstStep, VekiSize roiSize, int mask) {
  const VekStatus status = vek::checkPointersSizeSteps({pDst, pSrc}, roiSize, {srcStep, dstStep});
  if (status != vekStsNoErr) return status;
  if (mask != vekiMask3x3 && mask != vekiMask5x5) return vekStsMaskSizeErr;

  const vek::ColorMedianKernels& rows = vek::select(vek::colorMedianKernels);
  const auto filter =
      mask == vekiMask3x3 ? rows.ColorMedianFilter3x3_8u : rows.ColorMedianFilter5x5_8u;
  const int side = mask == vekiMask3x3 ? 3 : 5;
  const ptrdiff_t border = side / 2;
  const Vek8u* corner = pSrc - border * srcStep - border * 3;
  const ptrdiff_t strip = vek::colorMedianColumns(side) - 2 * border;
  for (ptrdiff_t x = 0; x < roiSize.width; x += strip) {
    const ptrdiff_t rest = roiSize.width - x;
    filter({corner + 3 * x, srcStep, pDst + 3 * x, dstStep, rest < strip ? rest : strip,
            roiSize.height});
  }
  return vekStsNoErr;
}
