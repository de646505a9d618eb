// Where the pipeline writes: three planes in one of the four rotations, filled by rows of 2 x 2
// blocks as the source is oriented.
#pragma once

#include "vek/vek.h"

#include <stddef.h>

#include "camera/raw/rggb_kernels.h"
#include "camera/raw/state.h"
#include "core/kernel/place_kernels.h"
#include "core/orientation.h"

namespace vek {

/// Size of a result in 2 x 2 blocks, seen as the source is oriented.
struct BlockSize {
  int columns, rows;
};

/// Blocks are made strip by strip and, in a strip, row by row. Unturned rows go straight to the
/// destination; others are collected in a tile, which place() then writes. The tile of a quarter
/// turn trades columns for rows: narrow strips pay for a page of the source in every row, low tiles
/// for cache lines of the destination that are written in pieces.
class Canvas {
 public:
  Canvas(Vek8u* const* pDst, const VekiRggbToYCbCrState& state, BlockSize size)
      : share(state.chromaFormat == chroma420 ? ChromaShare::block
              : isTransposed(state.rotation)  ? ChromaShare::column
                                              : ChromaShare::row),
        stripBlocks(isTransposed(state.rotation) ? turnedBlocks : maxStripBlocks),
        bandRows(isTransposed(state.rotation) ? turnedRows : 1),
        y_(plane(pDst, state, 0, 2 * size.columns, 2 * size.rows)),
        cb_(plane(pDst, state, 1, size.columns * chromaColumns(), size.rows * chromaRows())),
        cr_(plane(pDst, state, 2, size.columns * chromaColumns(), size.rows * chromaRows())),
        direct_(state.rotation == 0) {}

  /// The widest strip of any rotation.
  static constexpr int maxStripBlocks = 1024;

  const ChromaShare share;
  const int stripBlocks;  ///< width of the strips
  const int bandRows;     ///< rows of blocks between two calls of place()

  /// Where the blocks from column `x` of block row `y` on go.
  BlockRow row(ptrdiff_t x, ptrdiff_t y) {
    const ptrdiff_t across = chromaColumns(), down = chromaRows();
    if (direct_) {
      const ptrdiff_t upper = down * y, lower = upper + down - 1;
      return {{y_.at(2 * x, 2 * y), y_.at(2 * x, 2 * y + 1)},
              {cb_.at(across * x, upper), cb_.at(across * x, lower)},
              {cr_.at(across * x, upper), cr_.at(across * x, lower)}};
    }
    const ptrdiff_t lumaStep = 2 * stripBlocks, chromaStep = across * stripBlocks;
    const ptrdiff_t tileRow = y % bandRows;
    Vek8u* const luma = luma_ + 2 * tileRow * lumaStep;
    Vek8u* const cb = chroma_[0] + down * tileRow * chromaStep;
    Vek8u* const cr = chroma_[1] + down * tileRow * chromaStep;
    const ptrdiff_t lower = (down - 1) * chromaStep;
    return {{luma, luma + lumaStep}, {cb, cb + lower}, {cr, cr + lower}};
  }

  /// Writes the `rows` block rows from `y` on, `n` blocks each from column `x` on.
  void place(ptrdiff_t x, ptrdiff_t y, ptrdiff_t n, ptrdiff_t rows) const {
    if (direct_) return;
    const ptrdiff_t across = chromaColumns(), down = chromaRows();
    const PlaceTile place = select(placeKernels).bytes1;
    place(luma_, 2 * stripBlocks, 2 * n, 2 * rows, y_.at(2 * x, 2 * y), y_.dx, y_.dy);
    place(chroma_[0], across * stripBlocks, across * n, down * rows, cb_.at(across * x, down * y),
          cb_.dx, cb_.dy);
    place(chroma_[1], across * stripBlocks, across * n, down * rows, cr_.at(across * x, down * y),
          cr_.dx, cr_.dy);
  }

 private:
  static constexpr int turnedBlocks = 256;
  static constexpr int turnedRows = 32;
  static constexpr int tileBlocks = turnedBlocks * turnedRows;
  static_assert(tileBlocks >= maxStripBlocks);

  /// Chroma samples of a block across and down.
  ptrdiff_t chromaColumns() const { return share == ChromaShare::column ? 2 : 1; }
  ptrdiff_t chromaRows() const { return share == ChromaShare::row ? 2 : 1; }

  static OrientedPlane plane(Vek8u* const* pDst, const VekiRggbToYCbCrState& state, int i,
                             ptrdiff_t width, ptrdiff_t height) {
    return {{pDst[i], state.dstStep[i]}, orientationOf(state.rotation), width, height};
  }

  const OrientedPlane y_, cb_, cr_;
  const bool direct_;
  alignas(64) Vek8u luma_[4 * tileBlocks];
  alignas(64) Vek8u chroma_[2][2 * tileBlocks];
};

/// Calls convertRow(x, n, y, out) for each strip, from its first block row to its last: n blocks
/// from column x of block row y.
template <class ConvertRow>
void forEachStripRow(Canvas& canvas, BlockSize size, ConvertRow convertRow) {
  for (int x = 0; x < size.columns; x += canvas.stripBlocks) {
    const int n = size.columns - x < canvas.stripBlocks ? size.columns - x : canvas.stripBlocks;
    for (int y = 0; y < size.rows; y += canvas.bandRows) {
      const int rows = size.rows - y < canvas.bandRows ? size.rows - y : canvas.bandRows;
      for (int i = 0; i < rows; ++i) convertRow(x, n, y + i, canvas.row(x, y + i));
      canvas.place(x, y, n, rows);
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
