// RGB to and from CIE LUV.
#include "vek/image.h"

#include "core/check.h"
#include "core/region.h"
#include "image/color/luv_rows.h"

namespace vek {
namespace {

VekStatus convert(decltype(LuvRows::rgbToLuv) LuvRows::*kernel, const Vek8u* pSrc, int srcStep,
                  Vek8u* pDst, int dstStep, VekiSize roi) {
  const VekStatus status = checkPointersStepsSize({pDst, pSrc}, {srcStep, dstStep}, roi);
  if (status != vekStsNoErr) return status;
  const auto row = select(luvRows).*kernel;
  forEachRow(
      ptrdiff_t{3} * roi.width, roi.height,
      [row](ptrdiff_t bytes, const Vek8u* src, Vek8u* dst) { row(src, dst, bytes / 3); },
      Plane{pSrc, srcStep}, Plane{pDst, dstStep});
  return vekStsNoErr;
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
