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

/// Tiles are wide and low, or, where rows become columns, blocks whose columns fill whole cache lines
/// of the destination.
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

/// Which samples are made.
enum class Samples { luma, cb, cr, all };

inline bool includes(Samples what, Samples plane) {
  return what == Samples::all || what == plane;
}

/// Where samples of Y, Cb and Cr are made; each chroma sample serves two columns.
struct SampleRows {
  Plane<Vek8u> y, cb, cr;

  YccPlanes planes(int chromaShift) const {
    return {{y.data, y.step}, {cb.data, cb.step}, {cr.data, cr.step}, chromaShift};
  }
};

/// Room for the samples of `pixels` pixels, of which 2 << chromaShift share their chroma.
template <ptrdiff_t pixels, int chromaShift>
struct SampleBuffer {
  alignas(64) Vek8u y[pixels];
  alignas(64) Vek8u cb[pixels / 2 >> chromaShift];
  alignas(64) Vek8u cr[pixels / 2 >> chromaShift];

  SampleRows rows(ptrdiff_t lumaStep, ptrdiff_t chromaStep) {
    return {{y, lumaStep}, {cb, chromaStep}, {cr, chromaStep}};
  }
};

/// The conversions to one format of pixels.
struct PixelConversion {
  ConvertPlanes paired, single;  ///< as in CscKernels
  ptrdiff_t bytes;               ///< of a pixel
};

/// An image that is converted to pixels, and what its walks need. Not the pixels but the samples are
/// oriented, before the conversion: they are fewer bytes, and pixels are then written once and in
/// order.
struct PixelWalk {
  const OrientedPlane& dst;
  const PixelConversion& convert;
  const PlaceKernels& place;
  ptrdiff_t width;
  RowRange rows;
  TileShape shape;  ///< of the tiles if it is transposed
};

// isMade(tile) says whether samples are made, and not taken where they are; makeSamples(strip, what, out)
// returns those of a tile or a part of it, as the source is oriented, in the rows of `out` if they are made.

/// Calls body(strip) for strips of a tile, top to bottom, of `most` rows at most. None has less than
/// half of that if the tile has more: vectors transpose no fewer than 16 rows.
template <class Body>
void forEachStrip(const Tile& tile, ptrdiff_t most, Body body) {
  for (ptrdiff_t y = 0, count; y < tile.rows; y += count) {
    const ptrdiff_t rest = tile.rows - y;
    count = rest <= most ? rest : rest < most + most / 2 ? most / 2 : most;
    body(Tile{tile.x, tile.y + y, tile.columns, count});
  }
}

/// Converts a strip from right to left, mirrored into the rows of `to`.
inline void convertMirrored(const PixelWalk& walk, const Tile& strip, const YccPlanes& s,
                            const SampleRows& to) {
  const ptrdiff_t n = strip.columns, pairs = (n + 1) / 2, chromaRows = strip.rows >> s.chromaShift;
  const auto mirror = [&](Plane<const Vek8u> from, ptrdiff_t columns, ptrdiff_t rows,
                          Plane<Vek8u> out) {
    walk.place.bytes1(from.data, from.step, columns, rows, out.data + columns - 1, -1, out.step);
  };
  mirror(s.y, n, strip.rows, to.y);
  mirror(s.cb, pairs, chromaRows, to.cb);
  mirror(s.cr, pairs, chromaRows, to.cr);
  YccPlanes samples = to.planes(s.chromaShift);
  Vek8u* const left = walk.dst.at(strip.x + n - 1, strip.y);
  const ptrdiff_t odd = n % 2;  // the last column, now the first, has its chroma alone
  if (odd != 0) {
    walk.convert.single(samples, 1, strip.rows, left, walk.dst.dy);
    ++samples.y.data, ++samples.cb.data, ++samples.cr.data;
  }
  walk.convert.paired(samples, n - odd, strip.rows, left + odd * walk.convert.bytes, walk.dst.dy);
}

