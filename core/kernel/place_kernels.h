// Placing a tile of finished pixels into a destination in any orientation: rows forwards, rows
// backwards, or rows written as columns (transposed).
#pragma once

#include "vek/vek.h"

#include <stddef.h>

#include "core/level.h"

namespace vek {

/// Writes the `cols` x `rows` pixels of `tile` (rows `tileStep` bytes apart) so that pixel (x, y)
/// lands at dst + x * dx + y * dy. Either dx or dy is plus or minus the size of a pixel, unless there
/// is only one row. The tile and the destination do not overlap.
using PlaceTile = void (*)(const Vek8u* tile, ptrdiff_t tileStep, ptrdiff_t cols, ptrdiff_t rows,
                           Vek8u* dst, ptrdiff_t dx, ptrdiff_t dy);

struct PlaceKernels {
  PlaceTile bytes1;
  PlaceTile bytes2;
  PlaceTile bytes3;

  PlaceTile of(int bytesPerPixel) const {
    return bytesPerPixel == 1 ? bytes1 : bytesPerPixel == 2 ? bytes2 : bytes3;
  }
};

VEK_KERNEL_TABLE(PlaceKernels, placeKernels)

}  // namespace vek
