// The six orientations of the resize-and-rotate functions.
#pragma once

#include "vek/vek.h"

#include <stddef.h>

#include "core/rotation.h"

namespace vek {

/// Pixel (x, y) of the scaled image, seen as the source is oriented, lands `start + x * dx + y *
/// dy` bytes behind the destination pointer.
struct Orientation {
  ptrdiff_t start;
  ptrdiff_t dx;
  ptrdiff_t dy;
  bool turned;  ///< a quarter turn: columns of the scaled image become destination rows
};

/// Orientation of a scaled image of `width` x `height` pixels of `bytes` bytes each in a plane with
/// row step `step`. Codes: 0 unrotated, 1 quarter turn counter-clockwise, 2 quarter turn clockwise,
/// 3 half turn, 4 mirrored left-right, 5 mirrored top-bottom.
inline Orientation orientation(int rotation, ptrdiff_t width, ptrdiff_t height, ptrdiff_t bytes,
                               ptrdiff_t step) {
  const ptrdiff_t right = (width - 1) * bytes;
  const ptrdiff_t bottom = (height - 1) * step;
  switch (rotation) {
    case 1:
      return {(width - 1) * step, -step, bytes, true};
    case 2:
      return {(height - 1) * bytes, step, -bytes, true};
    case 3:
      return {right + bottom, -bytes, -step, false};
    case 4:
      return {right, -bytes, step, false};
    case 5:
      return {bottom, bytes, -step, false};
    default:
      return {0, bytes, step, false};
  }
}

}  // namespace vek
