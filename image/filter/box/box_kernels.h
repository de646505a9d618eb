// Kernels of the box filter. Both ways of summing cost the same per pixel whatever the mask's size:
// from row to row, one row of samples enters the sums and one leaves them.
#pragma once

#include "vek/vek.h"

#include <stddef.h>
#include <stdint.h>

#include "core/level.h"
#include "core/region.h"

namespace vek {

/// Sums of up to this many samples fit 16 bits: 255 * 257 = 65535.
inline constexpr int64_t smallBoxArea = 257;
/// The same for one column of this height.
inline constexpr ptrdiff_t columnBoxHeight = 257;
/// Widest mask that is summed column by column at any level.
inline constexpr ptrdiff_t columnBoxWidth = 48;

/// Columns that may be read on both sides of those that matter.
inline constexpr ptrdiff_t columnPadding = 64;

/// A mean of `area` samples is min(255, (sum * factor + 2^31) >> 32). The factor is at least 1.
struct BoxScale {
  Vek32u factor;
  int64_t area;
};

// Every kernel treats the n >= 1 bytes of a row alike; `pixelBytes` (1 or 3) is the distance of
// horizontal neighbours. No destination is a source.

/// The sums of a row's windows, modulo 2^bits, are kept as the first one of each channel and the
/// differences between neighbours: differences[i] = sum of window i + pixelBytes less that of
/// window i. The sum of a whole window fits. Rows are whole pixels, and the differences of the last
/// one stay 0.
template <class Sum>
struct BoxWindowKernels {
  /// Moves the windows one row down: `entering` joins the windows, which are `width` pixels wide,
  /// and `leaving`, which may be null, goes.
  void (*slide)(Sum* differences, Sum* first, const Vek8u* entering, const Vek8u* leaving,
                ptrdiff_t width, ptrdiff_t pixelBytes, ptrdiff_t n);
  /// The means of the n windows.
  void (*average)(const Sum* differences, const Sum* first, ptrdiff_t pixelBytes, ptrdiff_t n,
                  const BoxScale& scale, Vek8u* dst);
};

struct BoxKernels {
  /// columns[i] += entering[i] - leaving[i]; `leaving` may be null.
  void (*slideColumns)(Vek16u* columns, const Vek8u* entering, const Vek8u* leaving, ptrdiff_t n);
  /// Means of `width` neighbouring columns each.
  void (*averageColumns)(const Vek16u* columns, ptrdiff_t width, ptrdiff_t pixelBytes, ptrdiff_t n,
                         const BoxScale& scale, Vek8u* dst);
  /// The means of `rows` rows of windows of 3 x 3, which begin at `src`, straight from the source; null
  /// if the level has no such kernel. n >= leastNine.
  void (*averageNine)(Plane<const Vek8u> src, Plane<Vek8u> dst, ptrdiff_t pixelBytes, ptrdiff_t n,
                      ptrdiff_t rows, const BoxScale& scale);
  ptrdiff_t leastNine;
  /// Largest mask for averageColumns; one of more than smallBoxArea samples is columnBoxHeight tall
  /// at most.
  ptrdiff_t mostWidth;
  int64_t mostArea;

  BoxWindowKernels<Vek32u> windows32;
  BoxWindowKernels<uint64_t> windows64;
};

VEK_KERNEL_TABLE(BoxKernels, boxKernels)

}  // namespace vek
