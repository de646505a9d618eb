// What the conversions of whole three-channel pixels read and write.
#pragma once

#include "vek/vek.h"

#include "tests/support/area.h"

namespace vek::test::footprint {

/// Gray, twist, XYZ, YCC, LUV, HLS, HSV: the rows of the region, nothing else.
inline Area pixels(VekiSize roi, int bytesPerPixel, int step) {
  return {ptrdiff_t{roi.width} * bytesPerPixel, roi.height, step};
}

}  // namespace vek::test::footprint