/// Walks along destination rows, in strips whose samples stay in the cache.
template <int chromaShift, class IsMade, class MakeSamples>
void walkAlongRows(const PixelWalk& walk, IsMade isMade, MakeSamples makeSamples) {
  constexpr ptrdiff_t mostSamples = 4 * stripColumns;
  SampleBuffer<mostSamples, chromaShift> buffer, mirroredBuffer;
  const bool mirrored = walk.dst.dx < 0;
  forEachTile(walk.dst, walk.convert.bytes, walk.width, walk.rows, wideTile, [&](const Tile& tile) {
    const ptrdiff_t step = (tile.columns + 63) / 64 * 64;
    const ptrdiff_t most = mirrored || isMade(tile) ? mostSamples / step / 4 * 4 : tile.rows;
    forEachStrip(tile, most, [&](const Tile& strip) {
      const YccPlanes samples = makeSamples(strip, Samples::all, buffer.rows(step, step / 2));
      if (mirrored) {
        return convertMirrored(walk, strip, samples, mirroredBuffer.rows(step, step / 2));
      }
      walk.convert.paired(samples, strip.columns, strip.rows, walk.dst.at(strip.x, strip.y),
                          walk.dst.dy);
    });
  });
}

/// The samples of a tile whose columns become rows. Planes that can be made separately are made and
/// transposed one after the other, so that what is made lies where a later plane goes: luma in the place
/// of both chroma planes, Cb in that of Cr. Only Cr needs room of its own, for strips of 64 rows, which
/// become cache lines. Planes that are made together need it for strips of 32 rows.
template <int chromaShift, bool separate>
class TransposedTile {
 public:
  explicit TransposedTile(const PixelWalk& walk)
      : place_(walk.place), step_(2 * walk.shape.rows), forwards_(walk.dst.dy > 0) {}

  template <class IsMade, class MakeSamples>
  void set(const Tile& tile, IsMade isMade, MakeSamples makeSamples) {
    const auto orient = [&](Samples what, const SampleRows& out, ptrdiff_t most) {
      forEachStrip(tile, isMade(tile) ? most : tile.rows, [&](const Tile& strip) {
        transpose(tile, strip, what, makeSamples(strip, what, out));
      });
    };
    if constexpr (separate) {
      const SampleRows out = {{cb_, lumaStep}, {cr_, chromaStep}, {made_, chromaStep}};
      orient(Samples::luma, out, 2 * chromaSamples / lumaStep);
      orient(Samples::cb, out, (chromaSamples / chromaStep) << chromaShift);
      orient(Samples::cr, out, (madeSamples / chromaStep) << chromaShift);
    } else {
      const SampleRows out = {{made_, lumaStep},
                              {made_ + madeSamples / 2, chromaStep},
                              {made_ + madeSamples / 4 * 3, chromaStep}};
      orient(Samples::all, out, rowsTogether);
    }
  }

  /// Two columns that shared chroma have become two rows that do.
  YccPlanes planes() const {
    return {{y_, step_}, {cb_, step_ >> chromaShift}, {cr_, step_ >> chromaShift}, 1};
  }

 private:
  static constexpr ptrdiff_t lumaStep = wideTile.columns, chromaStep = lumaStep / 2;
  static constexpr ptrdiff_t chromaSamples = tileSamples / 2 >> chromaShift, rowsTogether = 32;
  static constexpr ptrdiff_t madeSamples = separate ? 64 * chromaStep : rowsTogether * 2 * lumaStep;

