// Convolutions with a caller's kernel: two-dimensional, along rows, along columns.
#include "vek/image.h"

#include <stdint.h>

#include "core/check.h"
#include "image/filter/fir/fir_kernels.h"

namespace vek {
namespace {

/// The images of a call; every filter has these arguments.
struct Images {
  const Vek8u* pSrc;
  int srcStep;
  Vek8u* pDst;
  int dstStep;
  VekiSize roiSize;
};

/// Each of the `n` coefficients must fit 16 bits.
VekStatus checkCoefficients(const Vek32s* pKernel, int64_t n) {
  for (int64_t i = 0; i < n; ++i) {
    if (pKernel[i] < -32768 || pKernel[i] > 32767) return vekStsCoeffRangeErr;
  }
  return vekStsNoErr;
}

VekStatus check2D(const Images& images, const Vek32s* pKernel, VekiSize kernelSize,
                  VekiPoint anchor, int divisor) {
  const VekStatus status = checkPointersStepsSize({images.pDst, images.pSrc, pKernel},
                                                  {images.srcStep, images.dstStep}, images.roiSize);
  if (status != vekStsNoErr) return status;
  if (kernelSize.width < 2 || kernelSize.height < 2) return vekStsSizeErr;
  if (anchor.x < 0 || anchor.x >= kernelSize.width || anchor.y < 0 ||
      anchor.y >= kernelSize.height) {
    return vekStsAnchorErr;
  }
  if (divisor < 1) return vekStsDivisorErr;
  return checkCoefficients(pKernel, int64_t{kernelSize.width} * kernelSize.height);
}

VekStatus check1D(const Images& images, const Vek32s* pKernel, int kernelSize, int anchor,
                  int divisor) {
  const VekStatus status = checkPointersStepsSize({images.pDst, images.pSrc, pKernel},
                                                  {images.srcStep, images.dstStep}, images.roiSize);
  if (status != vekStsNoErr) return status;
  if (kernelSize < 2) return vekStsSizeErr;
  if (anchor < 0 || anchor >= kernelSize) return vekStsAnchorErr;
  if (divisor < 1) return vekStsDivisorErr;
  return checkCoefficients(pKernel, kernelSize);
}

FirScale makeScale(int divisor) {
  const uint64_t d = static_cast<uint64_t>(divisor);
  FirScale scale = {divisor, 1, 0, 0};
  if ((d & (d - 1)) == 0) {
    while (uint64_t{1} << scale.shift < d) ++scale.shift;
  } else {
    constexpr uint64_t one = uint64_t{1} << 32;
    scale.multiplier = static_cast<Vek32u>(2 * (one % d) > d ? one / d + 1 : one / d);
    scale.shift = 32;
  }
  const uint64_t half = scale.shift == 0 ? 0 : uint64_t{1} << (scale.shift - 1);
  const uint64_t white = (uint64_t{255} << scale.shift) - half;
  scale.limit = (white + scale.multiplier - 1) / scale.multiplier;
  return scale;
}

/// The kernel whose partial sums fit: they stay within 255 times the sum of the coefficients'
/// magnitudes. An array that lies in memory is too short for 64 bits to overflow.
FirKernel kernelFor(const FirKernels& kernels, const Vek32s* pKernel, int64_t n) {
  uint64_t magnitude = 0;
  bool fit8 = true;
  for (int64_t i = 0; i < n; ++i) {
    magnitude += static_cast<Vek32u>(pKernel[i] < 0 ? -pKernel[i] : pKernel[i]);
    fit8 = fit8 && pKernel[i] >= -128 && pKernel[i] <= 127;
  }
  if (magnitude > 0x7FFFFFFF / 255) return kernels.sums64;
  return fit8 && magnitude <= 0x7FFF / 255 ? kernels.sums16 : kernels.sums32;
}

/// `corner` is the first sample of the neighbourhood of the region's first pixel, and tap (0, 0)
/// its coefficient.
void filter(const Images& images, const Vek8u* corner, int channels, const FirTaps& taps,
            int divisor) {
  const FirScale scale = makeScale(divisor);
  const int64_t count = int64_t{taps.width} * taps.height;
  const FirKernel kernel = kernelFor(select(firKernels), taps.last - (count - 1), count);
  kernel({corner, images.srcStep, images.pDst, images.dstStep,
          static_cast<ptrdiff_t>(images.roiSize.width) * channels, images.roiSize.height},
         taps, scale);
}

template <int channels>
VekStatus filter2D(const Images& images, const Vek32s* pKernel, VekiSize size, VekiPoint anchor,
                   int divisor) {
  const VekStatus status = check2D(images, pKernel, size, anchor, divisor);
  if (status != vekStsNoErr) return status;
  const ptrdiff_t width = size.width, height = size.height, step = images.srcStep;
  filter(images, images.pSrc + (anchor.y - height + 1) * step + (anchor.x - width + 1) * channels,
         channels, {pKernel + width * height - 1, width, height, channels}, divisor);
  return vekStsNoErr;
}

VekStatus filter1D(const Images& images, const Vek32s* pKernel, int size, int anchor, int divisor,
                   int channels, bool column) {
  const VekStatus status = check1D(images, pKernel, size, anchor, divisor);
  if (status != vekStsNoErr) return status;
  const ptrdiff_t first = static_cast<ptrdiff_t>(anchor) - size + 1;
  filter(images, images.pSrc + first * (column ? images.srcStep : channels), channels,
         {pKernel + size - 1, column ? 1 : size, column ? size : 1, channels}, divisor);
  return vekStsNoErr;
}

template <int channels>
VekStatus filterRow(const Images& images, const Vek32s* pKernel, int size, int anchor,
                    int divisor) {
  return filter1D(images, pKernel, size, anchor, divisor, channels, false);
}
template <int channels>
VekStatus filterColumn(const Images& images, const Vek32s* pKernel, int size, int anchor,
                       int divisor) {
  return filter1D(images, pKernel, size, anchor, divisor, channels, true);
}

}  // namespace
}  // namespace vek

