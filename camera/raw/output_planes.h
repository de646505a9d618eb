// Where the pipeline writes: three planes in one of the four rotations, filled by rows of 2 x 2
// blocks as the source is oriented.
#pragma once

#include "vek/vek.h"

#include <stddef.h>

#include "camera/raw/mapped_rows.h"
#include "camera/raw/rggb_kernels.h"
#include "camera/raw/state.h"
#include "core/kernel/place_kernels.h"
#include "core/orientation.h"

namespace vek {

/// Size of a result in 2 x 2 blocks, seen as the source is oriented.
struct BlockSize {
  int columns, rows;
};

/// Blocks are made strip by strip and, in a strip, row by row. Without a rotation rows go straight to
/// the destination; otherwise they are collected in a tile, which flush() then writes. A half turn
/// needs a tile of one row. A quarter turn makes columns of the rows: its tile has 32 rows of blocks,
/// whose luma fills a cache line of the destination, and is as wide as a thread's stack allows, since
/// every row of a strip costs a page of the source.
class OutputPlanes {
 public:
  OutputPlanes(Vek8u* const* pDst, const VekiRggbToYCbCrState& state, BlockSize size, Level level)
      : share(state.chromaFormat == chroma420 ? ChromaShare::block
              : isTransposed(state.rotation)  ? ChromaShare::column
                                              : ChromaShare::row),
        stripBlocks(!isTransposed(state.rotation) ? maxStripBlocks
                    : share == ChromaShare::block ? tileBytes / tileRows / 6
                                                  : tileBytes / tileRows / 8),
        bandRows(isTransposed(state.rotation) ? tileRows : 1),
        y_(plane(pDst, state, 0, 2 * size.columns, 2 * size.rows)),
        cb_(plane(pDst, state, 1, size.columns * chromaColumns(), size.rows * chromaRows())),
        cr_(plane(pDst, state, 2, size.columns * chromaColumns(), size.rows * chromaRows())),
        isDirect_(state.rotation == vekiRotNone),
        place_(select(placeKernels, level).bytes1) {}

  /// The widest strip of any rotation.
  static constexpr int maxStripBlocks = maxStripQuads;

  const ChromaShare share;
  const int stripBlocks;  ///< width of the strips
  const int bandRows;     ///< rows of blocks between two calls of flush()

  /// Where the blocks from column `x` of block row `y` on go.
  BlockRow row(ptrdiff_t x, ptrdiff_t y) {
    const ptrdiff_t across = chromaColumns(), down = chromaRows();
    if (isDirect_) {
      const ptrdiff_t upper = down * y, lower = upper + down - 1;
      return {{y_.at(2 * x, 2 * y), y_.at(2 * x, 2 * y + 1)},
              {cb_.at(across * x, upper), cb_.at(across * x, lower)},
              {cr_.at(across * x, upper), cr_.at(across * x, lower)}};
    }
    const ptrdiff_t lumaStep = 2 * stripBlocks, chromaStep = across * stripBlocks;
    const ptrdiff_t tileRow = y % bandRows;
    Vek8u* const luma = tile_ + 2 * tileRow * lumaStep;
    Vek8u* const cb = cbTile() + down * tileRow * chromaStep;
    Vek8u* const cr = crTile() + down * tileRow * chromaStep;
    const ptrdiff_t lower = (down - 1) * chromaStep;
    return {{luma, luma + lumaStep}, {cb, cb + lower}, {cr, cr + lower}};
  }

  /// Writes what was collected: the `rows` block rows from `y` on, `n` blocks each from column `x` on.
  void flush(ptrdiff_t x, ptrdiff_t y, ptrdiff_t n, ptrdiff_t rows) {
    if (isDirect_) return;
    const ptrdiff_t across = chromaColumns(), down = chromaRows();
    place_(tile_, 2 * stripBlocks, 2 * n, 2 * rows, y_.at(2 * x, 2 * y), y_.dx, y_.dy);
    place_(cbTile(), across * stripBlocks, across * n, down * rows, cb_.at(across * x, down * y),
           cb_.dx, cb_.dy);
    place_(crTile(), across * stripBlocks, across * n, down * rows, cr_.at(across * x, down * y),
           cr_.dx, cr_.dy);
  }

 private:
  /// A row has 480 blocks of six samples (4:2:0) or 360 of eight (4:2:2). The steps of the tile's rows
  /// are no powers of two, so that its columns spread over the sets of the cache.
  static constexpr int tileRows = 32;
  static constexpr int tileBytes = 480 * 6 * tileRows;
  static_assert(tileBytes >= 8 * maxStripBlocks);

  /// Chroma samples of a block across and down.
  ptrdiff_t chromaColumns() const { return share == ChromaShare::column ? 2 : 1; }
  ptrdiff_t chromaRows() const { return share == ChromaShare::row ? 2 : 1; }

  Vek8u* cbTile() { return tile_ + 4 * stripBlocks * bandRows; }
  Vek8u* crTile() { return cbTile() + chromaColumns() * chromaRows() * stripBlocks * bandRows; }

  static OrientedPlane plane(Vek8u* const* pDst, const VekiRggbToYCbCrState& state, int i,
                             ptrdiff_t width, ptrdiff_t height) {
    return {{pDst[i], state.dstStep[i]}, orientationOf(state.rotation), width, height};
  }

  const OrientedPlane y_, cb_, cr_;
  const bool isDirect_;
  const PlaceTile place_;
  alignas(64) Vek8u tile_[tileBytes];  ///< luma, Cb, Cr
};

/// Calls convertRow(x, n, y, out) for each strip, from its first block row to its last: n blocks
/// from column x of block row y.
template <class ConvertRow>
void forEachStripRow(OutputPlanes& planes, BlockSize size, ConvertRow convertRow) {
  for (int x = 0; x < size.columns; x += planes.stripBlocks) {
    const int n = size.columns - x < planes.stripBlocks ? size.columns - x : planes.stripBlocks;
    for (int y = 0; y < size.rows; y += planes.bandRows) {
      const int rows = size.rows - y < planes.bandRows ? size.rows - y : planes.bandRows;
      for (int i = 0; i < rows; ++i) convertRow(x, n, y + i, planes.row(x, y + i));
      planes.flush(x, y, n, rows);
    }
  }
}

/// `n` blocks further along a row.
inline BlockRow advance(const BlockRow& row, ChromaShare share, ptrdiff_t n) {
  const ptrdiff_t chroma = share == ChromaShare::column ? 2 * n : n;
  return {{row.luma[0] + 2 * n, row.luma[1] + 2 * n},
          {row.cb[0] + chroma, row.cb[1] + chroma},
          {row.cr[0] + chroma, row.cr[1] + chroma}};
}

}  // namespace vek
