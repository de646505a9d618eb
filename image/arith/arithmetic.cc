// Arithmetic with a scale factor, and multiplication scaled by 1/255.
#include "vek/image.h"

#include "image/arith/arithmetic_kernels.h"
#include "image/arith/pointwise.h"

namespace vek {
namespace {

void zeroScaledRow(const Vek8u* a, const Vek8u* b, ptrdiff_t n, int, Vek8u* dst) {
  zeroRow(a, b, n, dst);
}

/// One of an operation's kernels with its shift.
struct Scaled {
  ScaledRow kernel;
  int shift;

  void operator()(const Vek8u* a, const Vek8u* b, ptrdiff_t n, Vek8u* dst) const {
    kernel(a, b, n, shift, dst);
  }
};

/// Exact values are below 2^16, so a factor above 16 rounds every one to 0, and one below -8
/// saturates as -8 does: what is not 0 becomes at least 256.
Scaled scaled(const ScaledKernels& rows, int scaleFactor) {
  if (scaleFactor > 16) return {zeroScaledRow, 0};
  if (scaleFactor > 0) return {rows.shiftRight, scaleFactor};
  if (scaleFactor == 0) return {rows.plain, 0};
  return {rows.shiftLeft, scaleFactor > -8 ? -scaleFactor : 8};
}

const ArithmeticKernels& kernels() {
  return select(arithmeticKernels);
}

}  // namespace
}  // namespace vek

extern "C" VekStatus vekiAdd_8u_C1RSfs(const Vek8u* pSrcA, int srcAStep, const Vek8u* pSrcB,
                                       int srcBStep, Vek8u* pDst, int dstStep, VekiSize roiSize,
                                       int scaleFactor) {
  return vek::combineImages(pSrcA, srcAStep, pSrcB, srcBStep, pDst, dstStep, roiSize, 1,
                            vek::scaled(vek::kernels().add, scaleFactor));
}

extern "C" VekStatus vekiAdd_8u_C3RSfs(const Vek8u* pSrcA, int srcAStep, const Vek8u* pSrcB,
                                       int srcBStep, Vek8u* pDst, int dstStep, VekiSize roiSize,
                                       int scaleFactor) {
  return vek::combineImages(pSrcA, srcAStep, pSrcB, srcBStep, pDst, dstStep, roiSize, 3,
                            vek::scaled(vek::kernels().add, scaleFactor));
}

extern "C" VekStatus vekiAddC_8u_C1RSfs(const Vek8u* pSrc, int srcStep, Vek8u value, Vek8u* pDst,
                                        int dstStep, VekiSize roiSize, int scaleFactor) {
  return vek::combineWithConstants(pSrc, srcStep, &value, pDst, dstStep, roiSize, 1,
                                   vek::scaled(vek::kernels().addC, scaleFactor));
}

extern "C" VekStatus vekiAddC_8u_C3RSfs(const Vek8u* pSrc, int srcStep, const Vek8u value[3],
                                        Vek8u* pDst, int dstStep, VekiSize roiSize,
                                        int scaleFactor) {
  return vek::combineWithConstants(pSrc, srcStep, value, pDst, dstStep, roiSize, 3,
                                   vek::scaled(vek::kernels().addC, scaleFactor));
}

// @quirk The second image minus the first.
extern "C" VekStatus vekiSub_8u_C1RSfs(const Vek8u* pSrcA, int srcAStep, const Vek8u* pSrcB,
                                       int srcBStep, Vek8u* pDst, int dstStep, VekiSize roiSize,
                                       int scaleFactor) {
  return vek::combineImages(pSrcB, srcBStep, pSrcA, srcAStep, pDst, dstStep, roiSize, 1,
                            vek::scaled(vek::kernels().sub, scaleFactor));
}

extern "C" VekStatus vekiSub_8u_C3RSfs(const Vek8u* pSrcA, int srcAStep, const Vek8u* pSrcB,
                                       int srcBStep, Vek8u* pDst, int dstStep, VekiSize roiSize,
                                       int scaleFactor) {
  return vek::combineImages(pSrcB, srcBStep, pSrcA, srcAStep, pDst, dstStep, roiSize, 3,
                            vek::scaled(vek::kernels().sub, scaleFactor));
}

extern "C" VekStatus vekiSubC_8u_C1RSfs(const Vek8u* pSrc, int srcStep, Vek8u value, Vek8u* pDst,
                                        int dstStep, VekiSize roiSize, int scaleFactor) {
  return vek::combineWithConstants(pSrc, srcStep, &value, pDst, dstStep, roiSize, 1,
                                   vek::scaled(vek::kernels().subC, scaleFactor));
}

