// Linear combinations of channels: gray, colour twist, XYZ, YCC.
#include "vek/image.h"

#include "core/check.h"
#include "image/color/pixel_rows.h"
#include "image/color/twist_body.h"
#include "image/color/twist_kernels.h"

namespace vek {
namespace {

using portable::grayQ14;
using portable::twist;

/// As the callers hand them over: `const Vek32s twist[3][4]`.
using TwistMatrix = Vek32s[3][4];
using TwistMatrixRow = Vek32s[4];

constexpr TwistMatrix rgbToXyz = {
    {6758, 5859, 2956, 0}, {3484, 11717, 1182, 0}, {317, 1953, 15569, 0}};
constexpr TwistMatrix xyzToRgb = {
    {53092, -25185, -8168, 0}, {-15880, 30736, 681, 0}, {912, -3343, 17323, 0}};
constexpr TwistMatrix rgbToYcc = {
    {3494, 6860, 1332, 0}, {-2140, -4201, 6342, 2555904}, {6109, -5116, -994, 2244608}};
constexpr TwistMatrix yccToRgb = {
    {22256, 0, 29843, -4088553}, {22256, -7050, -15190, 3180809}, {22256, 36338, 0, -5668739}};

/// Runs row(src, dst, n) on the region's pixels.
template <class Row>
void colorToGray(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep, VekiSize roi, Row row) {
  forEachPixelRow(
      roi, [&](ptrdiff_t n, const Vek8u* src, Vek8u* dst) { row(src, dst, n); },
      PixelRows<const Vek8u, 3>{{pSrc, srcStep}}, PixelRows<Vek8u, 1>{{pDst, dstStep}});
}

void ColorTwist32s_Q14_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                              VekiSize roi, const TwistMatrixRow* matrix) {
  Combination channels[3];
  bool narrow = true;
  for (int k = 0; k < 3; ++k) {
    const Vek32s* row = matrix[k];
    channels[k] = {{row[0] >> 4, row[1] >> 4, row[2] >> 4}, row[3] >> 4};
    narrow = narrow && fitsWords(channels[k]);
  }
  const auto row = narrow ? select(twistKernels).twistQ10 : &twist<Vek64s>;
  forEachPixelRow(
      roi, [&](ptrdiff_t n, const Vek8u* src, Vek8u* dst) { row(src, dst, n, channels); },
      PixelRows<const Vek8u, 3>{{pSrc, srcStep}}, PixelRows<Vek8u, 3>{{pDst, dstStep}});
}

VekStatus twistBy(const TwistMatrixRow* matrix, const Vek8u* pSrc, int srcStep, Vek8u* pDst,
                  int dstStep, VekiSize roi) {
  const VekStatus status = checkPointersSizeSteps({pDst, pSrc}, roi, {srcStep, dstStep});
  if (status == vekStsNoErr) ColorTwist32s_Q14_8u_C3R(pSrc, srcStep, pDst, dstStep, roi, matrix);
  return status;
}

}  // namespace
}  // namespace vek

extern "C" {

VekStatus vekiRGBToGray_8u_C3C1R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                 VekiSize roiSize) {
  const VekStatus status = vek::checkPointersStepsSize({pDst, pSrc}, {srcStep, dstStep}, roiSize);
  if (status != vekStsNoErr) return status;
  vek::colorToGray(pSrc, srcStep, pDst, dstStep, roiSize, vek::select(vek::twistKernels).luma);
  return vekStsNoErr;
}

VekStatus vekiColorToGrayQ14_8u_C3C1R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                      VekiSize roiSize, const Vek32s coeffs[3]) {
  if (vek::anyNull({pDst, pSrc})) return vekStsNullPtrErr;
  if (vek::anyBelowOne({srcStep, dstStep})) return vekStsStepErr;
  if (coeffs == nullptr) return vekStsNullPtrErr;
  if (vek::isEmpty(roiSize)) return vekStsSizeErr;
  const vek::Combination weights = {{coeffs[0], coeffs[1], coeffs[2]}, 0};
  const auto kernel =
      vek::fitsWords(weights) ? vek::select(vek::twistKernels).grayQ14 : &vek::grayQ14<Vek64s>;
  vek::colorToGray(
      pSrc, srcStep, pDst, dstStep, roiSize,
      [&](const Vek8u* src, Vek8u* dst, ptrdiff_t n) { kernel(src, dst, n, weights); });
  return vekStsNoErr;
}

VekStatus vekiColorTwistQ14_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                   VekiSize roiSize, const Vek32s twist[3][4]) {
  if (vek::anyNull({pDst, pSrc, twist})) return vekStsNullPtrErr;
  if (vek::isEmpty(roiSize)) return vekStsSizeErr;
  vek::ColorTwist32s_Q14_8u_C3R(pSrc, srcStep, pDst, dstStep, roiSize, twist);
  return vekStsNoErr;
}

VekStatus vekiRGBToXYZ_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                              VekiSize roiSize) {
  return vek::twistBy(vek::rgbToXyz, pSrc, srcStep, pDst, dstStep, roiSize);
}

VekStatus vekiXYZToRGB_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                              VekiSize roiSize) {
  return vek::twistBy(vek::xyzToRgb, pSrc, srcStep, pDst, dstStep, roiSize);
}

VekStatus vekiRGBToYCC_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                              VekiSize roiSize) {
  return vek::twistBy(vek::rgbToYcc, pSrc, srcStep, pDst, dstStep, roiSize);
}

VekStatus vekiYCCToRGB_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                              VekiSize roiSize) {
  return vek::twistBy(vek::yccToRgb, pSrc, srcStep, pDst, dstStep, roiSize);
}

}  // extern "C"
