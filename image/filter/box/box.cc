// Box filter: the mean of a rectangular neighbourhood.
#include "vek/image.h"

#include <stdint.h>
#include <string.h>

#include "core/assert.h"
#include "core/check.h"
#include "core/region.h"
#include "image/filter/box/box_kernels.h"
#include "image/filter/strips.h"

namespace vek {
namespace {

/// Bytes of a row that are filtered at a time, so that the sums of a strip fit the stack. Windows
/// want whole pixels.
constexpr ptrdiff_t columnStrip = 4096;
constexpr ptrdiff_t windowStrip = 3072;

struct Box {
  ptrdiff_t width, height;
  BoxScale scale;
};

VekStatus check(const Vek8u* pSrc, int srcStep, const Vek8u* pDst, int dstStep, VekiSize roiSize,
                VekiSize maskSize, VekiPoint anchor) {
  const VekStatus status = checkPointersStepsSize({pDst, pSrc}, {srcStep, dstStep}, roiSize);
  if (status != vekStsNoErr) return status;
  if (maskSize.height < 2 || maskSize.width < 2) return vekStsMaskSizeErr;
  if (anchor.x < 0 || anchor.x >= maskSize.width || anchor.y < 0 || anchor.y >= maskSize.height) {
    return vekStsAnchorErr;
  }
  return vekStsNoErr;
}

/// n / area to the nearest integer, exact halves down.
Vek32u roundedRatio(uint64_t n, uint64_t area) {
  const uint64_t quotient = n / area;
  return static_cast<Vek32u>(2 * (n % area) > area ? quotient + 1 : quotient);
}

/// @quirk Masks of up to 128 samples take their factor with 14 fractional bits, all others with 32.
/// 14 bits leave an error that shows: the factor of 86 samples is 191 for 190.51, and where all of
/// them are 200 the mean is 201. This is the arithmetic that results are compared with.
Box makeBox(VekiSize mask) {
  const int64_t area = int64_t{mask.width} * mask.height;
  const uint64_t n = static_cast<uint64_t>(area);
  const Vek32u factor =
      area <= 128 ? roundedRatio(1u << 14, n) << 18 : roundedRatio(uint64_t{1} << 32, n);
  return {mask.width, mask.height, {factor, area}};
}

/// The means of `n` bytes of each of `rows` rows, from sums of columns. Not inlined, so that a call
/// takes the stack for one way of summing only.
template <int pixelBytes>
[[gnu::noinline]] void filterByColumns(const BoxKernels& kernels, const Box& box,
                                       Plane<const Vek8u> src, Plane<Vek8u> dst, ptrdiff_t n,
                                       int rows) {
  VEK_ASSERT(n <= columnStrip && box.width <= columnBoxWidth);
  const ptrdiff_t span = n + (box.width - 1) * pixelBytes;
  alignas(64) Vek16u padded[columnPadding + columnStrip + (columnBoxWidth - 1) * 3 + columnPadding];
  Vek16u* columns = padded + columnPadding;
  memset(padded, 0, static_cast<size_t>(span + 2 * columnPadding) * sizeof padded[0]);
  for (ptrdiff_t y = 0; y < box.height - 1; ++y) {
    kernels.slideColumns(columns, src.row(y), nullptr, span);
  }
  for (ptrdiff_t y = 0; y < rows; ++y) {
    const Vek8u* leaving = y == 0 ? nullptr : src.row(y - 1);
    kernels.slideColumns(columns, src.row(y + box.height - 1), leaving, span);
    kernels.averageColumns(columns, box.width, pixelBytes, n, box.scale, dst.row(y));
  }
}

/// The same for masks of any size, from sums of windows.
template <int pixelBytes, class Sum>
[[gnu::noinline]] void filterByWindows(const BoxWindowKernels<Sum>& kernels, const Box& box,
                                       Plane<const Vek8u> src, Plane<Vek8u> dst, ptrdiff_t n,
                                       int rows) {
  VEK_ASSERT(n <= windowStrip);
  alignas(64) Sum differences[windowStrip];
  Sum first[3] = {};
  memset(differences, 0, static_cast<size_t>(n) * sizeof(Sum));
  for (ptrdiff_t y = 0; y < box.height - 1; ++y) {
    kernels.slide(differences, first, src.row(y), nullptr, box.width, pixelBytes, n);
  }
  for (ptrdiff_t y = 0; y < rows; ++y) {
    const Vek8u* leaving = y == 0 ? nullptr : src.row(y - 1);
    kernels.slide(differences, first, src.row(y + box.height - 1), leaving, box.width, pixelBytes,
                  n);
    kernels.average(differences, first, pixelBytes, n, box.scale, dst.row(y));
  }
}

template <int pixelBytes>
VekStatus filterBox(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep, VekiSize roiSize,
                    VekiSize maskSize, VekiPoint anchor) {
  const VekStatus status = check(pSrc, srcStep, pDst, dstStep, roiSize, maskSize, anchor);
  if (status != vekStsNoErr) return status;

  const Box box = makeBox(maskSize);
  const ptrdiff_t rowBytes = ptrdiff_t{roiSize.width} * pixelBytes;
  const Plane<Vek8u> dst = {pDst, dstStep};
  if (box.scale.factor == 0) {  // more than 2^33 samples: every mean rounds to 0
    for (ptrdiff_t y = 0; y < roiSize.height; ++y) {
      memset(dst.row(y), 0, static_cast<size_t>(rowBytes));
    }
    return vekStsNoErr;
  }
  const BoxKernels& kernels = select(boxKernels);
  const int64_t area = box.scale.area;
  const bool byColumns = box.width <= kernels.mostWidth && area <= kernels.mostArea &&
                         (area <= smallBoxArea || box.height <= columnBoxHeight);
  constexpr int64_t largest32 = 0xFFFFFFFF / 255;  // whose sums fit 32 bits
  const Vek8u* corner = pSrc - ptrdiff_t{anchor.y} * srcStep - ptrdiff_t{anchor.x} * pixelBytes;
  if (box.width == 3 && box.height == 3 && kernels.averageNine != nullptr &&
      rowBytes >= kernels.leastNine) {
    kernels.averageNine({corner, srcStep}, dst, pixelBytes, rowBytes, roiSize.height, box.scale);
    return vekStsNoErr;
  }
  forEachStrip(rowBytes, byColumns ? columnStrip : windowStrip, [&](ptrdiff_t x, ptrdiff_t n) {
    const Plane<const Vek8u> from = {corner + x, srcStep};
    const Plane<Vek8u> to = {pDst + x, dstStep};
    const int rows = roiSize.height;
    if (byColumns) {
      filterByColumns<pixelBytes>(kernels, box, from, to, n, rows);
    } else if (area <= largest32) {
      filterByWindows<pixelBytes>(kernels.windows32, box, from, to, n, rows);
    } else {
      filterByWindows<pixelBytes>(kernels.windows64, box, from, to, n, rows);
    }
  });
  return vekStsNoErr;
}

}  // namespace
}  // namespace vek

extern "C" VekStatus vekiFilterBox_8u_C1R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                          VekiSize roiSize, VekiSize maskSize, VekiPoint anchor) {
  return vek::filterBox<1>(pSrc, srcStep, pDst, dstStep, roiSize, maskSize, anchor);
}

extern "C" VekStatus vekiFilterBox_8u_C3R(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep,
                                          VekiSize roiSize, VekiSize maskSize, VekiPoint anchor) {
  return vek::filterBox<3>(pSrc, srcStep, pDst, dstStep, roiSize, maskSize, anchor);
}
