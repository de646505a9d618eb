// Erosion and dilation: the least and the greatest sample of the 3 x 3 neighbourhood.
#include "vek/image.h"

#include "core/check.h"
#include "core/region.h"
#include "image/filter/morphology_kernels.h"

namespace vek {
namespace {

VekStatus morphology(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep, VekiSize roiSize,
                     int channels, MorphologyRow MorphologyKernels::*kernel) {
  const VekStatus status = checkPointersStepsSize({pDst, pSrc}, {srcStep, dstStep}, roiSize);
  if (status != vekStsNoErr) return status;
  const MorphologyRow row = select(morphologyKernels).*kernel;
  const Plane src = {pSrc, srcStep};
  const Plane dst = {pDst, dstStep};
  const ptrdiff_t n = static_cast<ptrdiff_t>(roiSize.width) * channels;
  for (ptrdiff_t y = 0; y < roiSize.height; ++y) row(src.row(y), srcStep, dst.row(y), n);
  return vekStsNoErr;
}

}  // namespace
}  // namespace vek

extern "C" VekStatus vekiErode3x3_8u_C1R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                         VekiSize roiSize) {
  return vek::morphology(pSrc, srcStep, pDst, dstStep, roiSize, 1,
                         &vek::MorphologyKernels::Erode3x3_8u_C1S);
}

extern "C" VekStatus vekiErode3x3_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                         VekiSize roiSize) {
  return vek::morphology(pSrc, srcStep, pDst, dstStep, roiSize, 3,
                         &vek::MorphologyKernels::Erode3x3_8u_C3S);
}

extern "C" VekStatus vekiDilate3x3_8u_C1R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                          VekiSize roiSize) {
  return vek::morphology(pSrc, srcStep, pDst, dstStep, roiSize, 1,
                         &vek::MorphologyKernels::Dilate3x3_8u_C1S);
}

extern "C" VekStatus vekiDilate3x3_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                          VekiSize roiSize) {
  return vek::morphology(pSrc, srcStep, pDst, dstStep, roiSize, 3,
                         &vek::MorphologyKernels::Dilate3x3_8u_C3S);
}
