// The vector median, compiled for every level: plain loops over a strip of columns.
//
// The distance of two pixels does not depend on the window, so each is computed once and kept for
// as long as both rows are in the mask: 12 displacements per pixel for 3 x 3, 40 for 5 x 5. Scores
// are summed in two steps: from each pixel to each column of the window (shared by all windows that
// contain both), then over the columns. They reach at most 24 * 765 = 18360, so that signed 16-bit
// lanes do for everything.
#pragma once

#include "vek/vek.h"

#include <stddef.h>
#include <string.h>

#include "core/assert.h"
#include "core/kernel/unroll.h"
#include "image/filter/median/median_color_kernels.h"

namespace vek::VEK_LEVEL {
namespace {

/// All loops run over whole rows of columns, whose number the compiler knows; what they compute
/// beyond a shorter strip is never used.
template <int side>
constexpr int stripColumns = colorMedianColumns(side);
constexpr int columnMargin = 16;  ///< half a cache line

/// One number for each column of the strip, with room for neighbours on both sides. It fills whole
/// cache lines.
template <int side>
struct Columns {
  alignas(32) Vek16s padded[columnMargin + stripColumns<side> + columnMargin];

  Vek16s* at(int x) { return padded + columnMargin + x; }
  const Vek16s* at(int x) const { return padded + columnMargin + x; }
};

template <int side>
struct PixelRow {
  Columns<side> channel[3];
};

/// From the pixels of a row to those of rows above and to the right of them in the same row.
template <int side>
struct DistanceRow {
  Columns<side> right[side - 1];             ///< [dx - 1], dx > 0
  Columns<side> up[side - 1][2 * side - 1];  ///< [dy - 1][dx + side - 1], dy > 0
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
    return rows.row[j]->up[j - k - 1][dx + side - 1].at(0);
  } else if constexpr (k > j) {
    return rows.row[k]->up[k - j - 1][side - 1 - dx].at(dx);
  } else if constexpr (dx > 0) {
    return rows.row[j]->right[dx - 1].at(0);
  } else {
    return rows.row[j]->right[-dx - 1].at(dx);
  }
}

/// The winners of a row of windows: where the windows begin, and the number, row after row, of each
/// winner.
struct Winners {
  const Vek8u* src;
  ptrdiff_t srcStep;
  const Vek16s* best;
};

/// The steps of which a level with vectors has its own.
struct PlainSteps {
  /// Reads the `columns` pixels of a row into planes.
  template <int side>
  static void split(const Vek8u* src, ptrdiff_t columns, PixelRow<side>& pixels) {
    for (ptrdiff_t x = 0; x < columns; ++x) {
      for (int c = 0; c < 3; ++c) pixels.channel[c].at(0)[x] = src[3 * x + c];
    }
  }

  /// distances[i] = those of the pixels of a row to the pixels first + i columns to their right in
  /// another, up to the last column of a window.
  template <int side, int first>
  static void measure(const PixelRow<side>& from, const PixelRow<side>& to,
                      Columns<side>* distances) {
    for (int dx = first; dx < side; ++dx) {
      Vek16s* __restrict sum = distances[dx - first].at(0);
      for (int x = 0; x < stripColumns<side>; ++x) {
        // All in 16 bits, or compilers would widen.
        Vek16s total = 0;
        for (int c = 0; c < 3; ++c) {
          const Vek16s a = from.channel[c].at(0)[x], b = to.channel[c].at(dx)[x];
          const Vek16s forth = static_cast<Vek16s>(a - b), back = static_cast<Vek16s>(b - a);
          total = static_cast<Vek16s>(total + (forth > back ? forth : back));
        }
        sum[x] = total;
      }
    }
  }

