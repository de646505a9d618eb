// Walking the rows of images whose pixels take different numbers of bytes in each plane.
#pragma once

#include "vek/vek.h"

#include <stddef.h>

#include "core/region.h"

namespace vek {

/// A plane with `count` bytes for every `pixels` pixels of a row, each of its rows serving `rows`
/// rows of the image. `Bytes` is Vek8u or const Vek8u.
template <class Bytes, int count, int pixels = 1, int rows = 1>
struct PixelRows {
  Plane<Bytes> plane;

  Bytes* row(ptrdiff_t y) const { return plane.row(y / rows); }

  /// Whether a row of n pixels ends where the next one begins.
  bool gapless(Vek64s n) const {
    return rows == 1 && n % pixels == 0 && plane.step == n / pixels * count;
  }
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

}  // namespace vek
