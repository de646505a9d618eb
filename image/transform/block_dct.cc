// The cosine transform of 8 x 8 blocks: checks, the walk over an image.
#include "vek/image.h"

#include "core/check.h"
#include "image/transform/block_dct_kernels.h"

namespace vek {
namespace {

constexpr int blockSide = 8, blockRow = blockSide * static_cast<int>(sizeof(Vek16s));

VekStatus checkBlocks(const Vek16s* pSrc, int srcStep, const Vek16s* pDst, int dstStep,
                      VekiSize roi) {
  if (anyNull({pSrc, pDst})) return vekStsNullPtrErr;
  if (isEmpty(roi)) return vekStsSizeErr;
  if (isMisaligned(roi.width | roi.height, blockSide)) return vekStsSizeErr;
  if (anyBelowOne({srcStep, dstStep})) return vekStsStepErr;
  if (srcStep / 2 < roi.width || dstStep / 2 < roi.width) return vekStsStrideErr;
  return vekStsNoErr;
}

void transformImage(TransformBlocks kernel, const Vek16s* pSrc, ptrdiff_t srcStep, Vek16s* pDst,
                    ptrdiff_t dstStep, VekiSize roi) {
  const auto* const src = reinterpret_cast<const Vek8u*>(pSrc);
  auto* const dst = reinterpret_cast<Vek8u*>(pDst);
  for (ptrdiff_t y = 0; y < roi.height; y += blockSide) {
    kernel(src + y * srcStep, srcStep, roi.width / blockSide, dst + y * dstStep, dstStep);
  }
}

}  // namespace
}  // namespace vek

extern "C" {

VekStatus vekiBlockDCTFwd_16s_C1(const Vek16s* pSrc, Vek16s* pDst) {
  if (vek::anyNull({pSrc, pDst})) return vekStsNullPtrErr;
  vek::transformImage(select(vek::blockDctKernels).forward, pSrc, vek::blockRow, pDst,
                      vek::blockRow, {vek::blockSide, vek::blockSide});
  return vekStsNoErr;
}

VekStatus vekiBlockDCTInv_16s_C1(const Vek16s* pSrc, Vek16s* pDst) {
  if (vek::anyNull({pSrc, pDst})) return vekStsNullPtrErr;
  vek::transformImage(select(vek::blockDctKernels).inverse, pSrc, vek::blockRow, pDst,
                      vek::blockRow, {vek::blockSide, vek::blockSide});
  return vekStsNoErr;
}

VekStatus vekiBlockDCTFwd_16s_C1R(const Vek16s* pSrc, int srcStep, Vek16s* pDst, int dstStep,
                                  VekiSize roiSize) {
  const VekStatus status = vek::checkBlocks(pSrc, srcStep, pDst, dstStep, roiSize);
  if (status != vekStsNoErr) return status;
  vek::transformImage(select(vek::blockDctKernels).forward, pSrc, srcStep, pDst, dstStep, roiSize);
  return vekStsNoErr;
}

VekStatus vekiBlockDCTInv_16s_C1R(const Vek16s* pSrc, int srcStep, Vek16s* pDst, int dstStep,
                                  VekiSize roiSize) {
  const VekStatus status = vek::checkBlocks(pSrc, srcStep, pDst, dstStep, roiSize);
  if (status != vekStsNoErr) return status;
  vek::transformImage(select(vek::blockDctKernels).inverse, pSrc, srcStep, pDst, dstStep, roiSize);
  return vekStsNoErr;
}

}  // extern "C"
