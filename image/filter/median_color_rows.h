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
  ptrdiff_t columns;  ///< at most colorMedianStrip
  ptrdiff_t rows;
};

/// With a mask's border of up to four columns a strip fills 64 columns.
inline constexpr ptrdiff_t colorMedianStrip = 60;

/// Each destination pixel is the pixel of its neighbourhood with the least sum of distances to all
/// others; the first one, row after row, among equals. The distance is the sum of the absolute
/// differences of the channels.
struct ColorMedianRows {
  void (*ColorMedianFilter3x3_8u)(const ColorMedianRegion& region);
  void (*ColorMedianFilter5x5_8u)(const ColorMedianRegion& region);
};

VEK_KERNEL_TABLE(ColorMedianRows, colorMedianRows)

}  // namespace vek
