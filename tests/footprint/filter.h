// What the filters read and write.
#pragma once

#include "vek/vek.h"

#include "tests/support/area.h"

namespace vek::test::footprint {

/// A region and the neighbourhood of each of its pixels: `mask` pixels, of which `anchor` lies on
/// the pixel itself.
struct Neighbourhood {
  int channels;
  VekiSize roi;
  VekiSize mask;
  VekiPoint anchor;
  int srcStep, dstStep;
};

/// Box, median, erosion and dilation, colour median (3 x 3 or 5 x 5, centred): the region with the
/// border that the neighbourhoods reach. A convolution puts entry i of its kernel on column x +
/// anchor - i: its neighbourhood's anchor is size - 1 - anchor. Mirror and gamma: a mask of 1 x 1.
inline Area filterSource(const Neighbourhood& a) {
  return {ptrdiff_t{a.channels} * (ptrdiff_t{a.roi.width} + a.mask.width - 1),
          ptrdiff_t{a.roi.height} + a.mask.height - 1, a.srcStep,
          -ptrdiff_t{a.anchor.y} * a.srcStep - ptrdiff_t{a.anchor.x} * a.channels};
}

inline Area filterDestination(const Neighbourhood& a) {
  return {ptrdiff_t{a.channels} * a.roi.width, a.roi.height, a.dstStep};
}

}  // namespace vek::test::footprint
