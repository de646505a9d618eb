// RGB to and from CIE LUV.
#include "vek/image.h"

#include "core/check.h"
#include "image/color/luv_kernels.h"

namespace vek {
namespace {

VekStatus convert(PixelRow LuvKernels::*kernel, const Vek8u* pSrc, int srcStep, Vek8u* pDst,
                  int dstStep, VekiSize roi) {
  return convertRegion(checkPointersStepsSize({pDst, pSrc}, {srcStep, dstStep}, roi),
                       select(luvKernels).*kernel, pSrc, srcStep, pDst, dstStep, roi);
}

}  // namespace
}  // namespace vek

extern "C" {

VekStatus vekiRGBToLUV_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                              VekiSize roiSize) {
  return vek::convert(&vek::LuvKernels::rgbToLuv, pSrc, srcStep, pDst, dstStep, roiSize);
}

VekStatus vekiLUVToRGB_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                              VekiSize roiSize) {
  return vek::convert(&vek::LuvKernels::luvToRgb, pSrc, srcStep, pDst, dstStep, roiSize);
}

}  // extern "C"
