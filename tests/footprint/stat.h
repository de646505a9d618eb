// What the norms read and write.
#pragma once

#include "vek/vek.h"

#include "tests/support/area.h"

namespace vek::test::footprint {

/// Every norm reads its images' regions and writes one result a channel.
inline Area normSource(VekiSize roi, int channels, int step) {
  return {ptrdiff_t{roi.width} * channels, roi.height, step};
}
inline Area normResult(int channels) {
  return {ptrdiff_t{4} * channels, 1, 0};
}

}  // namespace vek::test::footprint
