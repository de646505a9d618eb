// The walk over a scaled image: tiles of finished pixels are made as the source is oriented and put
// where the orientation wants them.
#pragma once

#include "vek/vek.h"

#include <stddef.h>

#include "camera/preview/orientation.h"
#include "core/kernel/place_rows.h"

namespace vek {

/// Tiles are strips of two rows, or, where rows become columns, blocks whose columns fill whole
/// cache lines of the destination.
inline constexpr ptrdiff_t stripColumns = 1024;
inline constexpr ptrdiff_t stripRows = 2;
inline constexpr ptrdiff_t maxTurnedColumns = 256;
inline constexpr ptrdiff_t maxTileBytes = 16384;

constexpr ptrdiff_t turnedColumns(ptrdiff_t pixelBytes) {
  return pixelBytes == 3 ? 128 : maxTurnedColumns;
}

constexpr ptrdiff_t turnedRows(ptrdiff_t pixelBytes) {
  return pixelBytes == 1 ? 64 : 32;
}

/// The rows first .. end - 1 of the scaled image.
struct RowRange {
  ptrdiff_t first, end;
};

/// Calls makeTile(x, y, columns, rows, out, step) for tiles that cover `rows` of the scaled image,
/// top to bottom and left to right. It writes the tile's pixels as the source is oriented, rows
/// `step` bytes apart, straight into the destination where that is possible. x and y - rows.first
/// are even. If neither coordinate runs along destination rows, a tile is part of one row:
/// pixels that meet are then written in the order of the walk.
template <class MakeTile>
void walkTiles(Vek8u* dst, const Orientation& at, ptrdiff_t pixelBytes, ptrdiff_t width,
               RowRange rows, MakeTile makeTile) {
  const PlaceTile place = select(placeRows).of(static_cast<int>(pixelBytes));
  const bool direct = !at.turned && at.dx == pixelBytes;
  const bool columnsBecomeRows = at.dy == pixelBytes || at.dy == -pixelBytes;
  const ptrdiff_t tileColumns = at.turned ? turnedColumns(pixelBytes) : stripColumns;
  const ptrdiff_t tileRows = !at.turned          ? stripRows
                             : columnsBecomeRows ? turnedRows(pixelBytes)
                                                 : 1;
  const ptrdiff_t tileStep = tileColumns * pixelBytes;
  alignas(64) Vek8u tile[maxTileBytes];

  for (ptrdiff_t y = rows.first; y < rows.end; y += tileRows) {
    const ptrdiff_t rowCount = rows.end - y < tileRows ? rows.end - y : tileRows;
    for (ptrdiff_t x = 0; x < width; x += tileColumns) {
      const ptrdiff_t columns = width - x < tileColumns ? width - x : tileColumns;
      Vek8u* const to = dst + at.start + x * at.dx + y * at.dy;
      if (direct) {
        makeTile(x, y, columns, rowCount, to, at.dy);
      } else {
        makeTile(x, y, columns, rowCount, tile, tileStep);
        place(tile, tileStep, columns, rowCount, to, at.dx, at.dy);
      }
    }
  }
}

}  // namespace vek
