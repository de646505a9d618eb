// The kernels of the affine and the perspective warp.
#pragma once

#include "vek/vek.h"

#include <stddef.h>

#include "core/level.h"

namespace vek {

/// A pixel that has no position in the source has this one, in both directions. Positions below it and
/// above -noPosition may be any such ones: they are that far outside of every source.
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

/// The positions of successive pixels.
struct WarpPositions {
  static constexpr int most = 256;
  static constexpr int spare = 16;  ///< for whole vectors from any position on

  alignas(64) Vek32s columns[most + spare];
  alignas(64) Vek32s rows[most + spare];

  /// Bounds of the first n, which lie on a line. Always inlined: kernels of higher levels call it, and
  /// their objects must not define a symbol that other code could be linked to.
  [[gnu::always_inline]] WarpBox boundsOfLine(int n) const {
    const bool right = columns[0] <= columns[n - 1], down = rows[0] <= rows[n - 1];
    return {.left = columns[right ? 0 : n - 1],
            .top = rows[down ? 0 : n - 1],
            .right = columns[right ? n - 1 : 0],
            .bottom = rows[down ? n - 1 : 0]};
  }
};

struct WarpSource {
  const Vek8u* data;
  ptrdiff_t step;
};

/// Finds the positions in the source of n pixels, 1 .. WarpPositions::most, in steps of 2^-fractionBits
/// pixel, and returns their bounds, which may be too wide. fractionBits is 0 or 7. What it leaves behind
/// the n positions is of no use.
///
/// Affine: column = (X + 2^(31 - fractionBits)) >> (32 - fractionBits), rows alike. The denominator is
/// not used. X and Y stay below 2^62 + 2^17 in magnitude, also one pixel behind the last one.
///
/// Perspective: with X, Y and Z, which stay below 2^51 + 2^17 in magnitude, shifted right by 8 bits,
/// column = floor((2 * 2^fractionBits * X + Z) / (2 * Z)), rows alike; noPosition where Z is 0.
using FindPositions = WarpBox (*)(const WarpLine& line, int fractionBits, int n,
                                  WarpPositions& positions);

/// Writes n pixels, 1 .. WarpPositions::most, sampled at positions at which no sample outside of the
/// source is read. Levels above portable want every offset in the source to fit 32 bits.
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

  /// How many of the positions first .. n - 1, 0 <= first < n, follow each other without one that is
  /// outside of the box (with `within`) or inside it (without).
  int (*run)(const WarpPositions& positions, int first, int n, const WarpBox& box, bool within);

  WarpSamplers c1, c3;
};

VEK_KERNEL_TABLE(WarpKernels, warpKernels)

}  // namespace vek
