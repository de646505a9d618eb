// Output pixel formats: how many bits each component keeps and where the fields lie.
// Compiled into kernels of every level, so everything sits in the level's own namespace.
#pragma once

#include "vek/vek.h"

namespace vek::VEK_LEVEL {
namespace {

/// A 16-bit word, stored low byte first, whose fields hold the top bits of each 8-bit component.
template <int redBits, int greenBits, int blueBits, int redPos, int greenPos, int bluePos>
struct Packed16 {
  static constexpr int rBits = redBits, gBits = greenBits, bBits = blueBits;
  static constexpr int rPos = redPos, gPos = greenPos, bPos = bluePos;
  static constexpr int bytes = 2;

  /// Each component fits its field. `dst` may be at any address.
  static void store(Vek8u* dst, int r, int g, int b) {
    const unsigned word = static_cast<unsigned>(r) << rPos | static_cast<unsigned>(g) << gPos |
                          static_cast<unsigned>(b) << bPos;
    dst[0] = static_cast<Vek8u>(word & 0xFF);
    dst[1] = static_cast<Vek8u>(word >> 8);
  }
};

using Rgb565 = Packed16<5, 6, 5, 11, 5, 0>;
using Rgb555 = Packed16<5, 5, 5, 10, 5, 0>;
using Rgb444 = Packed16<4, 4, 4, 8, 4, 0>;
using Bgr565 = Packed16<5, 6, 5, 0, 5, 11>;
using Bgr555 = Packed16<5, 5, 5, 0, 5, 10>;
using Bgr444 = Packed16<4, 4, 4, 0, 4, 8>;

/// Three bytes; rAt, gAt, bAt are the components' places in memory.
template <int rAt, int gAt, int bAt>
struct Bytes24 {
  static constexpr int rBits = 8, gBits = 8, bBits = 8;
  static constexpr int rPos = rAt, gPos = gAt, bPos = bAt;
  static constexpr int bytes = 3;

  static void store(Vek8u* dst, int r, int g, int b) {
    dst[rAt] = static_cast<Vek8u>(r);
    dst[gAt] = static_cast<Vek8u>(g);
    dst[bAt] = static_cast<Vek8u>(b);
  }
};

using Rgb24 = Bytes24<0, 1, 2>;
using Bgr24 = Bytes24<2, 1, 0>;

/// Clamps to 0 .. 2^bits - 1.
template <int bits>
int clampToBits(int v) {
  constexpr int top = (1 << bits) - 1;
  return v < 0 ? 0 : v > top ? top : v;
}

}  // namespace
}  // namespace vek::VEK_LEVEL
