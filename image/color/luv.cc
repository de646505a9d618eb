// RGB to and from CIE LUV.
#include "vek/image.h"

#include "core/check.h"
#include "image/color/luv_rows.h"

namespace vek {
namespace {

VekStatus convert(PixelRow LuvRows::*kernel, const Vek8u* pSrc, int srcStep, Vek8u* pDst,
                  int dstStep, VekiSize roi) {
  return convertRegion(checkPointersStepsSize({pDst, pSrc}, {srcStep, dstStep}, roi),
                       select(luvRows).*kernel, pSrc, srcStep, pDst, dstStep, roi);
}

}  // namespace
}  // namespace vek

extern "C" {

VekStatus vekiRGBToLUV_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                              VekiSize roiSize) {
  return vek::convert(&vek::LuvRows::rgbToLuv, pSrc, srcStep, pDst, dstStep, roiSize);
}

VekStatus vekiLUVToRGB_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                              VekiSize roiSize) {
  return vek::convert(&vek::LuvRows::luvToRgb, pSrc, srcStep, pDst, dstStep, roiSize);
}

}  // extern "C"
