// The coefficients of the preview conversions from studio-range YCbCr (BT.601) to RGB.
// Compiled into kernels of every level, so everything sits in the level's own namespace.
#pragma once

#include "vek/vek.h"

namespace vek::VEK_LEVEL {
namespace {

/// R = luma y + redCr r, G = luma y + greenCb b + greenCr r, B = luma y + blueCb b with
/// `fractionBits` fractional bits, of y = Y - 16, b = Cb - 128, r = Cr - 128. Each is shifted down
/// to its field without a rounding term.
struct MatrixQ8 {
  static constexpr int fractionBits = 8;
  static constexpr Vek32s luma = 298, redCr = 409, greenCr = -208, greenCb = -100, blueCb = 516;
};

struct MatrixQ10 {
  static constexpr int fractionBits = 10;
  static constexpr Vek32s luma = 1192, redCr = 1634, greenCr = -833, greenCb = -401, blueCb = 2065;
};

/// How far a component is shifted down to a field of `bits` bits.
template <class Matrix>
constexpr int shiftToField(int bits) {
  return Matrix::fractionBits + 8 - bits;
}

}  // namespace
}  // namespace vek::VEK_LEVEL
