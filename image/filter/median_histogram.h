// Medians from histograms, for masks of any size; compiled for every level.
#pragma once

#include <stdint.h>
#include <string.h>

#include "image/filter/median_rows.h"

namespace vek::VEK_LEVEL {
namespace {

/// A histogram in two levels: a count for each value, and one for each 16 values.
template <class Count>
struct Histogram {
  Count coarse[16];
  Count fine[16][16];

  void add(Vek8u v) {
    ++coarse[v >> 4];
    ++fine[v >> 4][v & 15];
  }
  void remove(Vek8u v) {
    --coarse[v >> 4];
    --fine[v >> 4][v & 15];
  }
};

/// The first of 16 counts whose running total exceeds `rank`; subtracts the total before it.
template <class Count>
int findRank(const Count* counts, Count& rank) {
  int i = 0;
  while (counts[i] <= rank) rank = static_cast<Count>(rank - counts[i++]);
  return i;
}

void addCounts(Vek16u* __restrict sum, const Vek8u* __restrict entering) {
  for (int i = 0; i < 16; ++i) sum[i] = static_cast<Vek16u>(sum[i] + entering[i]);
}

void slideCounts(Vek16u* __restrict sum, const Vek8u* __restrict entering,
                 const Vek8u* __restrict leaving) {
  for (int i = 0; i < 16; ++i) sum[i] = static_cast<Vek16u>(sum[i] + entering[i] - leaving[i]);
}

/// The histogram of a window that slides along a row of column histograms. Its coarse counts are
/// always up to date, each group of 16 fine ones only when the median falls into it.
class SlidingWindow {
 public:
  SlidingWindow(const Histogram<Vek8u>* columns, ptrdiff_t width)
      : columns_(columns), width_(width) {
    memset(coarse_, 0, sizeof coarse_);
    for (ptrdiff_t c = 0; c < width; ++c) addCounts(coarse_, columns[c].coarse);
    for (ptrdiff_t& position : position_) position = -width;
  }

  /// Moves from column x - 1 to x.
  void moveTo(ptrdiff_t x) {
    slideCounts(coarse_, columns_[x + width_ - 1].coarse, columns_[x - 1].coarse);
  }

  Vek8u valueOfRank(ptrdiff_t x, Vek16u rank) {
    const int group = findRank(coarse_, rank);
    update(group, x);
    return static_cast<Vek8u>(group * 16 + findRank(fine_[group], rank));
  }

 private:
  void update(int group, ptrdiff_t x) {
    Vek16u* fine = fine_[group];
    ptrdiff_t at = position_[group];
    if (2 * (x - at) >= width_) {
      memset(fine, 0, sizeof fine_[group]);
      for (ptrdiff_t c = x; c < x + width_; ++c) addCounts(fine, columns_[c].fine[group]);
    } else {
      for (; at < x; ++at) {
        slideCounts(fine, columns_[at + width_].fine[group], columns_[at].fine[group]);
      }
    }
    position_[group] = x;
  }

  const Histogram<Vek8u>* columns_;
  ptrdiff_t width_;
  Vek16u coarse_[16];
  Vek16u fine_[16][16];
  ptrdiff_t position_[16];
};

/// Counts of a column fit 8 bits (255 rows at most) and those of a window 16 (192 columns).
void columnHistograms(const MedianRegion& r) {
  Histogram<Vek8u> columns[medianHistograms];
  const ptrdiff_t span = r.columns + r.maskWidth - 1;
  memset(columns, 0, static_cast<size_t>(span) * sizeof columns[0]);
  const auto addRow = [&](ptrdiff_t y) {
    const Vek8u* row = r.corner + y * r.srcStep;
    for (ptrdiff_t c = 0; c < span; ++c) columns[c].add(row[c * r.pixelBytes]);
  };
  const auto removeRow = [&](ptrdiff_t y) {
    const Vek8u* row = r.corner + y * r.srcStep;
    for (ptrdiff_t c = 0; c < span; ++c) columns[c].remove(row[c * r.pixelBytes]);
  };
  const Vek16u rank = static_cast<Vek16u>((r.maskWidth * r.maskHeight - 1) / 2);
  for (ptrdiff_t y = 0; y < r.maskHeight - 1; ++y) addRow(y);
  for (ptrdiff_t y = 0; y < r.rows; ++y) {
    if (y > 0) removeRow(y - 1);
    addRow(y + r.maskHeight - 1);
    Vek8u* dst = r.dst + y * r.dstStep;
    SlidingWindow window(columns, r.maskWidth);
    dst[0] = window.valueOfRank(0, rank);
    for (ptrdiff_t x = 1; x < r.columns; ++x) {
      window.moveTo(x);
      dst[x * r.pixelBytes] = window.valueOfRank(x, rank);
    }
  }
}

/// One histogram, which takes in and gives up a column of samples at each step.
void runningHistogram(const MedianRegion& r) {
  Histogram<uint64_t> rowStart = {};
  const auto forRow = [&](ptrdiff_t y, auto visit) {
    const Vek8u* row = r.corner + y * r.srcStep;
    for (ptrdiff_t c = 0; c < r.maskWidth; ++c) visit(row[c * r.pixelBytes]);
  };
  const auto add = [&](Vek8u v) { rowStart.add(v); };
  const auto remove = [&](Vek8u v) { rowStart.remove(v); };
  const uint64_t rank =
      (static_cast<uint64_t>(r.maskWidth) * static_cast<uint64_t>(r.maskHeight) - 1) / 2;
  for (ptrdiff_t y = 0; y < r.maskHeight - 1; ++y) forRow(y, add);
  for (ptrdiff_t y = 0; y < r.rows; ++y) {
    forRow(y + r.maskHeight - 1, add);
    Histogram<uint64_t> window = rowStart;
    const Vek8u* corner = r.corner + y * r.srcStep;
    Vek8u* dst = r.dst + y * r.dstStep;
    for (ptrdiff_t x = 0; x < r.columns; ++x) {
      if (x > 0) {
        const Vek8u* leaving = corner + (x - 1) * r.pixelBytes;
        for (ptrdiff_t j = 0; j < r.maskHeight; ++j) {
          window.remove(leaving[j * r.srcStep]);
          window.add(leaving[j * r.srcStep + r.maskWidth * r.pixelBytes]);
        }
      }
      uint64_t left = rank;
      const int group = findRank(window.coarse, left);
      dst[x * r.pixelBytes] = static_cast<Vek8u>(group * 16 + findRank(window.fine[group], left));
    }
    forRow(y, remove);
  }
}

}  // namespace
}  // namespace vek::VEK_LEVEL
