// Row kernels that sample a source row at equidistant 16.16 phases.
#pragma once

#include "vek/vek.h"

#include <stddef.h>

#include "core/level.h"

namespace vek {

struct ResampleRows {
  /// dst[i] = row[(phase + i * step) >> 16] for i < n.
  void (*nearest)(const Vek8u* row, Vek32u phase, Vek32u step, ptrdiff_t n, Vek8u* dst);

  /// The bilinear blend of rows `top` and `bottom` with the vertical weight fy (0..65535) at
  /// columns (phase + i * step) for i < n: two horizontal blends a + (((b - a) * fx) >> 16), then a
  /// vertical one, each rounding toward minus infinity. A right neighbour beyond column
  /// `lastColumn` is replaced by the left one; the callers' step limits give it weight 0 there.
  void (*bilinear)(const Vek8u* top, const Vek8u* bottom, Vek32s fy, ptrdiff_t lastColumn,
                   Vek32u phase, Vek32u step, ptrdiff_t n, Vek8u* dst);

  /// dst[2i] = even[i], dst[2i + 1] = odd[i] for i < n.
  void (*interleave)(const Vek8u* even, const Vek8u* odd, ptrdiff_t n, Vek8u* dst);
};

VEK_KERNEL_TABLE(ResampleRows, resampleRows)

}  // namespace vek
