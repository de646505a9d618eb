// The walks over a scaled image: tiles are made as the source is oriented and put where the
// destination's orientation wants them.
#pragma once

#include "vek/vek.h"

#include <stddef.h>
#include <stdint.h>

#include "camera/preview/csc_kernels.h"
#include "core/assert.h"
#include "core/kernel/place_kernels.h"
#include "core/orientation.h"
#include "core/region.h"

namespace vek {

/// Tiles are strips, or, where rows become columns, blocks whose columns fill whole cache lines of
/// the destination.
inline constexpr ptrdiff_t stripColumns = 1024;
inline constexpr ptrdiff_t stripRows = 16;
inline constexpr ptrdiff_t tileSamples = stripColumns * stripRows;

/// The size of the tiles whose columns become rows. There can be twice as many rows in a tile, with
/// what is left at either end of the image.
struct TileShape {
  ptrdiff_t columns, rows;
};
inline constexpr TileShape wideTile = {128, 64};
inline constexpr TileShape tallTile = {64, 128};
static_assert(2 * wideTile.columns * wideTile.rows == tileSamples &&
              2 * tallTile.columns * tallTile.rows == tileSamples);

inline constexpr TileShape planeTile = {256, 128};  ///< transposed without a buffer

/// The rows first .. end - 1 of the scaled image.
struct RowRange {
  ptrdiff_t first, end;
};

/// A part of the scaled image.
struct Tile {
  ptrdiff_t x, y, columns, rows;
};

/// How many rows from row y on of a transposed image come before the first whole cache line of the
/// destination rows; 0 if the destination rows begin at different places of their cache lines, or if
/// the number would be odd.
inline ptrdiff_t rowsToCacheLine(const OrientedPlane& dst, ptrdiff_t y, ptrdiff_t pixelBytes) {
  constexpr ptrdiff_t cacheLine = 64;
  if (dst.dx % cacheLine != 0) return 0;
  const Vek8u* const edge = dst.at(0, y) + (dst.dy > 0 ? 0 : pixelBytes);
  const ptrdiff_t past = static_cast<ptrdiff_t>(reinterpret_cast<uintptr_t>(edge) % cacheLine);
  for (ptrdiff_t rows = 0; rows < cacheLine; rows += 2) {
    if ((past + (dst.dy > 0 ? rows : -rows) * pixelBytes) % cacheLine == 0) return rows;
  }
  return 0;
}

/// Calls body(tile) for tiles that cover `rows` of the scaled image, top to bottom and left to right.
/// x and y - rows.first are even. If neither coordinate runs along destination rows, a tile is part
/// of one row: pixels that meet are then written in the order of the walk.
template <class Body>
void forEachTile(const OrientedPlane& dst, ptrdiff_t pixelBytes, ptrdiff_t width, RowRange rows,
                 const TileShape& shape, Body body) {
  const bool columnsBecomeRows = dst.dy == pixelBytes || dst.dy == -pixelBytes;
  const bool blocks = dst.transposed && columnsBecomeRows;
  const ptrdiff_t tileRows = !dst.transposed ? stripRows : blocks ? shape.rows : 1;
  const ptrdiff_t tileColumns = dst.transposed ? shape.columns : stripColumns;
  ptrdiff_t count = tileRows;
  if (blocks) count += rowsToCacheLine(dst, rows.first, pixelBytes);
  for (ptrdiff_t y = rows.first; y < rows.end; y += count, count = tileRows) {
    const ptrdiff_t rest = rows.end - y;
    if (rest < count || (blocks && rest < 2 * tileRows)) count = rest;
    for (ptrdiff_t x = 0; x < width; x += tileColumns) {
      const ptrdiff_t n = width - x < tileColumns ? width - x : tileColumns;
      body(Tile{x, y, n, count});
    }
  }
}

/// Walks a plane: makeTile(tile, out, step) writes samples as the source is oriented, rows `step`
/// bytes apart, straight into the destination where that is possible.
template <class MakeTile>
void walkSamples(const OrientedPlane& dst, const PlaceKernels& place, ptrdiff_t width,
                 RowRange rows, MakeTile makeTile) {
  const bool direct = !dst.transposed && dst.dx == 1;
  const ptrdiff_t step = dst.transposed ? wideTile.columns : stripColumns;
  alignas(64) Vek8u buffer[tileSamples];
  forEachTile(dst, 1, width, rows, wideTile, [&](const Tile& tile) {
    Vek8u* const to = dst.at(tile.x, tile.y);
    if (direct) return makeTile(tile, to, dst.dy);
    makeTile(tile, buffer, step);
    place.bytes1(buffer, step, tile.columns, tile.rows, to, dst.dx, dst.dy);
  });
}

/// Y, Cb and Cr of a tile; each chroma sample serves two columns.
struct SampleTile {
  alignas(64) Vek8u y[tileSamples];
  alignas(64) Vek8u cb[tileSamples / 2];
  alignas(64) Vek8u cr[tileSamples / 2];
};

/// The conversions to one format of pixels.
struct PixelConversion {
  ConvertPlanes paired, single;  ///< as in CscKernels
  ptrdiff_t bytes;               ///< of a pixel
};

/// Converts tiles of samples to pixels of an oriented image. Not the pixels but the samples are
/// oriented, before the conversion: they are fewer bytes, and pixels are then written once and in
/// order.
class TileConverter {
 public:
  TileConverter(const OrientedPlane& dst, const PixelConversion& convert, const PlaceKernels& place,
                const TileShape& shape)
      : dst_(dst),
        convert_(convert),
        place_(place),
        step_(dst.transposed ? shape.columns : stripColumns),
        transposedStep_(2 * shape.rows) {}

