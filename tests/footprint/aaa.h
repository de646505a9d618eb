// What automatic exposure and automatic white balance read of a frame.
#pragma once

#include "vek/vek.h"

#include <algorithm>

#include "tests/support/area.h"

namespace vek::test::footprint {

/// Mode 0 rounds up to groups of 4 x 2. The fourth sample of a lower row is not read, so the area
/// ends before it; upper rows have theirs in what follows the row.
inline Area exposureHistogram(VekiSize roi, int srcStep) {
  return {2 * ((ptrdiff_t{roi.width} + 3) / 4 * 4 - 1), (ptrdiff_t{roi.height} + 1) / 2 * 2,
          srcStep};
}

/// Modes 1, 2 and 3. The right zone of mode 2 also reads what follows the rows that it covers, but
/// nothing behind the last row.
inline Area exposureZones(VekiSize roi, int srcStep) {
  return {2 * ptrdiff_t{roi.width}, roi.height, srcStep};
}

/// The rows and columns up to the last ones of any window: exposure in mode 4, white balance.
inline Area windows(const VekiRect* first, int count, int srcStep) {
  Area area = {0, 0, srcStep};
  for (const VekiRect* w = first; w != first + count; ++w) {
    area.bytes = std::max(area.bytes, 2 * (ptrdiff_t{w->x} + w->width));
    area.rows = std::max(area.rows, ptrdiff_t{w->y} + w->height);
  }
  return area;
}

}  // namespace vek::test::footprint
