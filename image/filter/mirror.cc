// Mirroring about the horizontal axis, the vertical axis, or both.
#include "vek/image.h"

#include "core/check.h"
#include "core/kernel/place_kernels.h"
#include "core/orientation.h"

namespace vek {
namespace {

/// `flip` reverses the rows (0), the columns (1) or both (2).
template <int channels>
VekStatus mirror(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep, VekiSize roiSize,
                 int flip) {
  if (anyNull({pDst, pSrc})) return vekStsNullPtrErr;
  // @quirk A step below 1 is a size error here, unlike in other filters: callers compare statuses.
  if (anyBelowOne({srcStep, dstStep, roiSize.width, roiSize.height})) return vekStsSizeErr;
  if (flip < vekiMirrorHorizontalAxis || flip > vekiMirrorBothAxes) return vekStsMirrorFlipErr;

  const Orientation orientation = {.columnsReversed = flip != vekiMirrorHorizontalAxis,
                                   .rowsReversed = flip != vekiMirrorVerticalAxis};
  const OrientedPlane dst({pDst, dstStep}, orientation, roiSize.width, roiSize.height, channels);
  select(placeKernels)
      .of(channels)(pSrc, srcStep, roiSize.width, roiSize.height, dst.first, dst.dx, dst.dy);
  return vekStsNoErr;
}

}  // namespace
}  // namespace vek

extern "C" VekStatus vekiMirror_8u_C1R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                       VekiSize roiSize, int flip) {
  return vek::mirror<1>(pSrc, srcStep, pDst, dstStep, roiSize, flip);
}

extern "C" VekStatus vekiMirror_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                       VekiSize roiSize, int flip) {
  return vek::mirror<3>(pSrc, srcStep, pDst, dstStep, roiSize, flip);
}
