// From accumulated norms to scaled 32-bit results, in integer arithmetic.
#pragma once

#include "vek/vek.h"

#include <stdint.h>

namespace vek {

/// What stands for a result that does not fit.
inline constexpr Vek32u maxNorm = 0x7fffffff;

/// v * 2^-scaleFactor without rounding. @quirk Nothing saturates: the scale factor counts modulo
/// 256, bits that leave the word are lost, and a right shift by 32 or more leaves the top bit.
Vek32s scaleNorm(Vek32u v, int scaleFactor);

/// The square root of a sum of squares, * 2^-scaleFactor, rounded to nearest (halves up). Returns
/// whether it fits; one that does not becomes maxNorm.
bool scaleRoot(uint64_t squares, int scaleFactor, Vek32s* result);

/// d / r * 2^-scaleFactor of norms of each kind; neither d nor r is 0. Those of L2 are sums of
/// squares: the square root is taken of their quotient, and rounded to nearest (halves up). L2
/// answers a result that does not fit with vekStsSqrtWrn.
VekStatus relativeInf(uint64_t d, uint64_t r, int scaleFactor, Vek32s* result);
VekStatus relativeL1(uint64_t d, uint64_t r, int scaleFactor, Vek32s* result);
VekStatus relativeL2(uint64_t d, uint64_t r, int scaleFactor, Vek32s* result);

}  // namespace vek
