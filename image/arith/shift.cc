// Logical shifts by constants.
#include "vek/image.h"

#include "image/arith/shift_kernels.h"

namespace vek {
namespace {

/// The kernels of one direction, and the factor that stands for an amount in those of C3.
struct Direction {
  ShiftRow uniform;
  PointwiseRow mixed;
  Vek8u (*factor)(Vek32u amount);
};

Direction toTheRight() {
  const ShiftKernels& kernels = select(shiftKernels);
  return {kernels.right, kernels.rightC3,
          [](Vek32u amount) { return static_cast<Vek8u>(amount < 8 ? 0x80 >> amount : 0); }};
}

Direction toTheLeft() {
  const ShiftKernels& kernels = select(shiftKernels);
  return {kernels.left, kernels.leftC3,
          [](Vek32u amount) { return static_cast<Vek8u>(amount < 8 ? 1 << amount : 0); }};
}

/// One amount for each channel. Amounts of 8 or more leave 0.
VekStatus shift(Direction (*direction)(), const Vek8u* pSrc, int srcStep, const Vek32u* value,
                Vek8u* pDst, int dstStep, VekiSize roi, int channels) {
  const VekStatus status = checkPointersStepsSize({pSrc, pDst, value}, {srcStep, dstStep}, roi);
  if (status != vekStsNoErr) return status;
  const Direction kernels = direction();
  Vek8u factors[3] = {};
  bool same = true;
  for (int c = 0; c < channels; ++c) {
    factors[c] = kernels.factor(value[c]);
    same = same && factors[c] == factors[0];
  }
  const auto walk = [=](auto row) {
    forEachRow(rowBytes(roi, channels), roi.height, row, Plane{pDst, dstStep},
               Plane{pSrc, srcStep});
  };
  if (!same) {
    const Pattern pattern(factors, channels);
    walk([&](ptrdiff_t n, Vek8u* dst, const Vek8u* src) {
      kernels.mixed(src, pattern.bytes, n, dst);
    });
  } else if (factors[0] != 0) {
    const int amount = static_cast<int>(value[0]);
    walk([=](ptrdiff_t n, Vek8u* dst, const Vek8u* src) { kernels.uniform(src, n, amount, dst); });
  } else {
    walk([](ptrdiff_t n, Vek8u* dst, const Vek8u* src) { zeroRow(src, nullptr, n, dst); });
  }
  return vekStsNoErr;
}

}  // namespace
}  // namespace vek

extern "C" VekStatus vekiRShiftC_8u_C1R(const Vek8u* pSrc, int srcStep, Vek32u value, Vek8u* pDst,
                                        int dstStep, VekiSize roiSize) {
  return vek::shift(vek::toTheRight, pSrc, srcStep, &value, pDst, dstStep, roiSize, 1);
}

extern "C" VekStatus vekiRShiftC_8u_C3R(const Vek8u* pSrc, int srcStep, const Vek32u value[3],
                                        Vek8u* pDst, int dstStep, VekiSize roiSize) {
  return vek::shift(vek::toTheRight, pSrc, srcStep, value, pDst, dstStep, roiSize, 3);
}

extern "C" VekStatus vekiLShiftC_8u_C1R(const Vek8u* pSrc, int srcStep, Vek32u value, Vek8u* pDst,
                                        int dstStep, VekiSize roiSize) {
  return vek::shift(vek::toTheLeft, pSrc, srcStep, &value, pDst, dstStep, roiSize, 1);
}

extern "C" VekStatus vekiLShiftC_8u_C3R(const Vek8u* pSrc, int srcStep, const Vek32u value[3],
                                        Vek8u* pDst, int dstStep, VekiSize roiSize) {
  return vek::shift(vek::toTheLeft, pSrc, srcStep, value, pDst, dstStep, roiSize, 3);
}
