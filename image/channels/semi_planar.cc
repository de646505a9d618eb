// Planar 4:2:0 to semi-planar and back.
#include "vek/image.h"

#include <string.h>

#include "core/check.h"
#include "core/region.h"
#include "image/channels/semi_planar_kernels.h"

namespace vek {
namespace {

/// The pointers of `from` and `to` planes, then the size, then the steps.
VekStatus check(VekConstPlanes pSrc, const int* srcStep, int from, Vek8u* const* pDst,
                const int* dstStep, int to, VekiSize roi) {
  if (anyNull({pSrc, srcStep, pDst, dstStep})) return vekStsNullPtrErr;
  for (int p = 0; p < from; ++p) {
    if (pSrc[p] == nullptr) return vekStsNullPtrErr;
  }
  for (int p = 0; p < to; ++p) {
    if (pDst[p] == nullptr) return vekStsNullPtrErr;
  }
  if (isEmpty(roi)) return vekStsSizeErr;
  for (int p = 0; p < from; ++p) {
    if (srcStep[p] < 1) return vekStsStepErr;
  }
  for (int p = 0; p < to; ++p) {
    if (dstStep[p] < 1) return vekStsStepErr;
  }
  return vekStsNoErr;
}

/// Rounded up; a size may be INT_MAX.
int half(int size) {
  return size / 2 + size % 2;
}

void copyLuma(VekiSize roi, const Vek8u* src, int srcStep, Vek8u* dst, int dstStep) {
  forEachRow(
      roi.width, roi.height,
      [](ptrdiff_t n, Vek8u* to, const Vek8u* from) { memcpy(to, from, static_cast<size_t>(n)); },
      Plane{dst, dstStep}, Plane{src, srcStep});
}

}  // namespace
}  // namespace vek

extern "C" {

VekStatus vekiYCbCr420ToNV12_8u_P3P2R(VekConstPlanes pSrc, const int srcStep[3],
                                      Vek8u* const pDst[2], const int dstStep[2],
                                      VekiSize roiSize) {
  using namespace vek;
  const VekStatus status = check(pSrc, srcStep, 3, pDst, dstStep, 2, roiSize);
  if (status != vekStsNoErr) return status;
  copyLuma(roiSize, pSrc[0], srcStep[0], pDst[0], dstStep[0]);
  const auto join = select(semiPlanarKernels).join;
  forEachRow(
      half(roiSize.width), half(roiSize.height),
      [=](ptrdiff_t n, Vek8u* pairs, const Vek8u* cb, const Vek8u* cr) { join(cb, cr, n, pairs); },
      Plane<Vek8u, 2>{pDst[1], dstStep[1]}, Plane{pSrc[1], srcStep[1]}, Plane{pSrc[2], srcStep[2]});
  return vekStsNoErr;
}

VekStatus vekiNV12ToYCbCr420_8u_P2P3R(VekConstPlanes pSrc, const int srcStep[2],
                                      Vek8u* const pDst[3], const int dstStep[3],
                                      VekiSize roiSize) {
  using namespace vek;
  const VekStatus status = check(pSrc, srcStep, 2, pDst, dstStep, 3, roiSize);
  if (status != vekStsNoErr) return status;
  copyLuma(roiSize, pSrc[0], srcStep[0], pDst[0], dstStep[0]);
  const auto split = select(semiPlanarKernels).split;
  forEachRow(
      half(roiSize.width), half(roiSize.height),
      [=](ptrdiff_t n, Vek8u* cb, Vek8u* cr, const Vek8u* pairs) { split(pairs, n, cb, cr); },
      Plane{pDst[1], dstStep[1]}, Plane{pDst[2], dstStep[2]},
      Plane<const Vek8u, 2>{pSrc[1], srcStep[1]});
  return vekStsNoErr;
}

}  // extern "C"
