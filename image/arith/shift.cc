// Logical shifts by constants.
#include "vek/image.h"

#include "image/arith/shift_kernels.h"

namespace vek {
namespace {

/// One amount for each channel. Amounts of 8 or more leave 0.
VekStatus shift(ShiftRow uniform, PointwiseRow mixed, const Vek8u* pSrc, int srcStep,
                const Vek32u* value, Vek8u* pDst, int dstStep, VekiSize roi, int channels) {
  const VekStatus status = checkPointersStepsSize({pSrc, pDst, value}, {srcStep, dstStep}, roi);
  if (status != vekStsNoErr) return status;
  Vek8u amounts[3] = {};
  bool same = true;
  for (int c = 0; c < channels; ++c) {
    amounts[c] = static_cast<Vek8u>(value[c] < 8 ? value[c] : 8);
    same = same && amounts[c] == amounts[0];
  }
  const auto walk = [=](auto row) {
    forEachRow(rowBytes(roi, channels), roi.height, row, Plane{pDst, dstStep},
               Plane{pSrc, srcStep});
  };
  if (!same) {
    const Pattern pattern(amounts, channels);
    walk([&](ptrdiff_t n, Vek8u* dst, const Vek8u* src) { mixed(src, pattern.bytes, n, dst); });
  } else if (amounts[0] < 8) {
    walk([=](ptrdiff_t n, Vek8u* dst, const Vek8u* src) { uniform(src, n, amounts[0], dst); });
  } else {
    walk([](ptrdiff_t n, Vek8u* dst, const Vek8u* src) { zeroRow(src, nullptr, n, dst); });
  }
  return vekStsNoErr;
}

VekStatus shiftRight(const Vek8u* pSrc, int srcStep, const Vek32u* value, Vek8u* pDst, int dstStep,
                     VekiSize roi, int channels) {
  const ShiftKernels& kernels = select(shiftKernels);
  return shift(kernels.right, kernels.rightC3, pSrc, srcStep, value, pDst, dstStep, roi, channels);
}

VekStatus shiftLeft(const Vek8u* pSrc, int srcStep, const Vek32u* value, Vek8u* pDst, int dstStep,
                    VekiSize roi, int channels) {
  const ShiftKernels& kernels = select(shiftKernels);
  return shift(kernels.left, kernels.leftC3, pSrc, srcStep, value, pDst, dstStep, roi, channels);
}

}  // namespace
}  // namespace vek

extern "C" VekStatus vekiRShiftC_8u_C1R(const Vek8u* pSrc, int srcStep, Vek32u value, Vek8u* pDst,
                                        int dstStep, VekiSize roiSize) {
  return vek::shiftRight(pSrc, srcStep, &value, pDst, dstStep, roiSize, 1);
}

extern "C" VekStatus vekiRShiftC_8u_C3R(const Vek8u* pSrc, int srcStep, const Vek32u value[3],
                                        Vek8u* pDst, int dstStep, VekiSize roiSize) {
  return vek::shiftRight(pSrc, srcStep, value, pDst, dstStep, roiSize, 3);
}

extern "C" VekStatus vekiLShiftC_8u_C1R(const Vek8u* pSrc, int srcStep, Vek32u value, Vek8u* pDst,
                                        int dstStep, VekiSize roiSize) {
  return vek::shiftLeft(pSrc, srcStep, &value, pDst, dstStep, roiSize, 1);
}

extern "C" VekStatus vekiLShiftC_8u_C3R(const Vek8u* pSrc, int srcStep, const Vek32u value[3],
                                        Vek8u* pDst, int dstStep, VekiSize roiSize) {
  return vek::shiftLeft(pSrc, srcStep, value, pDst, dstStep, roiSize, 3);
}
