// RGB to and from HLS and HSV.
#include "vek/image.h"

#include "core/check.h"
#include "image/color/hue_kernels.h"

namespace vek {
namespace {

const HueKernels& kernels() {
  return select(hueKernels);
}

VekStatus convert(ConvertRow row, const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                  VekiSize roi) {
  const VekStatus status = checkPointersSizeSteps({pDst, pSrc}, roi, {srcStep, dstStep});
  if (status != vekStsNoErr) return status;
  convertTriples(row, pSrc, srcStep, pDst, dstStep, roi);
  return vekStsNoErr;
}

}  // namespace
}  // namespace vek

extern "C" VekStatus vekiRGBToHLS_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                         VekiSize roiSize) {
  return vek::convert(vek::kernels().rgbToHls, pSrc, srcStep, pDst, dstStep, roiSize);
}

extern "C" VekStatus vekiHLSToRGB_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                         VekiSize roiSize) {
  return vek::convert(vek::kernels().hlsToRgb, pSrc, srcStep, pDst, dstStep, roiSize);
}

extern "C" VekStatus vekiRGBToHSV_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                         VekiSize roiSize) {
  return vek::convert(vek::kernels().rgbToHsv, pSrc, srcStep, pDst, dstStep, roiSize);
}

extern "C" VekStatus vekiHSVToRGB_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                         VekiSize roiSize) {
  return vek::convert(vek::kernels().hsvToRgb, pSrc, srcStep, pDst, dstStep, roiSize);
}
