// Walking the rows of images whose pixels take different numbers of bytes in each plane.
#pragma once

#include "vek/vek.h"

#include <stddef.h>

#include "core/color/convert_planes.h"
#include "core/region.h"

namespace vek {

/// A plane with `count` bytes for every `pixels` pixels of a row. `Bytes` is Vek8u or const Vek8u.
template <class Bytes, int count, int pixels = 1>
struct PixelRows {
  Plane<Bytes> plane;

  Bytes* row(ptrdiff_t y) const { return plane.row(y); }

  /// Whether a row of n pixels ends where the next one begins.
  bool gapless(Vek64s n) const { return n % pixels == 0 && plane.step == n / pixels * count; }
};

/// Calls row(n, pointers...) for each row of the region, or once for all its pixels when no image
/// has anything between its rows.
template <class Row, class... Images>
void forEachPixelRow(VekiSize roi, Row row, Images... images) {
  ptrdiff_t n = roi.width, rows = roi.height;
  if ((... && images.gapless(n))) {
    n *= rows;
    rows = 1;
  }
  for (ptrdiff_t y = 0; y < rows; ++y) row(n, images.row(y)...);
}

/// Converts the planes of a region, whose chroma samples serve `pixels` pixels of a row; as one row
/// where neither the planes nor the destination have anything between their rows.
template <int pixels>
void convertRegion(ConvertPlanes convert, const YccPlanes& planes, VekiSize roi, Vek8u* dst,
                   ptrdiff_t dstStep, int pixelBytes) {
  ptrdiff_t n = roi.width, rows = roi.height;
  if (planes.chromaShift == 0 && n % pixels == 0 && planes.y.step == n &&
      planes.cb.step == n / pixels && planes.cr.step == n / pixels && dstStep == n * pixelBytes) {
    n *= rows;
    rows = 1;
  }
  convert(planes, n, rows, dst, dstStep);
}

/// Row kernel of a three-channel conversion: n pixels of three bytes each.
using PixelRow = void (*)(const Vek8u* src, Vek8u* dst, ptrdiff_t n);

/// Converts the pixels of a region whose arguments passed `status`; returns that status.
inline VekStatus convertRegion(VekStatus status, PixelRow row, const Vek8u* pSrc, int srcStep,
                               Vek8u* pDst, int dstStep, VekiSize roi) {
  if (status != vekStsNoErr) return status;
  forEachPixelRow(
      roi, [row](ptrdiff_t n, const Vek8u* src, Vek8u* dst) { row(src, dst, n); },
      PixelRows<const Vek8u, 3>{{pSrc, srcStep}}, PixelRows<Vek8u, 3>{{pDst, dstStep}});
  return vekStsNoErr;
}

}  // namespace vek
