// The vector median, compiled for every level: plain loops over a strip of 64 columns.
//
// The distance of two pixels does not depend on the window, so each is computed once and kept for
// as long as both rows are in the mask: 12 displacements per pixel for 3 x 3, 40 for 5 x 5. Scores
// are summed in two steps: from each pixel to each column of the window (shared by all windows that
// contain both), then over the columns. They stay below 24 * 765 = 18360.
#pragma once

#include "image/filter/median_color_rows.h"

namespace vek::VEK_LEVEL {
namespace {

/// All loops run over whole rows of columns, whose number the compiler knows; what lies beyond a
/// shorter strip is computed from zeros and never used.
constexpr int stripColumns = 64;
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
  Columns<Vek16u> right[side];             ///< [dx], dx > 0
  Columns<Vek16u> up[side][2 * side - 1];  ///< [dy][dx + side - 1], dy > 0
};

void measure(const PixelRow& from, const PixelRow& to, int dx, Columns<Vek16u>& distances) {
  Vek16u* __restrict sum = distances.at(0);
  for (int x = 0; x < stripColumns; ++x) {
    int total = 0;
    for (int c = 0; c < 3; ++c) {
      const int difference = from.channel[c].at(0)[x] - to.channel[c].at(dx)[x];
      total += difference < 0 ? -difference : difference;
    }
    sum[x] = static_cast<Vek16u>(total);
  }
}

/// The last `side` rows, each in the place of the one that left the mask.
template <int side>
class Window {
 public:
  void enterRow(ptrdiff_t y, const Vek8u* src, ptrdiff_t columns) {
    PixelRow& pixels = pixels_[y % side];
    for (ptrdiff_t x = 0; x < columns; ++x) {
      for (int c = 0; c < 3; ++c) pixels.channel[c].at(0)[x] = src[3 * x + c];
    }
    DistanceRow<side>& distances = distances_[y % side];
    for (int dx = 1; dx < side; ++dx) measure(pixels, pixels, dx, distances.right[dx]);
    for (int dy = 1; dy < side && dy <= y; ++dy) {
      const PixelRow& above = pixels_[(y - dy) % side];
      for (int dx = 1 - side; dx < side; ++dx) {
        measure(pixels, above, dx, distances.up[dy][dx + side - 1]);
      }
    }
  }

  /// best[x] = the number, row after row, of the winner of the window whose top row is y.
  void findBest(ptrdiff_t y, Vek16u* __restrict best) const {
    Vek16u least[stripColumns];
    for (int x = 0; x < stripColumns; ++x) least[x] = 0xFFFF;
    for (int j = 0; j < side; ++j) {
      Columns<Vek16u> toColumn[2 * side - 1];
      for (int dx = 1 - side; dx < side; ++dx) sumColumn(y, j, dx, toColumn[dx + side - 1]);
      for (int i = 0; i < side; ++i) {
        const Vek16u number = static_cast<Vek16u>(j * side + i);
        for (int x = 0; x < stripColumns; ++x) {
          int score = 0;
          for (int k = 0; k < side; ++k) score += toColumn[k - i + side - 1].at(i)[x];
          const bool better = score < least[x];
          least[x] = better ? static_cast<Vek16u>(score) : least[x];
          best[x] = better ? number : best[x];
        }
      }
    }
  }

 private:
  /// Distances from the pixels of row j of the window to the whole column dx to their right.
  void sumColumn(ptrdiff_t y, int j, int dx, Columns<Vek16u>& sums) const {
    const Vek16u* parts[side];
    int count = 0;
    for (int k = 0; k < side; ++k) {
      const DistanceRow<side>& lower = distances_[(y + (k > j ? k : j)) % side];
      if (k < j) {
        parts[count++] = lower.up[j - k][dx + side - 1].at(0);
      } else if (k > j) {
        parts[count++] = lower.up[k - j][side - 1 - dx].at(dx);
      } else if (dx > 0) {
        parts[count++] = lower.right[dx].at(0);
      } else if (dx < 0) {
        parts[count++] = lower.right[-dx].at(dx);
      }
    }
    Vek16u* __restrict sum = sums.at(0);
    if (count == side) {
      for (int x = 0; x < stripColumns; ++x) {
        int total = 0;
        for (int p = 0; p < side; ++p) total += parts[p][x];
        sum[x] = static_cast<Vek16u>(total);
      }
    } else {
      for (int x = 0; x < stripColumns; ++x) {
        int total = 0;
        for (int p = 0; p < side - 1; ++p) total += parts[p][x];
        sum[x] = static_cast<Vek16u>(total);
      }
    }
  }

  PixelRow pixels_[side] = {};
  DistanceRow<side> distances_[side] = {};
};

template <int side>
void colorMedian(const ColorMedianRegion& r) {
  Window<side> window;
  ptrdiff_t offset[side * side];
  for (int k = 0; k < side * side; ++k) offset[k] = k / side * r.srcStep + k % side * 3;
  for (ptrdiff_t y = 0; y < r.rows + side - 1; ++y) {
    window.enterRow(y, r.corner + y * r.srcStep, r.columns + side - 1);
    const ptrdiff_t top = y - (side - 1);
    if (top < 0) continue;
    Vek16u best[stripColumns] = {};
    window.findBest(top, best);
    const Vek8u* src = r.corner + top * r.srcStep;
    Vek8u* dst = r.dst + top * r.dstStep;
    for (ptrdiff_t x = 0; x < r.columns; ++x) {
      const Vek8u* winner = src + 3 * x + offset[best[x]];
      for (int c = 0; c < 3; ++c) dst[3 * x + c] = winner[c];
    }
  }
}

}  // namespace

constexpr ColorMedianRows colorMedianRows = {colorMedian<3>, colorMedian<5>};

}  // namespace vek::VEK_LEVEL
