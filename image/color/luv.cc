// RGB to and from CIE LUV.
#include "vek/image.h"

#include "core/check.h"
#include "image/color/luv_kernels.h"

namespace vek {
namespace {

const LuvKernels& kernels() {
  return select(luvKernels);
}

VekStatus convert(ConvertRow row, const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                  VekiSize roi) {
  const VekStatus status = checkPointersStepsSize({pDst, pSrc}, {srcStep, dstStep}, roi);
  if (status != vekStsNoErr) return status;
  convertTriples(row, pSrc, srcStep, pDst, dstStep, roi);
  return vekStsNoErr;
}

}  // namespace
}  // namespace vek

extern "C" VekStatus vekiRGBToLUV_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                         VekiSize roiSize) {
  return vek::convert(vek::kernels().rgbToLuv, pSrc, srcStep, pDst, dstStep, roiSize);
}

extern "C" VekStatus vekiLUVToRGB_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                         VekiSize roiSize) {
  return vek::convert(vek::kernels().luvToRgb, pSrc, srcStep, pDst, dstStep, roiSize);
}
