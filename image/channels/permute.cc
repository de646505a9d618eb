// Changing the order or the number of channels.
#include "vek/image.h"

#include "core/check.h"
#include "core/region.h"
#include "image/channels/permute_kernels.h"

namespace vek {
namespace {

bool isInRange(const int* order, int channels, int most) {
  for (int i = 0; i < channels; ++i) {
    if (order[i] < 0 || order[i] > most) return false;
  }
  return true;
}

/// Entries of `order` that no source channel has stand for `value`.
template <int srcChannels, int dstChannels>
VekStatus permute(Permute PermuteKernels::*kernel, const Vek8u* pSrc, int srcStep, Vek8u* pDst,
                  int dstStep, VekiSize roi, const int* order, Vek8u value) {
  const VekStatus status = checkPointersSizeSteps({pSrc, pDst, order}, roi, {srcStep, dstStep});
  if (status != vekStsNoErr) return status;
  constexpr int mostEntry = srcChannels == 3 && dstChannels == 3 ? 2 : 3;
  if (!isInRange(order, dstChannels, mostEntry)) return vekStsBadArgErr;
  ChannelOrder channels = {.from = {}, .value = value};
  for (int i = 0; i < dstChannels; ++i) {
    channels.from[i] =
        order[i] < srcChannels ? static_cast<Vek8u>(order[i]) : ChannelOrder::valueChannel;
  }
  const Plane<const Vek8u, srcChannels> src = {pSrc, srcStep};
  const Plane<Vek8u, dstChannels> dst = {pDst, dstStep};
  const Extent extent = joinedRows(roi.width, roi.height, src, dst);
  (select(permuteKernels).*kernel)(pSrc, srcStep, extent.n, extent.rows, channels, pDst, dstStep);
  return vekStsNoErr;
}

}  // namespace
}  // namespace vek

extern "C" VekStatus vekiPermuteChannels_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst,
                                                int dstStep, VekiSize roiSize, const int order[3]) {
  return vek::permute<3, 3>(&vek::PermuteKernels::from3To3, pSrc, srcStep, pDst, dstStep, roiSize,
                            order, 0);
}

extern "C" VekStatus vekiPermuteChannels_8u_C4R(const Vek8u* pSrc, int srcStep, Vek8u* pDst,
                                                int dstStep, VekiSize roiSize, const int order[4]) {
  return vek::permute<4, 4>(&vek::PermuteKernels::from4To4, pSrc, srcStep, pDst, dstStep, roiSize,
                            order, 0);
}

extern "C" VekStatus vekiPermuteChannels_8u_C4C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst,
                                                  int dstStep, VekiSize roiSize,
                                                  const int order[3]) {
  return vek::permute<4, 3>(&vek::PermuteKernels::from4To3, pSrc, srcStep, pDst, dstStep, roiSize,
                            order, 0);
}

extern "C" VekStatus vekiPermuteChannels_8u_C3C4R(const Vek8u* pSrc, int srcStep, Vek8u* pDst,
                                                  int dstStep, VekiSize roiSize, const int order[4],
                                                  Vek8u value) {
  return vek::permute<3, 4>(&vek::PermuteKernels::from3To4, pSrc, srcStep, pDst, dstStep, roiSize,
                            order, value);
}
