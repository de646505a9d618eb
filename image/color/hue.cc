// RGB to and from HLS and HSV.
#include "vek/image.h"

#include "core/check.h"
#include "image/color/hue_kernels.h"

namespace vek {
namespace {

VekStatus convert(PixelRow HueKernels::*kernel, const Vek8u* pSrc, int srcStep, Vek8u* pDst,
                  int dstStep, VekiSize roi) {
  return convertRegion(checkPointersSizeSteps({pDst, pSrc}, roi, {srcStep, dstStep}),
                       select(hueKernels).*kernel, pSrc, srcStep, pDst, dstStep, roi);
}

}  // namespace
}  // namespace vek

extern "C" {

VekStatus vekiRGBToHLS_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                              VekiSize roiSize) {
  return vek::convert(&vek::HueKernels::rgbToHls, pSrc, srcStep, pDst, dstStep, roiSize);
}

VekStatus vekiHLSToRGB_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                              VekiSize roiSize) {
  return vek::convert(&vek::HueKernels::hlsToRgb, pSrc, srcStep, pDst, dstStep, roiSize);
}

VekStatus vekiRGBToHSV_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                              VekiSize roiSize) {
  return vek::convert(&vek::HueKernels::rgbToHsv, pSrc, srcStep, pDst, dstStep, roiSize);
}

VekStatus vekiHSVToRGB_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                              VekiSize roiSize) {
  return vek::convert(&vek::HueKernels::hsvToRgb, pSrc, srcStep, pDst, dstStep, roiSize);
}

}  // extern "C"
