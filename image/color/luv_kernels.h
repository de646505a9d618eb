// Row kernels between RGB and CIE LUV.
#pragma once

#include "core/level.h"
#include "image/color/convert_row.h"

namespace vek {

/// L, u and v are bytes, scaled as luv_constants.h says.
struct LuvKernels {
  ConvertRow rgbToLuv;
  ConvertRow luvToRgb;
};

VEK_KERNEL_TABLE(LuvKernels, luvKernels)

}  // namespace vek
