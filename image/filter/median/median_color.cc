// Median filter of whole three-channel pixels.
#include "vek/image.h"

#include "core/check.h"
#include "image/filter/median/median_color_kernels.h"
#include "image/filter/strips.h"

namespace vek {
namespace {

VekStatus filterColorMedian(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                            VekiSize roiSize, int mask) {
  const VekStatus status = checkPointersSizeSteps({pDst, pSrc}, roiSize, {srcStep, dstStep});
  if (status != vekStsNoErr) return status;
  if (mask != vekiMask3x3 && mask != vekiMask5x5) return vekStsMaskSizeErr;

  const ColorMedianKernels& kernels = select(colorMedianKernels);
  const auto filter = mask == vekiMask3x3 ? kernels.square3 : kernels.square5;
  const int side = mask == vekiMask3x3 ? 3 : 5;
  const ptrdiff_t border = side / 2;
  const Vek8u* corner = pSrc - border * srcStep - border * 3;
  forEachStrip(roiSize.width, colorMedianColumns(side) - 2 * border,
               [&](ptrdiff_t x, ptrdiff_t columns) {
                 filter({corner + 3 * x, srcStep, pDst + 3 * x, dstStep, columns, roiSize.height});
               });
  return vekStsNoErr;
}

}  // namespace
}  // namespace vek

extern "C" VekStatus vekiFilterMedianColor_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst,
                                                  int dstStep, VekiSize roiSize, int mask) {
  return vek::filterColorMedian(pSrc, srcStep, pDst, dstStep, roiSize, mask);
}
