// Positions of a perspective warp, one after the other, where there are no vectors of doubles.
#pragma once

#include "core/assert.h"
#include "image/warp/warp_kernels.h"

namespace vek::VEK_LEVEL {
namespace {

/// floor(numerator / denominator), limited. Both are integers below 2^53 in magnitude, so that a
/// quotient that is no integer is at least 1 / denominator away from one: rounding it to a double does
/// not make it one.
inline Vek32s quotient(Vek64s numerator, Vek64s denominator) {
  double q = static_cast<double>(numerator) / static_cast<double>(denominator);
  q = q < noPosition ? noPosition : q > -noPosition ? -noPosition : q;
  const auto truncated = static_cast<Vek32s>(q);
  return truncated - (truncated > q ? 1 : 0);
}

inline WarpBox positionsOneByOne(const WarpLine& line, int fractionBits, int n, WarpPositions& to) {
  VEK_ASSERT(n >= 1 && n <= WarpPositions::most && (fractionBits == 0 || fractionBits == 7));
  Vek64s x = line.at[0], y = line.at[1], z = line.at[2];
  WarpBox box = {-noPosition, -noPosition, noPosition, noPosition};
  for (int k = 0; k < n; ++k, x += line.step[0], y += line.step[1], z += line.step[2]) {
    const Vek64s depth = z >> 8, scale = 2 << fractionBits;
    const auto position = [&](Vek64s numerator, Vek32s& least, Vek32s& greatest) {
      const Vek32s p =
          depth == 0 ? noPosition : quotient(scale * (numerator >> 8) + depth, 2 * depth);
      least = p < least ? p : least;
      greatest = p > greatest ? p : greatest;
      return p;
    };
    to.columns[k] = position(x, box.left, box.right);
    to.rows[k] = position(y, box.top, box.bottom);
  }
  return box;
}

}  // namespace
}  // namespace vek::VEK_LEVEL
