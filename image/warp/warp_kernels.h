// The kernels of the affine and the perspective warp.
#pragma once

#include "vek/vek.h"

#include <stddef.h>

#include "core/level.h"

namespace vek {

/// A pixel that has no position in the source has this one, in both directions. Positions are also
/// limited to -noPosition .. noPosition: whatever lies as far outside of a source gives the same.
constexpr Vek32s noPosition = -(1 << 30);

/// The integer numerators of the columns and rows of successive pixels and their denominator: those of
/// the first pixel, and what each pixel adds.
struct WarpLine {
  Vek64s at[3];
  Vek64s step[3];
};

/// Bounds of positions, all included.
struct WarpBox {
  Vek32s left, top, right, bottom;

  bool contains(const WarpBox& other) const {
    return left <= other.left && other.right <= right && top <= other.top && other.bottom <= bottom;
  }
  bool meets(const WarpBox& other) const {
    return left <= other.right && other.left <= right && top <= other.bottom && other.top <= bottom;
  }
};

struct WarpSource {
  const Vek8u* data;
  ptrdiff_t step;
};

/// Finds the positions in the source of n >= 1 pixels, in steps of 2^-fractionBits pixel, and returns
/// their bounds. fractionBits is 0 or 7.
///
/// Affine: column = (X + 2^(31 - fractionBits)) >> (32 - fractionBits), rows alike. The denominator is
/// not used. X and Y stay below 2^62 + 2^17 in magnitude, also one pixel behind the last one.
///
/// Perspective: with X, Y and Z, which stay below 2^51 + 2^17 in magnitude, shifted right by 8 bits,
/// column = floor((2 * 2^fractionBits * X + Z) / (2 * Z)), rows alike; noPosition where Z is 0.
using FindPositions = WarpBox (*)(const WarpLine& line, int fractionBits, int n, Vek32s* columns,
                                  Vek32s* rows);

/// Writes n >= 1 pixels, sampled at positions at which no sample outside of the source is read.
struct WarpSampler {
  void (*sample)(const WarpSource& src, const Vek32s* columns, const Vek32s* rows, int n,
                 Vek8u* dst);
  ptrdiff_t bytes;  ///< what it reads in each row, from the first sample on
};

struct WarpSamplers {
  WarpSampler nearest, linear, cubic;
};

struct WarpKernels {
  FindPositions affine, perspective;
  WarpSamplers c1, c3;
};

namespace portable {
extern const WarpKernels warpKernels;
}

}  // namespace vek
