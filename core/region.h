// Region walk: from a region to calls of a row kernel.
#pragma once

#include "vek/vek.h"

#include <stddef.h>

namespace vek {

/// One image of a region: where its rows start and how far apart they are. A row has `count` bytes
/// for every `pixels` pixels; a group of pixels that the row only begins counts whole. `Bytes` is
/// Vek8u or const Vek8u.
template <class Bytes, int count = 1, int pixels = 1>
struct Plane {
  Bytes* data;
  ptrdiff_t step;

  /// Always inlined: kernels of higher levels call it, and their objects must not define a symbol
  /// that other code could be linked to.
  [[gnu::always_inline]] Bytes* row(ptrdiff_t y) const { return data + y * step; }

  /// Whether a row of n pixels ends where the next one begins.
  bool isUnpadded(Vek64s n) const { return n % pixels == 0 && step == n / pixels * count; }
};

template <class Bytes>
Plane(Bytes*, int) -> Plane<Bytes>;

/// A region as a walk goes through it: `rows` rows of n pixels.
struct Extent {
  ptrdiff_t n, rows;
};

/// One long row when the rows of every plane follow each other without padding, else the region's
/// rows. For kernels that treat each pixel, or each group of pixels that divides the row, alike.
template <class... Planes>
Extent joinedRows(ptrdiff_t n, ptrdiff_t rows, Planes... planes) {
  if ((... && planes.isUnpadded(n))) return {n * rows, 1};
  return {n, rows};
}

/// Calls row(n, pointers...) for each row of n pixels, joined as above. The pixels of planes that
/// have one byte for each may as well be the bytes of the row.
template <class Row, class... Planes>
void forEachRow(ptrdiff_t n, int height, Row row, Planes... planes) {
  const Extent extent = joinedRows(n, height, planes...);
  for (ptrdiff_t y = 0; y < extent.rows; ++y) row(extent.n, planes.row(y)...);
}

}  // namespace vek
