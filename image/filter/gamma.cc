// Forward and inverse video gamma by table.
#include "vek/image.h"

#include "core/check.h"
#include "core/region.h"
#include "image/filter/gamma_kernels.h"

namespace vek {
namespace {

VekStatus gamma(const GammaTable& table, const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                VekiSize roiSize) {
  if (anyNull({pDst, pSrc})) return vekStsNullPtrErr;
  // @quirk A step below 1 is a size error here, unlike in other filters: callers compare statuses.
  if (anyBelowOne({roiSize.width, roiSize.height, srcStep, dstStep})) return vekStsSizeErr;
  const GammaKernels& kernels = select(gammaKernels);
  forEachRow(
      ptrdiff_t{3} * roiSize.width, roiSize.height,
      [&](ptrdiff_t n, const Vek8u* src, Vek8u* dst) { kernels.map(table, src, dst, n); },
      Plane{pSrc, srcStep}, Plane{pDst, dstStep});
  return vekStsNoErr;
}

}  // namespace
}  // namespace vek

extern "C" VekStatus vekiGammaFwd_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                         VekiSize roiSize) {
  return vek::gamma(vek::gammaForward, pSrc, srcStep, pDst, dstStep, roiSize);
}

extern "C" VekStatus vekiGammaInv_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                         VekiSize roiSize) {
  return vek::gamma(vek::gammaInverse, pSrc, srcStep, pDst, dstStep, roiSize);
}
