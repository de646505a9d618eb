// Kernels that measure the green samples of raw frames.
#pragma once

#include "vek/vek.h"

#include "core/level.h"

namespace vek {

inline constexpr int histogramBins = 1024;

struct ExposureRows {
  /// Adds the greens of every group of four columns and two rows to pHist, indexed by their low 10
  /// bits. The width is rounded up to fours and the height to twos; in the lower row of a group the
  /// fourth sample is not read.
  void (*hist)(const Vek16u* pSrc, int srcStep, int width, int height, Vek32u* pHist);

  /// The sum modulo 2^32 of both greens of every whole quad of a window.
  Vek32u (*wnd)(const Vek16u* pWin, int srcStep, int w, int h);
};

VEK_KERNEL_TABLE(ExposureRows, exposureRows)

namespace portable {
/// Bound by one store a sample: no level does it faster.
void _vekiAEHist_10RGGB(const Vek16u* pSrc, int srcStep, int width, int height, Vek32u* pHist);
}  // namespace portable

}  // namespace vek
