// Row kernels of the raw pipeline: raw samples through the gamma table into byte planes, and from
// there 2 x 2 blocks of pixels to luma and chroma.
#pragma once

#include "vek/vek.h"

#include <stddef.h>

#include "core/level.h"

namespace vek {

/// The bits of a raw sample; the mask keeps a corrupt one inside the gamma table.
inline constexpr unsigned rawCodeMask = 1023;

/// Which pixels of a 2 x 2 block share one chroma sample, seen as the source is oriented: the two
/// of a row (4:2:2), the two of a column (4:2:2 rotated by a quarter), or all four (4:2:0).
enum class ChromaShare : int { row, column, block };

/// Gamma-mapped samples of one raw row: even[k] is that of column 2k, odd[k] that of column 2k + 1.
struct SplitRow {
  const Vek8u* even;
  const Vek8u* odd;
};

/// The four gamma-mapped samples of a quad; quad k of a row is at index k of each.
struct QuadRow {
  const Vek8u* red;
  const Vek8u* green[2];
  const Vek8u* blue;
};

/// Where n blocks of a row go: two rows of 2n luma pixels, and chroma: two rows of n samples
/// (ChromaShare::row), one row of 2n (column) or one row of n (block), in [0] first.
struct BlockRow {
  Vek8u* luma[2];
  Vek8u* cb[2];
  Vek8u* cr[2];
};

/// How far behind the n-th block a kernel may read its byte planes. It writes n blocks exactly.
inline constexpr ptrdiff_t readAhead = 64;

/// `matrix` holds nine Q8 coefficients of any value, rows Y, Cb, Cr, columns R, G, B:
/// Y = (sum of products) >> 8, Cb and Cr = (sum + 32768) >> 8, clamped to 0..255. A chroma sample
/// is converted from the rounded average of its pixels' R, G, B. No destination is a source.
struct RggbKernels {
  /// first[k] = gamma[src[k * period]] and second[k] = gamma[src[k * period + 1]] for k < n;
  /// samples are masked to 10 bits. The period is 2, 4 or 8; what lies between the pairs is not read.
  void (*applyGamma)(const Vek16u* src, ptrdiff_t period, const Vek8u* gamma, ptrdiff_t n,
                     Vek8u* first, Vek8u* second);

  /// The interior rule for quads 0..n - 1 between rows[1] and rows[2], n >= 1; rows[0] and rows[3]
  /// are the ones around them. Each row is valid from odd[-1] to even[n]. Indexed by ChromaShare.
  void (*demosaic[3])(const SplitRow rows[4], ptrdiff_t n, const Vek16s* matrix,
                      const BlockRow& out);

  /// The interior rule as above, to two rows of 2n pixels of three bytes: R, G, B at [0], B, G, R at [1].
  void (*demosaicPixels[2])(const SplitRow rows[4], ptrdiff_t n, Vek8u* upper, Vek8u* lower);

  /// Pixel p (upper left, upper right, lower left, lower right) of block k takes the red and blue
  /// of quad k of pixels[p], and the rounded average of its two greens. n >= 1. Indexed by
  /// ChromaShare.
  void (*convertQuads[3])(const QuadRow pixels[4], ptrdiff_t n, const Vek16s* matrix,
                          const BlockRow& out);
};

VEK_KERNEL_TABLE(RggbKernels, rggbKernels)

}  // namespace vek
