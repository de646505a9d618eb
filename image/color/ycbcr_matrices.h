// The matrices of the YCbCr and YUV conversions, with 10 fractional bits.
// Compiled into kernels of every level, so everything sits in the level's own namespace.
#pragma once

#include "core/color/color_matrix.h"

namespace vek::VEK_LEVEL {
namespace {

/// The same map with samples counted from `luma` and 128: smaller intermediate sums.
constexpr Matrix centred(Matrix m, Vek32s luma) {
  const Vek32s centre[3] = {luma, 128, 128};
  for (int i = 0; i < 3; ++i) {
    for (int k = 0; k < 3; ++k) m.offset[k] += m.factor[k][i] * (centre[i] - m.centre[i]);
    m.centre[i] = centre[i];
  }
  return m;
}

constexpr Vek32s chromaZero = 128 << 10;

// Studio-range BT.601: Y 16..235, Cb and Cr 16..240. Offsets hold the zero point and one half.
constexpr Matrix RGB_YCbCr_Q10_C2 = {
    {}, {{263, 516, 100}, {-152, -298, 450}, {450, -377, -73}}, {16896, 131584, 131584}};
constexpr Matrix YCbCr_RGB_Q10_C2 = centred(
    {{}, {{1192, 0, 1634}, {1192, -401, -833}, {1192, 2065, 0}}, {-227749, 139383, -282930}}, 16);

// Full-range YUV. The forward direction truncates; the U row sums to -1, so grey gives U = 127.
constexpr Matrix RGB_YUV_Q10_C2 = {
    {}, {{306, 601, 117}, {-151, -296, 446}, {630, -527, -102}}, {0, chromaZero, chromaZero}};
constexpr Matrix YUV_RGB_Q10_C2 = centred(
    {{}, {{1024, 0, 1167}, {1024, -403, -595}, {1024, 2081, 0}}, {-148910, 128307, -265826}}, 0);
/// Without a rounding term.
constexpr Matrix yuvToRgb = {
    {0, 128, 128}, {{1024, 0, 1167}, {1024, -403, -595}, {1024, 2081, 0}}, {}};

// Chroma from colour differences, where it is shared by several pixels:
// U = 128 + (uFactor * (B - Y) >> 10), V = 128 + (vFactor * (R - Y) >> 10).
constexpr Vek32s uFactor = 504, vFactor = 898;

}  // namespace
}  // namespace vek::VEK_LEVEL
