// Linear combinations of channels: gray, colour twist, XYZ, YCC.
#include "vek/image.h"

#include "core/check.h"
#include "image/color/twist_kernels.h"

namespace vek {
namespace {

/// As the callers hand them over, `const Vek32s twist[3][4]`: each row has the Q14 weights of one
/// output channel and its offset.
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

/// Runs row(n, src, dst) on the region's pixels.
template <class Row>
void toGray(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep, VekiSize roi, Row row) {
  forEachRow(roi.width, roi.height, row, Triples<const Vek8u>{pSrc, srcStep},
             Plane<Vek8u>{pDst, dstStep});
}

/// @quirk The matrix has 14 fractional bits, but four of them are dropped before anything is
/// multiplied, those of the offset too. The results of Q10 arithmetic are part of the interface.
void twistRegion(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep, VekiSize roi,
                 const TwistMatrixRow* matrix) {
  Combination channels[3];
  bool narrow = true;
  for (int k = 0; k < 3; ++k) {
    const Vek32s* entries = matrix[k];
    channels[k] = {{entries[0] >> 4, entries[1] >> 4, entries[2] >> 4}, entries[3] >> 4};
    narrow = narrow && fits16Bits(channels[k]);
  }
  const TwistRow twist = narrow ? select(twistKernels).twistQ10 : portable::wideTwistQ10;
  forEachRow(
      roi.width, roi.height,
      [&](ptrdiff_t n, const Vek8u* src, Vek8u* dst) { twist(n, src, dst, channels); },
      Triples<const Vek8u>{pSrc, srcStep}, Triples<Vek8u>{pDst, dstStep});
}

VekStatus twistBy(const TwistMatrixRow* matrix, const Vek8u* pSrc, int srcStep, Vek8u* pDst,
                  int dstStep, VekiSize roi) {
  const VekStatus status = checkPointersSizeSteps({pDst, pSrc}, roi, {srcStep, dstStep});
  if (status == vekStsNoErr) twistRegion(pSrc, srcStep, pDst, dstStep, roi, matrix);
  return status;
}

}  // namespace
}  // namespace vek

extern "C" VekStatus vekiRGBToGray_8u_C3C1R(const Vek8u* pSrc, int srcStep, Vek8u* pDst,
                                            int dstStep, VekiSize roiSize) {
  const VekStatus status = vek::checkPointersStepsSize({pDst, pSrc}, {srcStep, dstStep}, roiSize);
  if (status != vekStsNoErr) return status;
  vek::toGray(pSrc, srcStep, pDst, dstStep, roiSize, vek::select(vek::twistKernels).luma);
  return vekStsNoErr;
}

extern "C" VekStatus vekiColorToGrayQ14_8u_C3C1R(const Vek8u* pSrc, int srcStep, Vek8u* pDst,
                                                 int dstStep, VekiSize roiSize,
                                                 const Vek32s coeffs[3]) {
  if (vek::anyNull({pDst, pSrc})) return vekStsNullPtrErr;
  if (vek::anyBelowOne({srcStep, dstStep})) return vekStsStepErr;
  if (coeffs == nullptr) return vekStsNullPtrErr;
  if (vek::isEmpty(roiSize)) return vekStsSizeErr;
  const vek::Combination weights = {{coeffs[0], coeffs[1], coeffs[2]}, 0};
  const vek::GrayRow gray = vek::fits16Bits(weights) ? vek::select(vek::twistKernels).grayQ14
                                                     : vek::portable::wideGrayQ14;
  vek::toGray(pSrc, srcStep, pDst, dstStep, roiSize,
              [&](ptrdiff_t n, const Vek8u* src, Vek8u* dst) { gray(n, src, dst, weights); });
  return vekStsNoErr;
}

/// @quirk Unlike the other conversions this one refuses no step: 0 and negative ones are rows that
/// are read again, or upwards.
extern "C" VekStatus vekiColorTwistQ14_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst,
                                              int dstStep, VekiSize roiSize,
                                              const Vek32s twist[3][4]) {
  if (vek::anyNull({pDst, pSrc, twist})) return vekStsNullPtrErr;
  if (vek::isEmpty(roiSize)) return vekStsSizeErr;
  vek::twistRegion(pSrc, srcStep, pDst, dstStep, roiSize, twist);
  return vekStsNoErr;
}

extern "C" VekStatus vekiRGBToXYZ_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                         VekiSize roiSize) {
  return vek::twistBy(vek::rgbToXyz, pSrc, srcStep, pDst, dstStep, roiSize);
}

extern "C" VekStatus vekiXYZToRGB_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                         VekiSize roiSize) {
  return vek::twistBy(vek::xyzToRgb, pSrc, srcStep, pDst, dstStep, roiSize);
}

extern "C" VekStatus vekiRGBToYCC_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                         VekiSize roiSize) {
  return vek::twistBy(vek::rgbToYcc, pSrc, srcStep, pDst, dstStep, roiSize);
}

extern "C" VekStatus vekiYCCToRGB_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                         VekiSize roiSize) {
  return vek::twistBy(vek::yccToRgb, pSrc, srcStep, pDst, dstStep, roiSize);
}