extern "C" VekStatus vekiFilter_8u_C1R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                       VekiSize roiSize, const Vek32s* pKernel, VekiSize kernelSize,
                                       VekiPoint anchor, int divisor) {
  return vek::filter2D<1>({pSrc, srcStep, pDst, dstStep, roiSize}, pKernel, kernelSize, anchor,
                          divisor);
}

extern "C" VekStatus vekiFilter_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                       VekiSize roiSize, const Vek32s* pKernel, VekiSize kernelSize,
                                       VekiPoint anchor, int divisor) {
  return vek::filter2D<3>({pSrc, srcStep, pDst, dstStep, roiSize}, pKernel, kernelSize, anchor,
                          divisor);
}

extern "C" VekStatus vekiFilterRow_8u_C1R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                          VekiSize roiSize, const Vek32s* pKernel, int kernelSize,
                                          int anchor, int divisor) {
  return vek::filterRow<1>({pSrc, srcStep, pDst, dstStep, roiSize}, pKernel, kernelSize, anchor,
                           divisor);
}

extern "C" VekStatus vekiFilterRow_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                          VekiSize roiSize, const Vek32s* pKernel, int kernelSize,
                                          int anchor, int divisor) {
  return vek::filterRow<3>({pSrc, srcStep, pDst, dstStep, roiSize}, pKernel, kernelSize, anchor,
                           divisor);
}

extern "C" VekStatus vekiFilterColumn_8u_C1R(const Vek8u* pSrc, int srcStep, Vek8u* pDst,
                                             int dstStep, VekiSize roiSize, const Vek32s* pKernel,
                                             int kernelSize, int anchor, int divisor) {
  return vek::filterColumn<1>({pSrc, srcStep, pDst, dstStep, roiSize}, pKernel, kernelSize, anchor,
                              divisor);
}

extern "C" VekStatus vekiFilterColumn_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst,
                                             int dstStep, VekiSize roiSize, const Vek32s* pKernel,
                                             int kernelSize, int anchor, int divisor) {
  return vek::filterColumn<3>({pSrc, srcStep, pDst, dstStep, roiSize}, pKernel, kernelSize, anchor,
                              divisor);
}
