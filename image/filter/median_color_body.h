// The vector median, compiled for every level: plain loops over a strip of 64 columns.
//
// The distance of two pixels does not depend on the window, so each is computed once and kept for
// as long as both rows are in the mask: 12 displacements per pixel for 3 x 3, 40 for 5 x 5. Scores
// are summed in two steps: from each pixel to each column of the window (shared by all windows that
// contain both), then over the columns. They reach at most 24 * 765 = 18360, so that signed 16-bit
// lanes do for everything.
#pragma once

#include <string.h>

#include "image/filter/median_color_rows.h"
#include "image/filter/unrolled.h"

namespace vek::VEK_LEVEL {
namespace {

/// All loops run over whole rows of columns, whose number the compiler knows; what lies beyond a
/// shorter strip is computed from zeros and never used.
constexpr int stripColumns = colorMedianColumns;
constexpr int margin = 4;

/// One number for each column of the strip, with room for neighbours on both sides.
template <class Number>
struct Columns {
  Number padded[margin + stripColumns + margin];

  Number* at(int x) { return padded + margin + x; }
  const Number* at(int x) const { return padded + margin + x; }
};

struct PixelRow {
  Columns<Vek8u> channel[3];
};

/// From the pixels of a row to those of rows above and to the right of them in the same row.
template <int side>
struct DistanceRow {
  Columns<Vek16s> right[side];             ///< [dx], dx > 0
  Columns<Vek16s> up[side][2 * side - 1];  ///< [dy][dx + side - 1], dy > 0
};

/// The steps that three interleaved or three separate bytes make slow for a compiler. A level with
/// vectors has its own.
struct PlainSteps {
  /// Reads the `columns` pixels of a row into planes.
  static void split(const Vek8u* src, ptrdiff_t columns, PixelRow& pixels) {
    for (ptrdiff_t x = 0; x < columns; ++x) {
      for (int c = 0; c < 3; ++c) pixels.channel[c].at(0)[x] = src[3 * x + c];
    }
  }

  /// Distances of the pixels of a row to those dx columns to their right in another.
  static void measure(const PixelRow& from, const PixelRow& to, int dx,
                      Columns<Vek16s>& distances) {
    Vek16s* __restrict sum = distances.at(0);
    for (int x = 0; x < stripColumns; ++x) {
      int total = 0;
      for (int c = 0; c < 3; ++c) {
        const int difference = from.channel[c].at(0)[x] - to.channel[c].at(dx)[x];
        total += difference < 0 ? -difference : difference;
      }
      sum[x] = static_cast<Vek16s>(total);
    }
  }
};

/// The distances of the rows of one window, top row first.
template <int side>
struct WindowRows {
  const DistanceRow<side>* row[side];
};

/// Where the distances from the pixels of row j to the pixels of row k, dx columns to their right,
/// are kept.
template <int side, int j, int k, int dx>
const Vek16s* distancesTo(const WindowRows<side>& rows) {
  if constexpr (k < j) {
    return rows.row[j]->up[j - k][dx + side - 1].at(0);
  } else if constexpr (k > j) {
    return rows.row[k]->up[k - j][side - 1 - dx].at(dx);
  } else if constexpr (dx > 0) {
    return rows.row[j]->right[dx].at(0);
  } else {
    return rows.row[j]->right[-dx].at(dx);
  }
}

/// Distances from the pixels of row j to the whole column dx to their right.
template <int side, int j, int dx>
void sumColumn(const WindowRows<side>& rows, Columns<Vek16s>& sums) {
  const Vek16s* part[side];
  unrolled<side>([&](auto k) {
    if constexpr (j != k || dx != 0) part[k] = distancesTo<side, j, k, dx>(rows);
  });
  Vek16s* __restrict sum = sums.at(0);
  for (int x = 0; x < stripColumns; ++x) {
    Vek16s total = 0;
    unrolled<side>([&](auto k) {
      if constexpr (j != k || dx != 0) total = static_cast<Vek16s>(total + part[k][x]);
    });
    sum[x] = total;
  }
}

/// best[x] = the number, row after row, of the winner of each window.
template <int side>
void findBest(const WindowRows<side>& rows, Vek16s* __restrict best) {
  Vek16s least[stripColumns];
  for (int x = 0; x < stripColumns; ++x) least[x] = 0x7FFF;
  unrolled<side>([&](auto j) {
    Columns<Vek16s> toColumn[2 * side - 1];
    unrolled<2 * side - 1>([&](auto d) { sumColumn<side, j, d - (side - 1)>(rows, toColumn[d]); });
    for (int i = 0; i < side; ++i) {
      const Vek16s number = static_cast<Vek16s>(j * side + i);
      for (int x = 0; x < stripColumns; ++x) {
        Vek16s score = 0;
        for (int k = 0; k < side; ++k) {
          score = static_cast<Vek16s>(score + toColumn[k - i + side - 1].at(i)[x]);
        }
        const bool better = score < least[x];
        least[x] = better ? score : least[x];
        best[x] = better ? number : best[x];
      }
    }
  });
}

/// The last `side` rows, each in the place of the one that left the mask.
template <int side, class Steps>
class Window {
 public:
  void enterRow(ptrdiff_t y, const Vek8u* src, ptrdiff_t columns) {
    PixelRow& pixels = pixels_[y % side];
    Steps::split(src, columns, pixels);
    DistanceRow<side>& distances = distances_[y % side];
    for (int dx = 1; dx < side; ++dx) Steps::measure(pixels, pixels, dx, distances.right[dx]);
    for (int dy = 1; dy < side && dy <= y; ++dy) {
      const PixelRow& above = pixels_[(y - dy) % side];
      for (int dx = 1 - side; dx < side; ++dx) {
        Steps::measure(pixels, above, dx, distances.up[dy][dx + side - 1]);
      }
    }
  }

  WindowRows<side> below(ptrdiff_t top) const {
    WindowRows<side> rows;
    for (int k = 0; k < side; ++k) rows.row[k] = &distances_[(top + k) % side];
    return rows;
  }

 private:
  PixelRow pixels_[side] = {};
  DistanceRow<side> distances_[side] = {};
};

template <int side, class Steps>
void colorMedian(const ColorMedianRegion& r) {
  Window<side, Steps> window;
  ptrdiff_t offset[side * side];
  for (int k = 0; k < side * side; ++k) offset[k] = k / side * r.srcStep + k % side * 3;
  for (ptrdiff_t y = 0; y < r.rows + side - 1; ++y) {
    window.enterRow(y, r.corner + y * r.srcStep, r.columns + side - 1);
    const ptrdiff_t top = y - (side - 1);
    if (top < 0) continue;
    Vek16s best[stripColumns] = {};
    findBest(window.below(top), best);
    const Vek8u* src = r.corner + top * r.srcStep;
    Vek8u* dst = r.dst + top * r.dstStep;
    const auto copy = [&](ptrdiff_t x, size_t bytes) {
      memcpy(dst + 3 * x, src + 3 * x + offset[best[x]], bytes);
    };
    // One byte more is the next pixel's: there in the source, not yet written in the destination.
    for (ptrdiff_t x = 0; x < r.columns - 1; ++x) copy(x, 4);
    copy(r.columns - 1, 3);
  }
}

}  // namespace

}  // namespace vek::VEK_LEVEL
