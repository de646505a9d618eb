// How an image lies in its destination: mirrored, rotated, or as it is.
#pragma once

#include "vek/camera.h"

#include <stddef.h>

#include "core/region.h"

namespace vek {

/// The columns and the rows are reversed first; then the image is transposed.
struct Orientation {
  bool columnsReversed = false;
  bool rowsReversed = false;
  bool transposed = false;
};

/// The orientation that a camera function's `rotation` asks for.
constexpr Orientation orientationOf(int rotation) {
  switch (rotation) {
    case vekiRot90Ccw:
      return {.columnsReversed = true, .transposed = true};
    case vekiRot90Cw:
      return {.rowsReversed = true, .transposed = true};
    case vekiRot180:
      return {.columnsReversed = true, .rowsReversed = true};
    case vekiMirrorLeftRight:
      return {.columnsReversed = true};
    case vekiMirrorTopBottom:
      return {.rowsReversed = true};
    default:
      return {};
  }
}

/// Whether a camera function's `rotation` makes rows of the image's columns.
constexpr bool isTransposed(int rotation) {
  return orientationOf(rotation).transposed;
}

/// A destination in the coordinates of the image before it is oriented: pixel (x, y) of the image
/// goes to at(x, y). For example, an image of 3 x 2 bytes that is rotated clockwise into rows 8 bytes
/// apart has `first` at byte 1, dx = 8 and dy = -1.
struct OrientedPlane {
  /// `width` and `height` are those of the image before it is oriented.
  OrientedPlane(Plane<Vek8u> dst, Orientation orientation, ptrdiff_t width, ptrdiff_t height,
                ptrdiff_t pixelBytes = 1)
      : first(dst.data),
        dx(orientation.transposed ? dst.step : pixelBytes),
        dy(orientation.transposed ? pixelBytes : dst.step),
        transposed(orientation.transposed) {
    if (orientation.columnsReversed) {
      first += (width - 1) * dx;
      dx = -dx;
    }
    if (orientation.rowsReversed) {
      first += (height - 1) * dy;
      dy = -dy;
    }
  }

  Vek8u* at(ptrdiff_t x, ptrdiff_t y) const { return first + x * dx + y * dy; }

  Vek8u* first;
  ptrdiff_t dx;  ///< bytes from a pixel to its right neighbour in the image
  ptrdiff_t dy;  ///< bytes from a pixel to the one below it in the image
  bool transposed;
};

}  // namespace vek