extern "C" VekStatus vekiSubC_8u_C3RSfs(const Vek8u* pSrc, int srcStep, const Vek8u value[3],
                                        Vek8u* pDst, int dstStep, VekiSize roiSize,
                                        int scaleFactor) {
  return vek::combineWithConstants(pSrc, srcStep, value, pDst, dstStep, roiSize, 3,
                                   vek::scaled(vek::kernels().subC, scaleFactor));
}

extern "C" VekStatus vekiMul_8u_C1RSfs(const Vek8u* pSrcA, int srcAStep, const Vek8u* pSrcB,
                                       int srcBStep, Vek8u* pDst, int dstStep, VekiSize roiSize,
                                       int scaleFactor) {
  return vek::combineImages(pSrcA, srcAStep, pSrcB, srcBStep, pDst, dstStep, roiSize, 1,
                            vek::scaled(vek::kernels().mul, scaleFactor));
}

extern "C" VekStatus vekiMul_8u_C3RSfs(const Vek8u* pSrcA, int srcAStep, const Vek8u* pSrcB,
                                       int srcBStep, Vek8u* pDst, int dstStep, VekiSize roiSize,
                                       int scaleFactor) {
  return vek::combineImages(pSrcA, srcAStep, pSrcB, srcBStep, pDst, dstStep, roiSize, 3,
                            vek::scaled(vek::kernels().mul, scaleFactor));
}

extern "C" VekStatus vekiMulC_8u_C1RSfs(const Vek8u* pSrc, int srcStep, Vek8u value, Vek8u* pDst,
                                        int dstStep, VekiSize roiSize, int scaleFactor) {
  return vek::combineWithConstants(pSrc, srcStep, &value, pDst, dstStep, roiSize, 1,
                                   vek::scaled(vek::kernels().mulC, scaleFactor));
}

extern "C" VekStatus vekiMulC_8u_C3RSfs(const Vek8u* pSrc, int srcStep, const Vek8u value[3],
                                        Vek8u* pDst, int dstStep, VekiSize roiSize,
                                        int scaleFactor) {
  return vek::combineWithConstants(pSrc, srcStep, value, pDst, dstStep, roiSize, 3,
                                   vek::scaled(vek::kernels().mulC, scaleFactor));
}

extern "C" VekStatus vekiSqr_8u_C1RSfs(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                       VekiSize roiSize, int scaleFactor) {
  return vek::combineImages(pSrc, srcStep, pSrc, srcStep, pDst, dstStep, roiSize, 1,
                            vek::scaled(vek::kernels().mul, scaleFactor));
}

extern "C" VekStatus vekiSqr_8u_C3RSfs(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                       VekiSize roiSize, int scaleFactor) {
  return vek::combineImages(pSrc, srcStep, pSrc, srcStep, pDst, dstStep, roiSize, 3,
                            vek::scaled(vek::kernels().mul, scaleFactor));
}

extern "C" VekStatus vekiMulScale_8u_C1R(const Vek8u* pSrcA, int srcAStep, const Vek8u* pSrcB,
                                         int srcBStep, Vek8u* pDst, int dstStep, VekiSize roiSize) {
  return vek::combineImages(pSrcA, srcAStep, pSrcB, srcBStep, pDst, dstStep, roiSize, 1,
                            vek::kernels().mulScale);
}

extern "C" VekStatus vekiMulScale_8u_C3R(const Vek8u* pSrcA, int srcAStep, const Vek8u* pSrcB,
                                         int srcBStep, Vek8u* pDst, int dstStep, VekiSize roiSize) {
  return vek::combineImages(pSrcA, srcAStep, pSrcB, srcBStep, pDst, dstStep, roiSize, 3,
                            vek::kernels().mulScale);
}

extern "C" VekStatus vekiMulCScale_8u_C1R(const Vek8u* pSrc, int srcStep, Vek8u value, Vek8u* pDst,
                                          int dstStep, VekiSize roiSize) {
  return vek::combineWithConstants(pSrc, srcStep, &value, pDst, dstStep, roiSize, 1,
                                   vek::kernels().mulScaleC);
}

extern "C" VekStatus vekiMulCScale_8u_C3R(const Vek8u* pSrc, int srcStep, const Vek8u value[3],
                                          Vek8u* pDst, int dstStep, VekiSize roiSize) {
  return vek::combineWithConstants(pSrc, srcStep, value, pDst, dstStep, roiSize, 3,
                                   vek::kernels().mulScaleC);
}
