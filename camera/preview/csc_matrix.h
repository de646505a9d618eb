// The matrices of the preview conversions: studio-range YCbCr (BT.601) to RGB.
// Compiled into kernels of every level, so everything sits in the level's own namespace.
#pragma once

#include "core/color/color_matrix.h"

namespace vek::VEK_LEVEL {
namespace {

constexpr Matrix matrixQ8 = {.centre = {16, 128, 128},
                             .factor = {{298, 0, 409}, {298, -100, -208}, {298, 516, 0}},
                             .offset = {},
                             .fractionBits = 8};
constexpr Matrix matrixQ10 = ycbcrToRgb;

}  // namespace
}  // namespace vek::VEK_LEVEL
