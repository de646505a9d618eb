// What the pointwise functions read and write: each of their images is the region, no more.
#pragma once

#include "vek/vek.h"

#include "tests/support/area.h"

namespace vek::test::footprint {

/// Any image of an arithmetic, logic, shift, threshold, set or copy function.
inline Area pointwise(VekiSize roi, int channels, int step) {
  return {ptrdiff_t{roi.width} * channels, roi.height, step};
}

}  // namespace vek::test::footprint
