// Resizing and turning single planes of 8-bit samples.
#pragma once

#include "vek/vek.h"

#include <stddef.h>

#include "camera/preview/sampling.h"
#include "camera/preview/tile_walk.h"
#include "core/region.h"

namespace vek {

/// Y, Cb and Cr of a resize from planes to planes.
struct PlanarResize {
  Plane<const Vek8u> src[3];
  Plane<Vek8u> dst[3];

  PlanarResize(const Vek8u* const* pSrc, const int* srcStep, Vek8u* const* pDst,
               const int* dstStep) {
    for (int i = 0; i < 3; ++i) {
      src[i] = {pSrc[i], srcStep[i]};
      dst[i] = {pDst[i], dstStep[i]};
    }
  }
};

/// Turns the rows of an unscaled plane, straight from the source.
inline void turnPlane(Plane<const Vek8u> src, Vek8u* dst, const Orientation& at, ptrdiff_t width,
                      RowRange rows) {
  const PlaceTile place = select(placeRows).bytes1;
  const ptrdiff_t most = at.turned ? turnedRows(1) : rows.end - rows.first;
  for (ptrdiff_t y = rows.first; y < rows.end; y += most) {
    const ptrdiff_t count = rows.end - y < most ? rows.end - y : most;
    place(src.row(y), src.step, width, count, dst + at.start + y * at.dy, at.dx, at.dy);
  }
}

/// Row y of the scaled plane takes the nearest samples of source row sourceRow(y).
template <class SourceRow>
void resizeNearest(Plane<const Vek8u> src, Vek8u* dst, const Orientation& at,
                   const Scaling& scaling, ptrdiff_t width, RowRange rows, SourceRow sourceRow) {
  if (scaling.unscaled()) return turnPlane(src, dst, at, width, rows);
  const ResampleRows& kernels = select(resampleRows);
  const auto makeTile = [&](ptrdiff_t x, ptrdiff_t y, ptrdiff_t n, ptrdiff_t count, Vek8u* out,
                            ptrdiff_t step) {
    for (const ptrdiff_t end = y + count; y < end; ++y, out += step) {
      putRow(nearestRow(kernels, src.row(sourceRow(y)), scaling.xStep, x, n, out), n, out);
    }
  };
  walkTiles(dst, at, 1, width, rows, makeTile);
}

/// Row y of the scaled plane blends the source rows around phase rowPhase(y).
template <class RowPhase>
void resizeBilinear(Plane<const Vek8u> src, int srcWidth, Vek8u* dst, const Orientation& at,
                    Vek32u xStep, ptrdiff_t width, RowRange rows, RowPhase rowPhase) {
  const ResampleRows& kernels = select(resampleRows);
  const auto makeTile = [&](ptrdiff_t x, ptrdiff_t y, ptrdiff_t n, ptrdiff_t count, Vek8u* out,
                            ptrdiff_t step) {
    for (const ptrdiff_t end = y + count; y < end; ++y, out += step) {
      putRow(bilinearRow(kernels, src, srcWidth - 1, rowPhase(y), xStep, x, n, out), n, out);
    }
  };
  walkTiles(dst, at, 1, width, rows, makeTile);
}

}  // namespace vek
