// Kernels of the median filter: sorting networks over vectors of pixels for small square masks,
// histograms for all others.
#pragma once

#include "vek/vek.h"

#include <stddef.h>

#include "core/level.h"

namespace vek {

/// One channel of a region, or all of them: samples are `pixelBytes` (1 or 3) apart in both images.
struct MedianRegion {
  const Vek8u* corner;  ///< top-left sample of the first neighbourhood
  ptrdiff_t srcStep;
  Vek8u* dst;
  ptrdiff_t dstStep;
  ptrdiff_t pixelBytes;
  ptrdiff_t columns;  ///< samples of a row
  ptrdiff_t rows;
  ptrdiff_t maskWidth, maskHeight;  ///< odd; the height is at most 255
};

/// Columns whose histograms are kept at a time: a strip of `columns` pixels has columns + maskWidth
/// - 1 of them.
inline constexpr ptrdiff_t medianHistograms = 174;

/// Widest mask whose samples are counted threshold by threshold at any level.
inline constexpr ptrdiff_t countingWidth = 33;
/// Whether they may be: counts of three columns of the mask must fit 8 bits (three of 85 rows do),
/// or counts of the whole. Always inlined: kernels of higher levels assert it, and their objects
/// must not define a symbol that other code could be linked to.
[[gnu::always_inline]] inline bool isCountable(ptrdiff_t maskWidth, ptrdiff_t maskHeight) {
  return maskWidth <= countingWidth && (maskHeight <= 85 || maskWidth * maskHeight <= 255);
}

/// Medians of a region, whose images do not overlap.
using MedianFilter = void (*)(const MedianRegion& region);

struct MedianKernels {
  /// Sorting networks for square masks, over all channels of regions whose rows have `leastBytes`
  /// or more. Null where histograms are faster.
  MedianFilter square3, square5, square7, square9, square11;
  ptrdiff_t leastBytes;

  /// All channels, for countable masks and rows of leastBytes; null if the level has none.
  MedianFilter byCounting;
  /// One channel. Time per pixel does not depend on the mask; columns + maskWidth - 1 <=
  /// medianHistograms.
  MedianFilter columnHistograms;
  /// One channel. Time per pixel grows with the mask's height; no limits.
  MedianFilter runningHistogram;

  /// The network for a square mask; null if the level has none.
  MedianFilter network(ptrdiff_t side) const {
    switch (side) {
      case 3:
        return square3;
      case 5:
        return square5;
      case 7:
        return square7;
      case 9:
        return square9;
      case 11:
        return square11;
      default:
        return nullptr;
    }
  }
};

VEK_KERNEL_TABLE(MedianKernels, medianKernels)

}  // namespace vek
