// Bitwise logic.
#include "vek/image.h"

#include "image/arith/logic_kernels.h"

namespace vek {
namespace {

/// Exclusive or with these is Not.
constexpr Vek8u allBits[3] = {255, 255, 255};

const LogicKernels& kernels() {
  return select(logicKernels);
}

}  // namespace
}  // namespace vek

extern "C" VekStatus vekiAnd_8u_C1R(const Vek8u* pSrcA, int srcAStep, const Vek8u* pSrcB,
                                    int srcBStep, Vek8u* pDst, int dstStep, VekiSize roiSize) {
  return vek::combineImages(pSrcA, srcAStep, pSrcB, srcBStep, pDst, dstStep, roiSize, 1,
                            vek::kernels().andImage);
}

extern "C" VekStatus vekiAnd_8u_C3R(const Vek8u* pSrcA, int srcAStep, const Vek8u* pSrcB,
                                    int srcBStep, Vek8u* pDst, int dstStep, VekiSize roiSize) {
  return vek::combineImages(pSrcA, srcAStep, pSrcB, srcBStep, pDst, dstStep, roiSize, 3,
                            vek::kernels().andImage);
}

extern "C" VekStatus vekiOr_8u_C1R(const Vek8u* pSrcA, int srcAStep, const Vek8u* pSrcB,
                                   int srcBStep, Vek8u* pDst, int dstStep, VekiSize roiSize) {
  return vek::combineImages(pSrcA, srcAStep, pSrcB, srcBStep, pDst, dstStep, roiSize, 1,
                            vek::kernels().orImage);
}

extern "C" VekStatus vekiOr_8u_C3R(const Vek8u* pSrcA, int srcAStep, const Vek8u* pSrcB,
                                   int srcBStep, Vek8u* pDst, int dstStep, VekiSize roiSize) {
  return vek::combineImages(pSrcA, srcAStep, pSrcB, srcBStep, pDst, dstStep, roiSize, 3,
                            vek::kernels().orImage);
}

extern "C" VekStatus vekiXor_8u_C1R(const Vek8u* pSrcA, int srcAStep, const Vek8u* pSrcB,
                                    int srcBStep, Vek8u* pDst, int dstStep, VekiSize roiSize) {
  return vek::combineImages(pSrcA, srcAStep, pSrcB, srcBStep, pDst, dstStep, roiSize, 1,
                            vek::kernels().xorImage);
}

extern "C" VekStatus vekiXor_8u_C3R(const Vek8u* pSrcA, int srcAStep, const Vek8u* pSrcB,
                                    int srcBStep, Vek8u* pDst, int dstStep, VekiSize roiSize) {
  return vek::combineImages(pSrcA, srcAStep, pSrcB, srcBStep, pDst, dstStep, roiSize, 3,
                            vek::kernels().xorImage);
}

extern "C" VekStatus vekiAndC_8u_C1R(const Vek8u* pSrc, int srcStep, Vek8u value, Vek8u* pDst,
                                     int dstStep, VekiSize roiSize) {
  return vek::combineWithConstants(pSrc, srcStep, &value, pDst, dstStep, roiSize, 1,
                                   vek::kernels().andC);
}

extern "C" VekStatus vekiAndC_8u_C3R(const Vek8u* pSrc, int srcStep, const Vek8u value[3],
                                     Vek8u* pDst, int dstStep, VekiSize roiSize) {
  return vek::combineWithConstants(pSrc, srcStep, value, pDst, dstStep, roiSize, 3,
                                   vek::kernels().andC);
}

extern "C" VekStatus vekiOrC_8u_C1R(const Vek8u* pSrc, int srcStep, Vek8u value, Vek8u* pDst,
                                    int dstStep, VekiSize roiSize) {
  return vek::combineWithConstants(pSrc, srcStep, &value, pDst, dstStep, roiSize, 1,
                                   vek::kernels().orC);
}

extern "C" VekStatus vekiOrC_8u_C3R(const Vek8u* pSrc, int srcStep, const Vek8u value[3],
                                    Vek8u* pDst, int dstStep, VekiSize roiSize) {
  return vek::combineWithConstants(pSrc, srcStep, value, pDst, dstStep, roiSize, 3,
                                   vek::kernels().orC);
}

extern "C" VekStatus vekiXorC_8u_C1R(const Vek8u* pSrc, int srcStep, Vek8u value, Vek8u* pDst,
                                     int dstStep, VekiSize roiSize) {
  return vek::combineWithConstants(pSrc, srcStep, &value, pDst, dstStep, roiSize, 1,
                                   vek::kernels().xorC);
}

extern "C" VekStatus vekiXorC_8u_C3R(const Vek8u* pSrc, int srcStep, const Vek8u value[3],
                                     Vek8u* pDst, int dstStep, VekiSize roiSize) {
  return vek::combineWithConstants(pSrc, srcStep, value, pDst, dstStep, roiSize, 3,
                                   vek::kernels().xorC);
}

extern "C" VekStatus vekiNot_8u_C1R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                    VekiSize roiSize) {
  return vek::combineWithConstants(pSrc, srcStep, vek::allBits, pDst, dstStep, roiSize, 1,
                                   vek::kernels().xorC);
}

extern "C" VekStatus vekiNot_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                    VekiSize roiSize) {
  return vek::combineWithConstants(pSrc, srcStep, vek::allBits, pDst, dstStep, roiSize, 3,
                                   vek::kernels().xorC);
}
