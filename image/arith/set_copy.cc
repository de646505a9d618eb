// Filling and copying regions.
#include "vek/image.h"

#include <string.h>

#include "core/check.h"
#include "core/region.h"
#include "image/arith/pattern.h"
#include "image/arith/pointwise.h"
#include "image/arith/set_copy_kernels.h"

namespace vek {
namespace {

void setBytes(Vek8u value, Vek8u* pDst, int dstStep, VekiSize roi, int channels) {
  const auto row = [=](ptrdiff_t n, Vek8u* dst) { memset(dst, value, static_cast<size_t>(n)); };
  forEachRow(rowBytes(roi, channels), roi.height, row, Plane{pDst, dstStep});
}

/// A run of bytes; the destination may be the source itself.
void copyRow(ptrdiff_t n, Vek8u* dst, const Vek8u* src) {
  memmove(dst, src, static_cast<size_t>(n));
}

VekStatus copy(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep, VekiSize roi,
               int channels) {
  const VekStatus status = checkPointersSizeSteps({pSrc, pDst}, roi, {srcStep, dstStep});
  if (status != vekStsNoErr) return status;
  forEachRow(rowBytes(roi, channels), roi.height, copyRow, Plane{pDst, dstStep},
             Plane{pSrc, srcStep});
  return vekStsNoErr;
}

}  // namespace
}  // namespace vek

extern "C" VekStatus vekiSet_8u_C1R(Vek8u value, Vek8u* pDst, int dstStep, VekiSize roiSize) {
  const VekStatus status = vek::checkPointersSizeSteps({pDst}, roiSize, {dstStep});
  if (status != vekStsNoErr) return status;
  vek::setBytes(value, pDst, dstStep, roiSize, 1);
  return vekStsNoErr;
}

extern "C" VekStatus vekiSet_8u_C3R(const Vek8u value[3], Vek8u* pDst, int dstStep,
                                    VekiSize roiSize) {
  const VekStatus status = vek::checkPointersSizeSteps({pDst}, roiSize, {dstStep});
  if (status != vekStsNoErr) return status;
  if (value == nullptr) return vekStsNullPtrErr;
  if (value[0] == value[1] && value[1] == value[2]) {
    vek::setBytes(value[0], pDst, dstStep, roiSize, 3);
    return vekStsNoErr;
  }
  const vek::Pattern pattern(value, 3);
  const auto repeat = vek::select(vek::setKernels).repeat;
  const auto row = [&](ptrdiff_t n, Vek8u* dst) { repeat(pattern.bytes, n, dst); };
  vek::forEachRow(vek::rowBytes(roiSize, 3), roiSize.height, row, vek::Plane{pDst, dstStep});
  return vekStsNoErr;
}

extern "C" VekStatus vekiCopy_8u_C1R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                     VekiSize roiSize) {
  return vek::copy(pSrc, srcStep, pDst, dstStep, roiSize, 1);
}

extern "C" VekStatus vekiCopy_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                     VekiSize roiSize) {
  return vek::copy(pSrc, srcStep, pDst, dstStep, roiSize, 3);
}
