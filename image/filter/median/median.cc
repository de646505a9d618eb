// Median filter, each channel by itself.
#include "vek/image.h"

#include "core/check.h"
#include "image/filter/median/median_kernels.h"
#include "image/filter/strips.h"

namespace vek {
namespace {

/// Narrowest strip for which column histograms are set up: beyond this mask width the histograms
/// of the columns that only the mask needs would be most of the work.
constexpr ptrdiff_t leastStrip = 46;

VekStatus check(const Vek8u* pSrc, int srcStep, const Vek8u* pDst, int dstStep, VekiSize roiSize,
                VekiSize mask, VekiPoint anchor) {
  const VekStatus status = checkPointersSizeSteps({pDst, pSrc}, roiSize, {srcStep, dstStep});
  if (status != vekStsNoErr) return status;
  if (mask.width < 1 || mask.height < 1 || mask.height > 256 || !isOdd(mask.width) ||
      !isOdd(mask.height)) {
    return vekStsMaskSizeErr;
  }
  if (anchor.x < 0 || anchor.x >= mask.width || anchor.y < 0 || anchor.y >= mask.height) {
    return vekStsAnchorErr;
  }
  return vekStsNoErr;
}

/// One channel, in strips whose column histograms fit the stack where the mask's width allows it.
void filterByHistograms(const MedianKernels& kernels, const MedianRegion& channel) {
  const ptrdiff_t strip = medianHistograms - channel.maskWidth + 1;
  if (strip < leastStrip) return kernels.runningHistogram(channel);
  forEachStrip(channel.columns, strip, [&](ptrdiff_t x, ptrdiff_t columns) {
    MedianRegion part = channel;
    part.corner += x * channel.pixelBytes;
    part.dst += x * channel.pixelBytes;
    part.columns = columns;
    kernels.columnHistograms(part);
  });
}

template <int channels>
VekStatus filterMedian(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep, VekiSize roiSize,
                       VekiSize mask, VekiPoint anchor) {
  const VekStatus status = check(pSrc, srcStep, pDst, dstStep, roiSize, mask, anchor);
  if (status != vekStsNoErr) return status;

  const MedianKernels& kernels = select(medianKernels);
  const Vek8u* corner = pSrc - ptrdiff_t{anchor.y} * srcStep - ptrdiff_t{anchor.x} * channels;
  const ptrdiff_t rowBytes = ptrdiff_t{roiSize.width} * channels;
  const MedianRegion region = {corner,   srcStep,        pDst,       dstStep,    channels,
                               rowBytes, roiSize.height, mask.width, mask.height};
  if (rowBytes >= kernels.leastBytes) {
    MedianFilter filter = mask.width == mask.height ? kernels.network(mask.width) : nullptr;
    if (filter == nullptr && isCountable(mask.width, mask.height)) filter = kernels.byCounting;
    if (filter != nullptr) {
      filter(region);
      return vekStsNoErr;
    }
  }
  for (int c = 0; c < channels; ++c) {
    MedianRegion channel = region;
    channel.corner += c;
    channel.dst += c;
    channel.columns = roiSize.width;
    filterByHistograms(kernels, channel);
  }
  return vekStsNoErr;
}

}  // namespace
}  // namespace vek

extern "C" VekStatus vekiFilterMedian_8u_C1R(const Vek8u* pSrc, int srcStep, Vek8u* pDst,
                                             int dstStep, VekiSize roiSize, VekiSize maskSize,
                                             VekiPoint anchor) {
  return vek::filterMedian<1>(pSrc, srcStep, pDst, dstStep, roiSize, maskSize, anchor);
}

extern "C" VekStatus vekiFilterMedian_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst,
                                             int dstStep, VekiSize roiSize, VekiSize maskSize,
                                             VekiPoint anchor) {
  return vek::filterMedian<3>(pSrc, srcStep, pDst, dstStep, roiSize, maskSize, anchor);
}
