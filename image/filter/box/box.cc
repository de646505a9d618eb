// Box filter: the mean of a rectangular neighbourhood.
#include "vek/image.h"

#include <stdint.h>
#include <string.h>

#include "core/check.h"
#include "core/region.h"
#include "image/filter/box/box_kernels.h"

namespace vek {
namespace {

/// Bytes of a row that are filtered at a time: what the sums of a strip take on the stack.
constexpr ptrdiff_t smallStrip = 4096;
constexpr ptrdiff_t wideStrip = 3072;  // whole pixels

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

/// Masks of up to 128 samples take their factor with 14 fractional bits, all others with 32.
Box makeBox(VekiSize mask) {
  const int64_t area = int64_t{mask.width} * mask.height;
  const uint64_t n = static_cast<uint64_t>(area);
  const Vek32u factor =
      area <= 128 ? roundedRatio(1u << 14, n) << 18 : roundedRatio(uint64_t{1} << 32, n);
  return {mask.width, mask.height, {factor, area}};
}

/// The means of `n` bytes of each of `rows` rows from sums of columns.
template <int pixelBytes>
void blurByColumns(const BoxKernels& kernels, const Box& box, Plane<const Vek8u> src,
                   Plane<Vek8u> dst, ptrdiff_t n, int rows) {
  const ptrdiff_t span = n + (box.width - 1) * pixelBytes;
  alignas(64) Vek16u padded[columnPadding + smallStrip + (columnBoxWidth - 1) * 3 + columnPadding];
  Vek16u* columns = padded + columnPadding;
  memset(padded, 0, static_cast<size_t>(span + 2 * columnPadding) * sizeof padded[0]);
  for (ptrdiff_t y = 0; y < box.height - 1; ++y) {
    kernels.slideColumns(columns, src.row(y), nullptr, span);
  }
  for (ptrdiff_t y = 0; y < rows; ++y) {
    const Vek8u* leaving = y == 0 ? nullptr : src.row(y - 1);
    kernels.slideColumns(columns, src.row(y + box.height - 1), leaving, span);
    kernels.average(columns, box.width, pixelBytes, n, box.scale, dst.row(y));
  }
}

/// The same for masks of any size, from sums as wide as `Sum`.
template <int pixelBytes, class Sum>
void blurWide(const WideBoxRows<Sum>& kernels, const Box& box, Plane<const Vek8u> src,
              Plane<Vek8u> dst, ptrdiff_t n, int rows) {
  alignas(64) Sum differences[wideStrip];
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
void blur(const BoxKernels& kernels, const Box& box, Plane<const Vek8u> src, Plane<Vek8u> dst,
          ptrdiff_t n, int rows) {
  constexpr int64_t largest32 = 0xFFFFFFFF / 255;
  if (box.scale.area <= largest32) {
    blurWide<pixelBytes>(kernels.sums32, box, src, dst, n, rows);
  } else {
    blurWide<pixelBytes>(kernels.sums64, box, src, dst, n, rows);
  }
}

constexpr auto BlurByColumns_8u_C1S = blurByColumns<1>;
constexpr auto BlurByColumns_8u_C3S = blurByColumns<3>;
constexpr auto Blur_8u_C1S = blur<1>;
constexpr auto Blur_8u_C3S = blur<3>;

template <int pixelBytes>
VekStatus filterBox(const Vek8u* pSrc, int srcStep, Vek8u* pDst, int dstStep, VekiSize roiSize,
                    VekiSize maskSize, VekiPoint anchor) {
  const VekStatus status = check(pSrc, srcStep, pDst, dstStep, roiSize, maskSize, anchor);
  if (status != vekStsNoErr) return status;

  const Box box = makeBox(maskSize);
  const ptrdiff_t rowBytes = static_cast<ptrdiff_t>(roiSize.width) * pixelBytes;
  const Plane<Vek8u> dst = {pDst, dstStep};
  if (box.scale.factor == 0) {  // more than 2^33 samples: every mean rounds to 0
    for (ptrdiff_t y = 0; y < roiSize.height; ++y) {
      memset(dst.row(y), 0, static_cast<size_t>(rowBytes));
    }
    return vekStsNoErr;
  }
  const BoxKernels& kernels = select(boxKernels);
  const bool isSmall = box.width <= kernels.mostWidth && box.scale.area <= kernels.mostArea &&
                       (box.scale.area <= smallBoxArea || box.height <= columnBoxHeight);
  const auto small = pixelBytes == 1 ? BlurByColumns_8u_C1S : BlurByColumns_8u_C3S;
  const auto large = pixelBytes == 1 ? Blur_8u_C1S : Blur_8u_C3S;
  const ptrdiff_t strip = isSmall ? smallStrip : wideStrip;
  const Vek8u* corner = pSrc - static_cast<ptrdiff_t>(anchor.y) * srcStep -
                        static_cast<ptrdiff_t>(anchor.x) * pixelBytes;
  for (ptrdiff_t x = 0; x < rowBytes; x += strip) {
    const ptrdiff_t n = rowBytes - x < strip ? rowBytes - x : strip;
    (isSmall ? small : large)(kernels, box, {corner + x, srcStep}, {pDst + x, dstStep}, n,
                              roiSize.height);
  }
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
