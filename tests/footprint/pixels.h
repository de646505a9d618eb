// What functions read and write that treat every pixel, or sample, by itself.
#pragma once

#include "vek/vek.h"

#include "tests/support/area.h"

namespace vek::test::footprint {

/// Any image of the arithmetic, logic, shifts, thresholds, set, copy, gray, twist, XYZ, YCC, LUV,
/// HLS, HSV, mirror, gamma and norms: the region, no more.
inline Area pixels(VekiSize roi, int bytesPerPixel, int step) {
  return {ptrdiff_t{roi.width} * bytesPerPixel, roi.height, step};
}

/// What a norm writes.
inline Area normResult(int channels) {
  return {ptrdiff_t{4} * channels, 1, 0};
}

}  // namespace vek::test::footprint