  void transpose(const Tile& tile, const Tile& strip, Samples what, const YccPlanes& s) {
    const auto place = [&](Plane<const Vek8u> from, ptrdiff_t columns, int shift, Vek8u* plane) {
      const ptrdiff_t first = (strip.y - tile.y) >> shift;
      const ptrdiff_t column = forwards_ ? first : (tile.rows >> shift) - 1 - first;
      place_.bytes1(from.data, from.step, columns, strip.rows >> shift, plane + column,
                    step_ >> shift, forwards_ ? 1 : -1);
    };
    const ptrdiff_t pairs = (strip.columns + 1) / 2;
    if (includes(what, Samples::luma)) place(s.y, strip.columns, 0, y_);
    if (includes(what, Samples::cb)) place(s.cb, pairs, chromaShift, cb_);
    if (includes(what, Samples::cr)) place(s.cr, pairs, chromaShift, cr_);
  }

  alignas(64) Vek8u y_[tileSamples + 2 * chromaSamples + madeSamples];  ///< and what follows
  Vek8u* const cb_ = y_ + tileSamples;
  Vek8u* const cr_ = cb_ + chromaSamples;
  Vek8u* const made_ = cr_ + chromaSamples;
  const PlaceKernels& place_;
  const ptrdiff_t step_;
  const bool forwards_;
};

/// Walks an image whose columns become rows. Their pixels do not share chroma, unless the two rows of a
/// pair did.
template <int chromaShift, bool separate, class IsMade, class MakeSamples>
void walkTransposed(const PixelWalk& walk, IsMade isMade, MakeSamples makeSamples) {
  const OrientedPlane& dst = walk.dst;
  const PixelConversion& convert = walk.convert;
  TransposedTile<chromaShift, separate> samples(walk);
  const ConvertPlanes kernel = chromaShift == 1 ? convert.paired : convert.single;
  forEachTile(dst, convert.bytes, walk.width, walk.rows, walk.shape, [&](const Tile& tile) {
    samples.set(tile, isMade, makeSamples);
    const ptrdiff_t firstRow = dst.dy > 0 ? tile.y : tile.y + tile.rows - 1;
    kernel(samples.planes(), tile.rows, tile.columns, dst.at(tile.x, firstRow), dst.dx);
  });
}

/// Walks an image of which neither coordinate runs along destination rows: each pixel of a row goes where
/// `dx` and `dy` say.
template <class MakeSamples>
[[gnu::noinline]] void walkScattered(const PixelWalk& walk, MakeSamples makeSamples) {
  const OrientedPlane& dst = walk.dst;
  const PixelConversion& convert = walk.convert;
  SampleBuffer<wideTile.columns, 0> buffer;
  Vek8u pixels[3 * wideTile.columns];
  forEachTile(dst, convert.bytes, walk.width, walk.rows, walk.shape, [&](const Tile& tile) {
    VEK_ASSERT(tile.rows == 1);
    convert.paired(makeSamples(tile, Samples::all, buffer.rows(0, 0)), tile.columns, 1, pixels, 0);
    walk.place.of(static_cast<int>(convert.bytes))(pixels, 0, tile.columns, 1,
                                                   dst.at(tile.x, tile.y), dst.dx, dst.dy);
  });
}

/// The walk of an image that is transposed or not. Functions call one or the other in a function of its
/// own that is not inlined, so that their buffers do not add up on the stack. `separate`: planes can be
/// made one without the other.
template <bool transposed, int chromaShift, bool separate, class IsMade, class MakeSamples>
void walkPixels(const PixelWalk& walk, IsMade isMade, MakeSamples makeSamples) {
  VEK_ASSERT(walk.dst.transposed == transposed);
  if constexpr (transposed) {
    if (walk.dst.dy != walk.convert.bytes && walk.dst.dy != -walk.convert.bytes) {
      return walkScattered(walk, makeSamples);
    }
    walkTransposed<chromaShift, separate>(walk, isMade, makeSamples);
  } else {
    walkAlongRows<chromaShift>(walk, isMade, makeSamples);
  }
}

/// The most columns of a strip.
template <bool transposed>
inline constexpr ptrdiff_t mostColumns = transposed ? wideTile.columns : stripColumns;

}  // namespace vek
