// The table of a level whose convertPlanes<pixels, matrix, Format> converts a tile.
#pragma once

#include "camera/preview/csc_kernels.h"
#include "camera/preview/csc_matrix.h"
#include "core/color/pixel_format.h"

namespace vek::VEK_LEVEL {
namespace {

template <int pixels>
constexpr CscFormats formats = {
    convertPlanes<pixels, matrixQ8, Rgb565>,  convertPlanes<pixels, matrixQ8, Rgb555>,
    convertPlanes<pixels, matrixQ8, Rgb444>,  convertPlanes<pixels, matrixQ8, Bgr24>,
    convertPlanes<pixels, matrixQ10, Rgb565>, convertPlanes<pixels, matrixQ10, Rgb555>};

}  // namespace

constexpr CscKernels cscKernels = {formats<2>, formats<1>};

}  // namespace vek::VEK_LEVEL