  /// scores[i].at(0)[x] = the sum of distances from pixel x of row j to the window that begins i
  /// columns to its left. Where GCC inlines it, each row has its own `toColumn` on the stack.
  template <int side, int j>
  [[gnu::noinline]] static void score(const WindowRows<side>& rows, Columns<side>* scores) {
    Columns<side> toColumn[2 * side - 1];
    unrolled<2 * side - 1>([&](auto d) {
      constexpr int dx = d - (side - 1);
      const Vek16s* part[side];
      unrolled<side>([&](auto k) {
        if constexpr (j != k || dx != 0) part[k] = distancesTo<side, j, k, dx>(rows);
      });
      Vek16s* __restrict sum = toColumn[d].at(0);
      for (int x = 0; x < stripColumns<side>; ++x) {
        Vek16s total = 0;
        unrolled<side>([&](auto k) {
          if constexpr (j != k || dx != 0) total = static_cast<Vek16s>(total + part[k][x]);
        });
        sum[x] = total;
      }
    });
    for (int i = 0; i < side; ++i) {
      Vek16s* __restrict score = scores[i].at(0);
      for (int x = 0; x < stripColumns<side>; ++x) {
        Vek16s total = 0;
        for (int k = 0; k < side; ++k) {
          total = static_cast<Vek16s>(total + toColumn[k - i + side - 1].at(0)[x]);
        }
        score[x] = total;
      }
    }
  }

  /// Of windows that have found their least score among the rows above.
  template <int side>
  static void choose(const Columns<side>* scores, int j, Vek16s* __restrict least,
                     Vek16s* __restrict best) {
    for (int i = 0; i < side; ++i) {
      const Vek16s number = static_cast<Vek16s>(j * side + i);
      for (int x = 0; x < stripColumns<side>; ++x) {
        const Vek16s score = scores[i].at(i)[x];
        const bool better = score < least[x];
        least[x] = better ? score : least[x];
        best[x] = better ? number : best[x];
      }
    }
  }

  template <int side>
  static void copy(const Winners& winners, ptrdiff_t columns, Vek8u* dst) {
    ptrdiff_t offset[side * side];
    for (int k = 0; k < side * side; ++k) offset[k] = k / side * winners.srcStep + k % side * 3;
    const auto copyBytes = [&](ptrdiff_t x, size_t bytes) {
      memcpy(dst + 3 * x, winners.src + 3 * x + offset[winners.best[x]], bytes);
    };
    // One byte more is the next pixel's: there in the source, not yet written in the destination.
    for (ptrdiff_t x = 0; x < columns - 1; ++x) copyBytes(x, 4);
    copyBytes(columns - 1, 3);
  }
};

/// The last `side` rows, each in the place of the one that left the mask.
template <int side, class Steps>
class Window {
 public:
  void enterRow(ptrdiff_t y, const Vek8u* src, ptrdiff_t columns) {
    PixelRow<side>& pixels = pixels_[y % side];
    Steps::split(src, columns, pixels);
    DistanceRow<side>& distances = distances_[y % side];
    for (int dy = 1; dy < side && dy <= y; ++dy) {
      Steps::template measure<side, 1 - side>(pixels, pixels_[(y - dy) % side],
                                              distances.up[dy - 1]);
    }
    // Last, when the new planes have long been stored: vectors across two stores would wait for
    // them.
    Steps::template measure<side, 1>(pixels, pixels, distances.right);
  }

  WindowRows<side> below(ptrdiff_t top) const {
    WindowRows<side> rows;
    for (int k = 0; k < side; ++k) rows.row[k] = &distances_[(top + k) % side];
    return rows;
  }

 private:
  // After half a cache line and the margin, columns begin with one.
  alignas(64) Vek16s unused_[columnMargin] = {};
  PixelRow<side> pixels_[side] = {};
  DistanceRow<side> distances_[side] = {};
};

template <int side, class Steps>
void colorMedian(const ColorMedianRegion& r) {
  VEK_ASSERT(r.columns >= 1 && r.columns <= stripColumns<side> - (side - 1));
  Window<side, Steps> window;
  for (ptrdiff_t y = 0; y < r.rows + side - 1; ++y) {
    window.enterRow(y, r.corner + y * r.srcStep, r.columns + side - 1);
    const ptrdiff_t top = y - (side - 1);
    if (top < 0) continue;
    const WindowRows<side> rows = window.below(top);
    Vek16s least[stripColumns<side>], best[stripColumns<side>] = {};
    for (Vek16s& score : least) score = 0x7FFF;
    unrolled<side>([&](auto j) {
      Columns<side> scores[side];
      Steps::template score<side, j>(rows, scores);
      Steps::template choose<side>(scores, j, least, best);
    });
    Steps::template copy<side>({r.corner + top * r.srcStep, r.srcStep, best}, r.columns,
                               r.dst + top * r.dstStep);
  }
}

}  // namespace

}  // namespace vek::VEK_LEVEL
