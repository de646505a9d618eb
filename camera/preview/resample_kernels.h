// Row kernels that sample source rows at equidistant 16.16 phases.
#pragma once

#include "vek/vek.h"

#include <stddef.h>

#include "core/level.h"

namespace vek {

/// The columns of a strip, sample i at phase + i * step, the same for all rows of a tile.
struct Columns {
  static constexpr ptrdiff_t most = 1024;

  Vek32u phase, step;
  ptrdiff_t n;           ///< `most` at most
  ptrdiff_t lastColumn;  ///< of the source

  // What prepare() makes of them, each level as its kernels need it. The last block of samples
  // overlaps the one before it; entries of block k begin at k * block.
  ptrdiff_t last;    ///< the last column that is touched
  ptrdiff_t block;   ///< samples that are looked up at a time; 0: none are
  ptrdiff_t blocks;  ///< how many of these there are
  int passes;        ///< look-ups for a block
  bool blended;      ///< not all phases are whole
  bool everyOther;   ///< the step is two samples
  Vek32s first[most];
  alignas(64) Vek8u places[8 * most];
  alignas(64) Vek16u fractions[most];

  /// Sample that block k begins with.
  ptrdiff_t start(ptrdiff_t k) const {
    return k == 0 || (k + 1) * block <= n ? k * block : n - block;
  }
};

struct ResampleKernels {
  /// Prepares `columns`, of which the first four members are set. `neighbours`: for bilinear().
  void (*prepare)(Columns& columns, bool neighbours);

  /// dst[i] = row[column i] for i < n, rounded down.
  void (*nearest)(const Vek8u* row, const Columns& columns, Vek8u* dst);

  /// The bilinear blend of rows `top` and `bottom` with the vertical weight fy (0..65535) for i < n:
  /// two horizontal blends a + (((b - a) * fx) >> 16), then a vertical one, each rounding toward
  /// minus infinity. A right neighbour beyond the last column is replaced by the left one; the
  /// callers' step limits give it weight 0 there. With fy 0 `bottom` is not read.
  void (*bilinear)(const Vek8u* top, const Vek8u* bottom, Vek32s fy, const Columns& columns,
                   Vek8u* dst);
};

VEK_KERNEL_TABLE(ResampleKernels, resampleKernels)

}  // namespace vek
