// Kernels that turn planes of YCbCr or YUV into pixels.
#pragma once

#include "vek/vek.h"

#include <stddef.h>

#include "core/region.h"

namespace vek {

/// Rows of samples; row y of the luma goes with chroma row y >> chromaShift.
struct YccPlanes {
  Plane<const Vek8u> y, cb, cr;
  int chromaShift;
};

/// Converts `rows` rows of n pixels into rows `dstStep` bytes apart, one after the other where they
/// overlap. `dst` may be at any address.
using ConvertPlanes = void (*)(const YccPlanes& planes, ptrdiff_t n, ptrdiff_t rows, Vek8u* dst,
                               ptrdiff_t dstStep);

}  // namespace vek