  /// The row step of a tile's luma; that of its chroma is half of it.
  ptrdiff_t step() const { return step_; }

  void convert(const Tile& tile, const YccPlanes& samples) {
    const bool columnsBecomeRows = dst_.dy == convert_.bytes || dst_.dy == -convert_.bytes;
    if (dst_.transposed && columnsBecomeRows) {
      convertTransposed(tile, samples);
    } else if (dst_.transposed) {
      convertScattered(tile, samples);
    } else if (dst_.dx > 0) {
      convert_.paired(samples, tile.columns, tile.rows, dst_.at(tile.x, tile.y), dst_.dy);
    } else {
      convertMirrored(tile, samples);
    }
  }

 private:
  /// From right to left.
  void convertMirrored(const Tile& tile, const YccPlanes& s) {
    const ptrdiff_t n = tile.columns, pairs = (n + 1) / 2, chromaRows = tile.rows >> s.chromaShift;
    place_.bytes1(s.y.data, s.y.step, n, tile.rows, oriented_.y + n - 1, -1, step_);
    place_.bytes1(s.cb.data, s.cb.step, pairs, chromaRows, oriented_.cb + pairs - 1, -1, step_ / 2);
    place_.bytes1(s.cr.data, s.cr.step, pairs, chromaRows, oriented_.cr + pairs - 1, -1, step_ / 2);
    const auto from = [&](ptrdiff_t x) -> YccPlanes {
      return {{oriented_.y + x, step_},
              {oriented_.cb + x, step_ / 2},
              {oriented_.cr + x, step_ / 2},
              s.chromaShift};
    };
    Vek8u* const left = dst_.at(tile.x + n - 1, tile.y);
    const ptrdiff_t odd = n % 2;  // the last column, now the first, has its chroma alone
    if (odd != 0) convert_.single(from(0), 1, tile.rows, left, dst_.dy);
    convert_.paired(from(odd), n - odd, tile.rows, left + odd * convert_.bytes, dst_.dy);
  }

  /// Columns become rows, whose pixels do not share chroma, unless the two rows of a pair did. Two
  /// columns that shared chroma become two rows that do.
  void convertTransposed(const Tile& tile, const YccPlanes& s) {
    const ptrdiff_t pairs = (tile.columns + 1) / 2, chromaRows = tile.rows >> s.chromaShift;
    const bool forwards = dst_.dy > 0;
    const auto transpose = [&](Plane<const Vek8u> plane, ptrdiff_t columns, ptrdiff_t rows,
                               Vek8u* out) {
      place_.bytes1(plane.data, plane.step, columns, rows, forwards ? out : out + rows - 1,
                    transposedStep_, forwards ? 1 : -1);
    };
    transpose(s.y, tile.columns, tile.rows, oriented_.y);
    transpose(s.cb, pairs, chromaRows, oriented_.cb);
    transpose(s.cr, pairs, chromaRows, oriented_.cr);
    const YccPlanes samples = {{oriented_.y, transposedStep_},
                               {oriented_.cb, transposedStep_},
                               {oriented_.cr, transposedStep_},
                               1};
    const ConvertPlanes kernel = s.chromaShift == 1 ? convert_.paired : convert_.single;
    const ptrdiff_t firstRow = forwards ? tile.y : tile.y + tile.rows - 1;
    kernel(samples, tile.rows, tile.columns, dst_.at(tile.x, firstRow), dst_.dx);
  }

  /// Each pixel of a row goes where `dx` and `dy` say.
  void convertScattered(const Tile& tile, const YccPlanes& s) {
    VEK_ASSERT(tile.rows == 1);
    Vek8u* const pixels = oriented_.y;
    convert_.paired(s, tile.columns, 1, pixels, 0);
    place_.of(static_cast<int>(convert_.bytes))(pixels, 0, tile.columns, 1, dst_.at(tile.x, tile.y),
                                                dst_.dx, dst_.dy);
  }

  const OrientedPlane dst_;
  const PixelConversion convert_;
  const PlaceKernels& place_;
  const ptrdiff_t step_, transposedStep_;
  SampleTile oriented_;
};

/// Walks an image that is converted to pixels: makeSamples(tile, buffer, step) returns the samples of
/// a tile as the source is oriented, in the buffer, with rows `step` and step / 2 bytes apart, or
/// where they are.
template <class MakeSamples>
void walkPixels(const OrientedPlane& dst, const PixelConversion& convert, const PlaceKernels& place,
                ptrdiff_t width, RowRange rows, const TileShape& shape, MakeSamples makeSamples) {
  TileConverter converter(dst, convert, place, shape);
  SampleTile buffer;
  forEachTile(dst, convert.bytes, width, rows, shape, [&](const Tile& tile) {
    converter.convert(tile, makeSamples(tile, buffer, converter.step()));
  });
}

}  // namespace vek
