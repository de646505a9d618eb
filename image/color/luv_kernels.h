// Row kernels between RGB and CIE LUV, and the constants that they share.
#pragma once

#include "vek/vek.h"

#include <stddef.h>

#include "core/level.h"
#include "image/color/pixel_rows.h"

namespace vek {

struct LuvKernels {
  PixelRow rgbToLuv;
  PixelRow luvToRgb;
};

VEK_KERNEL_TABLE(LuvKernels, luvKernels)

}  // namespace vek
