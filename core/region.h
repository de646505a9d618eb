// Region walk: from a region to calls of a row kernel.
#pragma once

#include "vek/vek.h"

#include <stddef.h>

namespace vek {

/// One image of a region: where its rows start and how far apart they are. `Bytes` is Vek8u or
/// const Vek8u.
template <class Bytes>
struct Plane {
  Bytes* data;
  ptrdiff_t step;

  Bytes* row(ptrdiff_t y) const { return data + y * step; }
};

template <class Bytes>
Plane(Bytes*, int) -> Plane<Bytes>;

/// Calls row(n, pointers...) for each row of `rowBytes` bytes, or once for the whole region when
/// the rows of every plane follow each other without padding. For kernels that treat each byte, or
/// each group of bytes that divides the row, alike.
template <class Row, class... Bytes>
void forEachRow(ptrdiff_t rowBytes, int height, Row row, Plane<Bytes>... planes) {
  ptrdiff_t rows = height;
  const bool unpadded = (... && (planes.step == rowBytes));
  if (unpadded) {
    rowBytes *= rows;
    rows = 1;
  }
  for (ptrdiff_t y = 0; y < rows; ++y) row(rowBytes, planes.row(y)...);
}

}  // namespace vek
