// Kernels that turn planes of YCbCr or YUV into pixels.
#pragma once

#include "vek/vek.h"

#include <stddef.h>

#include "core/region.h"

namespace vek {

/// Rows of samples; row y of the luma goes with chroma row y >> chromaShift, which is 0 or 1.
struct YccPlanes {
  Plane<const Vek8u> y, cb, cr;
  int chromaShift;
};

/// Converts `rows` rows of n pixels into rows `dstStep` bytes apart, one after the other where they
/// overlap. `dst` may be at any address; it does not overlap the planes.
using ConvertPlanes = void (*)(const YccPlanes& planes, ptrdiff_t n, ptrdiff_t rows, Vek8u* dst,
                               ptrdiff_t dstStep);

/// Converts the planes of a region whose chroma samples serve `pixels` pixels of a row, as one long
/// row where neither the planes nor the destination have padding.
template <int pixels, int pixelBytes>
void convertRegion(ConvertPlanes convert, const YccPlanes& planes, VekiSize roi,
                   Plane<Vek8u, pixelBytes> dst) {
  using Chroma = Plane<const Vek8u, 1, pixels>;
  Extent extent = {roi.width, roi.height};
  if (planes.chromaShift == 0) {
    extent = joinedRows(roi.width, roi.height, planes.y, Chroma{planes.cb.data, planes.cb.step},
                        Chroma{planes.cr.data, planes.cr.step}, dst);
  }
  convert(planes, extent.n, extent.rows, dst.data, dst.step);
}

}  // namespace vek
