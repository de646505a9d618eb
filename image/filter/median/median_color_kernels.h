// Kernels of the vector median of three-channel pixels.
#pragma once

#include "vek/vek.h"

#include <stddef.h>

#include "core/level.h"

namespace vek {

/// A strip of a region.
struct ColorMedianRegion {
  const Vek8u* corner;  ///< top-left pixel of the first neighbourhood
  ptrdiff_t srcStep;
  Vek8u* dst;
  ptrdiff_t dstStep;
  ptrdiff_t columns;  ///< at most colorMedianColumns(side) - (side - 1)
  ptrdiff_t rows;
};

/// Columns of the source that a strip reads: its distances fit the first cache.
constexpr int colorMedianColumns(int side) {
  return side == 3 ? 192 : 64;
}

/// Each destination pixel is the pixel of its neighbourhood with the least sum of distances to all
/// others; the first one, row after row, among equals. The distance is the sum of the absolute
/// differences of the channels.
struct ColorMedianKernels {
  void (*square3)(const ColorMedianRegion& region);
  void (*square5)(const ColorMedianRegion& region);
};

VEK_KERNEL_TABLE(ColorMedianKernels, colorMedianKernels)

}  // namespace vek
