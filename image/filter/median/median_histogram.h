// Medians from histograms, for masks of any size; compiled for every level, over the level's way of
// searching sixteen running totals.
#pragma once

#include "vek/vek.h"

#include <stddef.h>
#include <stdint.h>
#include <string.h>

#include "core/assert.h"
#include "image/filter/median/median_kernels.h"

namespace vek::VEK_LEVEL {
namespace {

/// A histogram in two levels: a count for each value, and one for each 16 values.
struct Histogram {
  uint64_t coarse[16];
  uint64_t fine[16][16];

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
int findRank(const uint64_t* counts, uint64_t& rank) {
  int i = 0;
  while (counts[i] <= rank) rank -= counts[i++];
  return i;
}

/// Running totals: entry i counts the samples up to the i-th of 16 values or groups. Adding one
/// sample is one vector operation, and so is finding a rank, without branches that the processor
/// would have to guess.
template <class Count>
struct Totals {
  Count upTo[16];
};

/// What one sample adds to running totals.
struct OneSample {
  Totals<Vek8u> in[16] = {};  ///< in[k].upTo[i] is 1 for i >= k

  constexpr OneSample() {
    for (int k = 0; k < 16; ++k) {
      for (int i = k; i < 16; ++i) in[k].upTo[i] = 1;
    }
  }
};
constexpr OneSample oneSample;

void addTotals(Totals<Vek8u>& sum, const Totals<Vek8u>& entering) {
  for (int i = 0; i < 16; ++i) sum.upTo[i] = static_cast<Vek8u>(sum.upTo[i] + entering.upTo[i]);
}
void subtractTotals(Totals<Vek8u>& sum, const Totals<Vek8u>& leaving) {
  for (int i = 0; i < 16; ++i) sum.upTo[i] = static_cast<Vek8u>(sum.upTo[i] - leaving.upTo[i]);
}
void addTotals(Totals<Vek16u>& sum, const Totals<Vek8u>& entering) {
  for (int i = 0; i < 16; ++i) sum.upTo[i] = static_cast<Vek16u>(sum.upTo[i] + entering.upTo[i]);
}
void slideTotals(Totals<Vek16u>& sum, const Totals<Vek8u>& entering, const Totals<Vek8u>& leaving) {
  for (int i = 0; i < 16; ++i) {
    sum.upTo[i] = static_cast<Vek16u>(sum.upTo[i] + entering.upTo[i] - leaving.upTo[i]);
  }
}

/// As findRank, from running totals: Counting::notAbove tells how many of 16 totals do not exceed
/// `rank`, which the last one does.
template <class Counting>
int findRank(const Totals<Vek16u>& totals, Vek16u& rank) {
  const int below = Counting::notAbove(totals, rank);
  rank = static_cast<Vek16u>(rank - (below == 0 ? 0 : totals.upTo[below - 1]));
  return below;
}

/// The histogram of a column in running totals: over groups of 16 values, and within each group.
/// Its counts fit 8 bits: a mask has 255 rows at most.
struct ColumnHistogram {
  Totals<Vek8u> coarse;
  Totals<Vek8u> fine[16];

  void add(Vek8u v) {
    addTotals(coarse, oneSample.in[v >> 4]);
    addTotals(fine[v >> 4], oneSample.in[v & 15]);
  }
  void remove(Vek8u v) {
    subtractTotals(coarse, oneSample.in[v >> 4]);
    subtractTotals(fine[v >> 4], oneSample.in[v & 15]);
  }
};

/// The histogram of a window that slides along a row of column histograms. Its coarse counts are
/// always up to date, each group of 16 fine ones only when the median falls into it.
template <class Counting>
class SlidingWindow {
 public:
  SlidingWindow(const ColumnHistogram* columns, ptrdiff_t width)
      : columns_(columns), width_(width) {
    for (ptrdiff_t c = 0; c < width; ++c) addTotals(coarse_, columns[c].coarse);
    for (ptrdiff_t& position : position_) position = -width;
  }

  /// Moves from column x - 1 to x.
  void moveTo(ptrdiff_t x) {
    slideTotals(coarse_, columns_[x + width_ - 1].coarse, columns_[x - 1].coarse);
  }

  Vek8u valueOfRank(ptrdiff_t x, Vek16u rank) {
    const int group = findRank<Counting>(coarse_, rank);
    update(group, x);
    return static_cast<Vek8u>(group * 16 + findRank<Counting>(fine_[group], rank));
  }

 private:
  void update(int group, ptrdiff_t x) {
    Totals<Vek16u> fine = fine_[group];
    ptrdiff_t at = position_[group];
    if (2 * (x - at) >= width_) {
      fine = {};
      for (ptrdiff_t c = x; c < x + width_; ++c) addTotals(fine, columns_[c].fine[group]);
    } else {
      for (; at < x; ++at) {
        slideTotals(fine, columns_[at + width_].fine[group], columns_[at].fine[group]);
      }
    }
    fine_[group] = fine;
    position_[group] = x;
  }

  const ColumnHistogram* columns_;
  ptrdiff_t width_;
  Totals<Vek16u> coarse_ = {};
  Totals<Vek16u> fine_[16] = {};  ///< as of position_
  ptrdiff_t position_[16];
};

/// Counts of a window fit 16 bits: 174 columns of 255 samples.
template <class Counting>
void columnHistograms(const MedianRegion& r) {
  VEK_ASSERT(r.columns >= 1 && r.columns + r.maskWidth - 1 <= medianHistograms);
  VEK_ASSERT(r.maskHeight >= 1 && r.maskHeight <= 255);
  ColumnHistogram columns[medianHistograms];
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
    SlidingWindow<Counting> window(columns, r.maskWidth);
    dst[0] = window.valueOfRank(0, rank);
    for (ptrdiff_t x = 1; x < r.columns; ++x) {
      window.moveTo(x);
      dst[x * r.pixelBytes] = window.valueOfRank(x, rank);
    }
  }
}

/// One histogram: at each step a column of samples enters it and one leaves it.
void runningHistogram(const MedianRegion& r) {
  VEK_ASSERT(r.columns >= 1 && r.maskWidth >= 1 && r.maskHeight >= 1);
  Histogram rowStart = {};
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
    Histogram window = rowStart;
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
