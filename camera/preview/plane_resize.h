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
inline void turnPlane(Plane<const Vek8u> src, const OrientedPlane& dst, ptrdiff_t width,
                      RowRange rows) {
  const PlaceTile place = select(placeKernels).bytes1;
  if (dst.dx == 1 && dst.dy == width && src.step == width) {  // one long row
    const size_t bytes = static_cast<size_t>(width * (rows.end - rows.first));
    memcpy(dst.at(0, rows.first), src.row(rows.first), bytes);
    return;
  }
  forEachTile(dst, 1, width, rows, planeTile,
              [&](ptrdiff_t x, ptrdiff_t y, ptrdiff_t n, ptrdiff_t count, Vek8u* to) {
                place(src.row(y) + x, src.step, n, count, to, dst.dx, dst.dy);
              });
}

/// Row y of the scaled plane takes the nearest samples of source row sourceRow(y).
template <class SourceRow>
void resizeNearest(Plane<const Vek8u> src, const OrientedPlane& dst, const Scaling& scaling,
                   ptrdiff_t width, RowRange rows, SourceRow sourceRow) {
  if (scaling.unscaled()) return turnPlane(src, dst, width, rows);
  const ResampleKernels& kernels = select(resampleKernels);
  Columns columns;
  walkSamples(
      dst, width, rows,
      [&](ptrdiff_t x, ptrdiff_t y, ptrdiff_t n, ptrdiff_t count, Vek8u* out, ptrdiff_t step) {
        nearestColumns(kernels, scaling.xStep, x, n, columns);
        for (const ptrdiff_t end = y + count; y < end; ++y, out += step) {
          putRow(nearestRow(kernels, src.row(sourceRow(y)), columns, out), n, out);
        }
      });
}

/// Row y of the scaled plane blends the source rows around phase rowPhase(y).
template <class RowPhase>
void resizeBilinear(Plane<const Vek8u> src, int srcWidth, const OrientedPlane& dst, Vek32u xStep,
                    ptrdiff_t width, RowRange rows, RowPhase rowPhase) {
  const ResampleKernels& kernels = select(resampleKernels);
  Columns columns;
  walkSamples(
      dst, width, rows,
      [&](ptrdiff_t x, ptrdiff_t y, ptrdiff_t n, ptrdiff_t count, Vek8u* out, ptrdiff_t step) {
        blendedColumns(kernels, xStep, x, n, srcWidth - 1, columns);
        for (const ptrdiff_t end = y + count; y < end; ++y, out += step) {
          putRow(blendedRow(kernels, src, rowPhase(y), columns, out), n, out);
        }
      });
}

}  // namespace vek
