// RGB to and from HLS and HSV.
#include "vek/image.h"

#include "core/check.h"
#include "core/region.h"
#include "image/color/hue_rows.h"

namespace vek {
namespace {

VekStatus convert(PixelRow HueRows::*kernel, const Vek8u* pSrc, int srcStep, Vek8u* pDst,
                  int dstStep, VekiSize roi) {
  const VekStatus status = checkPointersSizeSteps({pDst, pSrc}, roi, {srcStep, dstStep});
  if (status != vekStsNoErr) return status;
  const PixelRow row = select(hueRows).*kernel;
  forEachRow(
      ptrdiff_t{3} * roi.width, roi.height,
      [row](ptrdiff_t bytes, const Vek8u* src, Vek8u* dst) { row(src, dst, bytes / 3); },
      Plane{pSrc, srcStep}, Plane{pDst, dstStep});
  return vekStsNoErr;
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
