// Resizing and orienting single planes of 8-bit samples.
#pragma once

#include "vek/vek.h"

#include <stddef.h>
#include <string.h>

#include "camera/preview/preview_call.h"
#include "camera/preview/preview_kernels.h"
#include "camera/preview/sampling.h"
#include "camera/preview/tile_walk.h"
#include "core/orientation.h"
#include "core/region.h"

namespace vek {

/// Copies rows of an unscaled plane, straight from the source.
inline void orientPlane(const PlaceKernels& place, Plane<const Vek8u> src, const OrientedPlane& dst,
                        ptrdiff_t width, RowRange rows) {
  if (dst.dx == 1 && dst.dy == width && src.step == width) {  // one long row
    const size_t bytes = static_cast<size_t>(width * (rows.end - rows.first));
    memcpy(dst.at(0, rows.first), src.row(rows.first), bytes);
    return;
  }
  if (!dst.transposed) {
    place.bytes1(src.row(rows.first), src.step, width, rows.end - rows.first, dst.at(0, rows.first),
                 dst.dx, dst.dy);
    return;
  }
  forEachTile(dst, 1, width, rows, planeTile, [&](const Tile& tile) {
    place.bytes1(src.row(tile.y) + tile.x, src.step, tile.columns, tile.rows,
                 dst.at(tile.x, tile.y), dst.dx, dst.dy);
  });
}

/// Row y of the scaled plane takes the nearest samples of source row sourceRow(y).
template <class SourceRow>
void resizeNearest(const PreviewCall& call, const PreviewKernels& kernels, Plane<const Vek8u> src,
                   const OrientedPlane& dst, ptrdiff_t width, RowRange rows, SourceRow sourceRow) {
  if (isUnscaled(call)) return orientPlane(kernels.place, src, dst, width, rows);
  ColumnsOf<stripColumns> columns;
  walkSamples(dst, kernels.place, width, rows, [&](const Tile& tile, Vek8u* out, ptrdiff_t step) {
    nearestColumns(kernels.resample, call.columnStep(), tile.x, tile.columns, columns);
    for (ptrdiff_t i = 0; i < tile.rows; ++i, out += step) {
      const Vek8u* const row = src.row(static_cast<ptrdiff_t>(sourceRow(tile.y + i)));
      putRow(nearestRow(kernels.resample, row, columns, out), tile.columns, out);
    }
  });
}

/// Row y of the scaled luma blends the source rows around phase rowPhase(y).
template <class RowPhase>
void resizeBilinear(const PreviewCall& call, const PreviewKernels& kernels,
                    const OrientedPlane& dst, RowRange rows, RowPhase rowPhase) {
  const Plane<const Vek8u> src = call.srcPlane(0);
  ColumnsOf<stripColumns> columns;
  walkSamples(dst, kernels.place, call.dstWidth, rows,
              [&](const Tile& tile, Vek8u* out, ptrdiff_t step) {
                blendedColumns(kernels.resample, call.columnStep(), tile.x, tile.columns,
                               call.srcWidth - 1, columns);
                for (ptrdiff_t i = 0; i < tile.rows; ++i, out += step) {
                  putRow(blendedRow(kernels.resample, src, rowPhase(tile.y + i), columns, out),
                         tile.columns, out);
                }
              });
}

}  // namespace vek
