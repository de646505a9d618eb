// The walks over a scaled image: tiles are made as the source is oriented and put where the
// orientation wants them.
#pragma once

#include "vek/vek.h"

#include <stddef.h>
#include <stdint.h>

#include "camera/preview/csc_kernels.h"
#include "core/kernel/place_kernels.h"
#include "core/orientation.h"

namespace vek {

/// Tiles are strips, or, where rows become columns, blocks whose columns fill whole cache lines of
/// the destination.
inline constexpr ptrdiff_t stripColumns = 1024;
inline constexpr ptrdiff_t stripRows = 16;
inline constexpr ptrdiff_t tileSamples = stripColumns * stripRows;

/// A tile whose columns become rows. There can be twice as many rows, with what is left at either
/// end.
struct TurnedTile {
  ptrdiff_t columns, rows;
};
inline constexpr TurnedTile wideTile = {128, 64};
inline constexpr TurnedTile tallTile = {64, 128};
static_assert(2 * wideTile.columns * wideTile.rows == tileSamples &&
              2 * tallTile.columns * tallTile.rows == tileSamples);

inline constexpr TurnedTile planeTile = {256, 128};  ///< turned without a buffer

/// The rows first .. end - 1 of the scaled image.
struct RowRange {
  ptrdiff_t first, end;
};

/// How many rows from row y on of a transposed image come before the first whole cache line of the
/// destination rows; 0 if the lines of the rows begin at different places, or the rows are odd.
inline ptrdiff_t rowsToLine(const OrientedPlane& dst, ptrdiff_t y, ptrdiff_t pixelBytes) {
  constexpr ptrdiff_t line = 64;
  if (dst.dx % line != 0) return 0;
  const Vek8u* const edge = dst.at(0, y) + (dst.dy > 0 ? 0 : pixelBytes);
  const ptrdiff_t past = static_cast<ptrdiff_t>(reinterpret_cast<uintptr_t>(edge) % line);
  for (ptrdiff_t rows = 0; rows < line; rows += 2) {
    if ((past + (dst.dy > 0 ? rows : -rows) * pixelBytes) % line == 0) return rows;
  }
  return 0;
}

/// Calls tile(x, y, columns, rows, to) for tiles that cover `rows` of the scaled image, top to
/// bottom and left to right; `to` is where pixel (x, y) goes. x and y - rows.first are even. If
/// neither coordinate runs along destination rows, a tile is part of one row: pixels that meet are
/// then written in the order of the walk.
template <class Tile>
void forEachTile(const OrientedPlane& dst, ptrdiff_t pixelBytes, ptrdiff_t width, RowRange rows,
                 const TurnedTile& shape, Tile tile) {
  const bool columnsBecomeRows = dst.dy == pixelBytes || dst.dy == -pixelBytes;
  const bool blocks = dst.transposed && columnsBecomeRows;
  const ptrdiff_t unit = !dst.transposed ? stripRows : blocks ? shape.rows : 1;
  const ptrdiff_t columns = dst.transposed ? shape.columns : stripColumns;
  ptrdiff_t count = unit;
  if (blocks) count += rowsToLine(dst, rows.first, pixelBytes);
  for (ptrdiff_t y = rows.first; y < rows.end; y += count, count = unit) {
    const ptrdiff_t rest = rows.end - y;
    if (rest < count || (blocks && rest < 2 * unit)) count = rest;
    for (ptrdiff_t x = 0; x < width; x += columns) {
      const ptrdiff_t n = width - x < columns ? width - x : columns;
      tile(x, y, n, count, dst.at(x, y));
    }
  }
}

/// Walks a plane: makeTile(x, y, n, rows, out, step) writes samples as the source is oriented, rows
/// `step` bytes apart, straight into the destination where that is possible.
template <class MakeTile>
void walkSamples(const OrientedPlane& dst, ptrdiff_t width, RowRange rows, MakeTile makeTile) {
  const PlaceTile place = select(placeKernels).bytes1;
  const bool direct = !dst.transposed && dst.dx == 1;
  const ptrdiff_t step = dst.transposed ? wideTile.columns : stripColumns;
  alignas(64) Vek8u tile[tileSamples];
  forEachTile(dst, 1, width, rows, wideTile,
              [&](ptrdiff_t x, ptrdiff_t y, ptrdiff_t n, ptrdiff_t count, Vek8u* to) {
                if (direct) return makeTile(x, y, n, count, to, dst.dy);
                makeTile(x, y, n, count, tile, step);
                place(tile, step, n, count, to, dst.dx, dst.dy);
              });
}

/// Y, Cb and Cr of a tile; each chroma sample serves two columns.
struct SampleTile {
  alignas(64) Vek8u y[tileSamples];
  alignas(64) Vek8u cb[tileSamples / 2];
  alignas(64) Vek8u cr[tileSamples / 2];
};

/// A format's conversions.
struct PixelKernels {
  ConvertPlanes paired, single;
  ptrdiff_t bytes;
};

/// Walks an image that is converted to pixels: makeSamples(x, y, n, rows, buffer, step) returns the
/// samples of a tile as the source is oriented, in the buffer, with rows `step` and step / 2 bytes
/// apart, or where they are. Not the pixels but the samples are turned, before the conversion: they
/// are fewer bytes, and pixels are then written once and in order.
template <class MakeSamples>
void walkPixels(const OrientedPlane& dst, const PixelKernels& kernels, ptrdiff_t width,
                RowRange rows, const TurnedTile& shape, MakeSamples makeSamples) {
  const PlaceKernels& place = select(placeKernels);
  const ptrdiff_t size = kernels.bytes, step = dst.transposed ? shape.columns : stripColumns;
  const ptrdiff_t turnedStep = 2 * shape.rows;
  SampleTile buffer, turned;

  const auto convertForwards = [&](const YccPlanes& s, ptrdiff_t n, ptrdiff_t count, Vek8u* to) {
    kernels.paired(s, n, count, to, dst.dy);
  };
  const auto convertBackwards = [&](const YccPlanes& s, ptrdiff_t n, ptrdiff_t count, Vek8u* to) {
    const ptrdiff_t pairs = (n + 1) / 2, chromaRows = count >> s.chromaShift;
    place.bytes1(s.y.data, s.y.step, n, count, turned.y + n - 1, -1, step);
    place.bytes1(s.cb.data, s.cb.step, pairs, chromaRows, turned.cb + pairs - 1, -1, step / 2);
    place.bytes1(s.cr.data, s.cr.step, pairs, chromaRows, turned.cr + pairs - 1, -1, step / 2);
    Vek8u* const left = to - (n - 1) * size;
    const ptrdiff_t odd = n % 2;  // the last column, now the first, has its chroma alone
    const auto from = [&](ptrdiff_t x) -> YccPlanes {
      return {{turned.y + x, step},
              {turned.cb + x, step / 2},
              {turned.cr + x, step / 2},
              s.chromaShift};
    };
    if (odd != 0) kernels.single(from(0), 1, count, left, dst.dy);
    kernels.paired(from(odd), n - odd, count, left + odd * size, dst.dy);
  };
  const auto convertTurned = [&](const YccPlanes& s, ptrdiff_t n, ptrdiff_t count, Vek8u* to) {
    const ptrdiff_t pairs = (n + 1) / 2, chromaRows = count >> s.chromaShift;
    const ptrdiff_t dy = dst.dy > 0 ? 1 : -1;
    const auto turn = [&](Plane<const Vek8u> plane, ptrdiff_t columns, ptrdiff_t rowCount,
                          Vek8u* out) {
      place.bytes1(plane.data, plane.step, columns, rowCount, dy > 0 ? out : out + rowCount - 1,
                   turnedStep, dy);
    };
    turn(s.y, n, count, turned.y);
    turn(s.cb, pairs, chromaRows, turned.cb);
    turn(s.cr, pairs, chromaRows, turned.cr);
    const YccPlanes samples = {
        {turned.y, turnedStep}, {turned.cb, turnedStep}, {turned.cr, turnedStep}, 1};
    (s.chromaShift == 1 ? kernels.paired : kernels.single)(
        samples, count, n, dy > 0 ? to : to + (count - 1) * dst.dy, dst.dx);
  };
  const auto scatter = [&](const YccPlanes& s, ptrdiff_t n, ptrdiff_t count, Vek8u* to) {
    kernels.paired(s, n, count, turned.y, 0);
    place.of(static_cast<int>(size))(turned.y, 0, n, count, to, dst.dx, dst.dy);
  };
  forEachTile(dst, size, width, rows, shape,
              [&](ptrdiff_t x, ptrdiff_t y, ptrdiff_t n, ptrdiff_t count, Vek8u* to) {
                const YccPlanes s = makeSamples(x, y, n, count, buffer, step);
                if (dst.transposed && (dst.dy == size || dst.dy == -size)) {
                  convertTurned(s, n, count, to);
                } else if (dst.transposed) {
                  scatter(s, n, count, to);
                } else if (dst.dx > 0) {
                  convertForwards(s, n, count, to);
                } else {
                  convertBackwards(s, n, count, to);
                }
              });
}

}  // namespace vek
