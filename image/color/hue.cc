// RGB to and from HLS and HSV.
#include "vek/image.h"

#include "core/check.h"
#include "image/color/hue_rows.h"

namespace vek {
namespace {

VekStatus convert(PixelRow HueRows::*kernel, const Vek8u* pSrc, int srcStep, Vek8u* pDst,
                  int dstStep, VekiSize roi) {
  return convertRegion(checkPointersSizeSteps({pDst, pSrc}, roi, {srcStep, dstStep}),
                       select(hueRows).*kernel, pSrc, srcStep, pDst, dstStep, roi);
}

}  // namespace
}  // namespace vek

extern "C" {

VekStatus vekiRGBToHLS_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                              VekiSize roiSize) {
  return vek::convert(&vek::HueRows::rgbToHls, pSrc, srcStep, pDst, dstStep, roiSize);
}

VekStatus vekiHLSToRGB_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                              VekiSize roiSize) {
  return vek::convert(&vek::HueRows::hlsToRgb, pSrc, srcStep, pDst, dstStep, roiSize);
}

VekStatus vekiRGBToHSV_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                              VekiSize roiSize) {
  return vek::convert(&vek::HueRows::rgbToHsv, pSrc, srcStep, pDst, dstStep, roiSize);
}

VekStatus vekiHSVToRGB_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                              VekiSize roiSize) {
  return vek::convert(&vek::HueRows::hsvToRgb, pSrc, srcStep, pDst, dstStep, roiSize);
}

}  // extern "C"
