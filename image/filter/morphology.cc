// Erosion and dilation: the least and the greatest sample of the 3 x 3 neighbourhood.
#include "vek/image.h"

#include "core/check.h"
#include "core/region.h"
#include "image/filter/morphology_kernels.h"

namespace vek {
namespace {

template <int channels>
VekStatus morphology(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep, VekiSize roiSize,
                     MorphologyRows MorphologyKernels::*operation) {
  const VekStatus status = checkPointersStepsSize({pDst, pSrc}, {srcStep, dstStep}, roiSize);
  if (status != vekStsNoErr) return status;
  const MorphologyRows& rows = select(morphologyKernels).*operation;
  const MorphologyRow row = channels == 1 ? rows.c1 : rows.c3;
  const Plane src = {pSrc, srcStep};
  const Plane dst = {pDst, dstStep};
  const ptrdiff_t n = ptrdiff_t{roiSize.width} * channels;
  for (ptrdiff_t y = 0; y < roiSize.height; ++y) row(src.row(y), srcStep, dst.row(y), n);
  return vekStsNoErr;
}

}  // namespace
}  // namespace vek

extern "C" VekStatus vekiErode3x3_8u_C1R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                         VekiSize roiSize) {
  return vek::morphology<1>(pSrc, srcStep, pDst, dstStep, roiSize, &vek::MorphologyKernels::erode);
}

extern "C" VekStatus vekiErode3x3_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                         VekiSize roiSize) {
  return vek::morphology<3>(pSrc, srcStep, pDst, dstStep, roiSize, &vek::MorphologyKernels::erode);
}

extern "C" VekStatus vekiDilate3x3_8u_C1R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                          VekiSize roiSize) {
  return vek::morphology<1>(pSrc, srcStep, pDst, dstStep, roiSize, &vek::MorphologyKernels::dilate);
}

extern "C" VekStatus vekiDilate3x3_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                          VekiSize roiSize) {
  return vek::morphology<3>(pSrc, srcStep, pDst, dstStep, roiSize, &vek::MorphologyKernels::dilate);
}
