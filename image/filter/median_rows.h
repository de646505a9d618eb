// Kernels of the median filter: sorting networks over vectors of pixels for small square masks,
// histograms for all others.
#pragma once

#include "vek/vek.h"

#include <stddef.h>

#include "core/level.h"

namespace vek {

/// The n medians of a row for a square mask of a fixed side. `corner` is the top-left sample of the
/// first neighbourhood; horizontal neighbours are `pixelBytes` (1 or 3) bytes apart.
using MedianNetwork = void (*)(const Vek8u* corner, ptrdiff_t srcStep, ptrdiff_t pixelBytes,
                               Vek8u* dst, ptrdiff_t n);

/// One channel of a region: samples are `pixelBytes` apart in both images.
struct MedianRegion {
  const Vek8u* corner;  ///< top-left sample of the first neighbourhood
  ptrdiff_t srcStep;
  Vek8u* dst;
  ptrdiff_t dstStep;
  ptrdiff_t pixelBytes;
  ptrdiff_t columns, rows;
  ptrdiff_t maskWidth, maskHeight;  ///< odd; the height is at most 255
};

/// Columns whose histograms are kept at a time: a strip of `columns` pixels has columns + maskWidth
/// - 1 of them.
inline constexpr ptrdiff_t medianHistograms = 192;

/// Widest mask, and greatest number of its samples, that is counted threshold by threshold.
inline constexpr ptrdiff_t countingWidth = 21;
inline constexpr ptrdiff_t countingArea = 255;

struct MedianRows {
  MedianNetwork MedianFilter3x3_8u;
  MedianNetwork MedianFilter5x5_8u;
  MedianNetwork larger[3];  ///< 7 x 7, 9 x 9, 11 x 11; null where histograms are faster
  ptrdiff_t leastBytes;     ///< of a row that goes through a network

  /// For masks within the limits of counting and rows of leastBytes; null if the level has none.
  /// `columns` counts bytes: neighbours in a row are `pixelBytes` apart.
  void (*byCounting)(const MedianRegion& region);
  /// Time per pixel does not depend on the mask; columns + maskWidth - 1 <= medianHistograms.
  void (*columnHistograms)(const MedianRegion& region);
  /// Time per pixel grows with the mask's height; no limits.
  void (*runningHistogram)(const MedianRegion& region);

  /// Null if the level has none.
  MedianNetwork network(ptrdiff_t side) const {
    if (side == 3) return MedianFilter3x3_8u;
    if (side == 5) return MedianFilter5x5_8u;
    return side >= 7 && side <= 11 ? larger[(side - 7) / 2] : nullptr;
  }
};

VEK_KERNEL_TABLE(MedianRows, medianRows)

}  // namespace vek
