// The matrices of the YCbCr and YUV conversions, with 10 fractional bits.
// Compiled into kernels of every level, so everything sits in the level's own namespace.
#pragma once

#include "core/color/color_matrix.h"

namespace vek::VEK_LEVEL {
namespace {

/// The same map with the samples counted from `luma`, 128 and 128, for smaller intermediate sums.
constexpr Matrix centred(Matrix m, Vek32s luma) {
  const Vek32s centre[3] = {luma, 128, 128};
  for (int i = 0; i < 3; ++i) {
    for (int k = 0; k < 3; ++k) m.offset[k] += m.factor[k][i] * (centre[i] - m.centre[i]);
    m.centre[i] = centre[i];
  }
  return m;
}

constexpr Vek32s chromaZero = 128 << 10;

// Studio-range BT.601: Y 16..235, Cb and Cr 16..240.

/// The offsets hold the zero points 16 and 128, and one half for rounding.
constexpr Matrix rgbToYcbcr = {.centre = {},
                               .factor = {{263, 516, 100}, {-152, -298, 450}, {450, -377, -73}},
                               .offset = {16896, 131584, 131584}};
/// As ycbcrToRgb, but rounded. @quirk The offsets hold the zero points and nearly one half: exact ones
/// would be -227712, 139392 and -282880. The results with these are part of the interface.
constexpr Matrix ycbcrToRgbRounded =
    centred({.centre = {},
             .factor = {{1192, 0, 1634}, {1192, -401, -833}, {1192, 2065, 0}},
             .offset = {-227749, 139383, -282930}},
            16);

// Full-range YUV: all samples 0..255, U and V around 128.

/// @quirk The sums are truncated, and the factors of U add up to -1, so that grey has U = 127. The
/// results are part of the interface.
constexpr Matrix rgbToYuv = {.centre = {},
                             .factor = {{306, 601, 117}, {-151, -296, 446}, {630, -527, -102}},
                             .offset = {0, chromaZero, chromaZero}};
constexpr Matrix yuvToRgbRounded =
    centred({.centre = {},
             .factor = {{1024, 0, 1167}, {1024, -403, -595}, {1024, 2081, 0}},
             .offset = {-148910, 128307, -265826}},
            0);
/// Without a rounding term, as ycbcrToRgb.
constexpr Matrix yuvToRgb = {.centre = {0, 128, 128},
                             .factor = {{1024, 0, 1167}, {1024, -403, -595}, {1024, 2081, 0}},
                             .offset = {}};

// Chroma from colour differences, where it is shared by several pixels:
// U = 128 + (uFactor * (B - Y) >> 10), V = 128 + (vFactor * (R - Y) >> 10).
constexpr Vek32s uFactor = 504, vFactor = 898;

}  // namespace
}  // namespace vek::VEK_LEVEL
