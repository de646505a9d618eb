// Matrices between RGB and YCbCr or YUV, and their outputs as the definitions read.
// Compiled into kernels of every level, so everything sits in the level's own namespace.
#pragma once

#include "core/color/pixel_format.h"

namespace vek::VEK_LEVEL {
namespace {

/// Output k is (sum over i of factor[k][i] * (x[i] - centre[i]) + offset[k]) >> fractionBits,
/// clamped.
struct Matrix {
  Vek32s centre[3];
  Vek32s factor[3][3];
  Vek32s offset[3];
  int fractionBits = 10;
};

/// Studio-range BT.601 to RGB. @quirk There is no rounding term, so that white (235, 128, 128) gives
/// 254. Only the conversion of interleaved 4:4:4 bytes rounds; that the others truncate is part of
/// their interface.
constexpr Matrix ycbcrToRgb = {.centre = {16, 128, 128},
                               .factor = {{1192, 0, 1634}, {1192, -401, -833}, {1192, 2065, 0}},
                               .offset = {}};

/// Output k of the matrix, reduced to `bits` bits. The sums stay within 21 bits.
template <const Matrix& m, int k, int bits = 8>
Vek32s component(Vek32s a, Vek32s b, Vek32s c) {
  const Vek32s sum = m.factor[k][0] * (a - m.centre[0]) + m.factor[k][1] * (b - m.centre[1]) +
                     m.factor[k][2] * (c - m.centre[2]) + m.offset[k];
  return clampToBits<bits>(sum >> (m.fractionBits + 8 - bits));
}

}  // namespace
}  // namespace vek::VEK_LEVEL
