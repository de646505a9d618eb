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
inline constexpr ptrdiff_t medianHistograms = 192;

/// Whether a mask may be counted threshold by threshold: three of its columns, or all of them, have
/// 255 samples at most.
inline constexpr ptrdiff_t countingWidth = 33;
inline bool isCountable(ptrdiff_t maskWidth, ptrdiff_t maskHeight) {
  return maskWidth <= countingWidth && (maskHeight <= 85 || maskWidth * maskHeight <= 255);
}

/// Medians of all channels.
using MedianNetwork = void (*)(const MedianRegion& region);

struct MedianKernels {
  MedianNetwork MedianFilter3x3_8u;
  MedianNetwork MedianFilter5x5_8u;
  MedianNetwork larger[3];  ///< 7 x 7, 9 x 9, 11 x 11; null where histograms are faster
  ptrdiff_t leastBytes;     ///< of a row that goes through a network

  /// All channels, for countable masks and rows of leastBytes; null if the level has none.
  void (*byCounting)(const MedianRegion& region);
  /// One channel. Time per pixel does not depend on the mask; columns + maskWidth - 1 <=
  /// medianHistograms.
  void (*columnHistograms)(const MedianRegion& region);
  /// One channel. Time per pixel grows with the mask's height; no limits.
  void (*runningHistogram)(const MedianRegion& region);

  /// For square masks; null if the level has none.
  MedianNetwork network(ptrdiff_t side) const {
    if (side == 3) return MedianFilter3x3_8u;
    if (side == 5) return MedianFilter5x5_8u;
    return side >= 7 && side <= 11 ? larger[(side - 7) / 2] : nullptr;
  }
};

VEK_KERNEL_TABLE(MedianKernels, medianKernels)

}  // namespace vek
