// Linear combinations of the three channels of a pixel.
#pragma once

#include "vek/vek.h"

namespace vek {

/// One output channel: c0 w0 + c1 w1 + c2 w2 + offset, shifted right and clamped to 0..255.
struct Combination {
  Vek32s weight[3];
  Vek32s offset;
};

/// BT.601 luma (0.299, 0.587, 0.114) in Q10.
constexpr Combination lumaWeights = {{306, 601, 117}, 0};

/// Whether a combination can be summed in signed 32 bits from 16-bit weights: the products stay below
/// 3 * 255 * 32768 < 2^25, so an offset below 2^30 leaves room. Static because objects of a higher level
/// must not define a symbol that other code could be linked to.
static constexpr bool fits16Bits(const Combination& c) {
  for (Vek32s w : c.weight) {
    if (w < -32768 || w > 32767) return false;
  }
  return c.offset > -(1 << 30) && c.offset < 1 << 30;
}

}  // namespace vek
