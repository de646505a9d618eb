// What the raw pipeline's frame function reads and writes.
#pragma once

#include "vek/camera.h"

#include "tests/support/area.h"

namespace vek::test::footprint {

/// veki10RGGBtoYCbCr_RotRsz_8u_P3R without dead pixels outside the region.
struct RawFrame {
  Area src;
  Area dst[3];
};

inline RawFrame rawFrame(const VekiRggbGeometry& g) {
  const bool full = g.filterMode == 2;
  const ptrdiff_t border = full && g.srcBorderValid != 0 ? 1 : 0;
  const ptrdiff_t chromaRows = g.chromaFormat == 8 ? g.dstHeight : g.dstHeight / 2;
  return {{2 * (g.srcWidth + 2 * border), g.srcHeight + 2 * border, g.srcStep,
           -border * (g.srcStep + 2)},
          {{g.dstWidth, g.dstHeight, g.dstStep[0]},
           {g.dstWidth / 2, chromaRows, g.dstStep[1]},
           {g.dstWidth / 2, chromaRows, g.dstStep[2]}}};
}

}  // namespace vek::test::footprint
