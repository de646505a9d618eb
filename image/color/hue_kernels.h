// Row kernels between RGB and the hue models.
#pragma once

#include "vek/vek.h"

#include <stddef.h>

#include "core/level.h"
#include "image/color/pixel_rows.h"

namespace vek {

/// Components are 0..255 for the real ranges 0..1, hue 0..255 for 0..360 degrees. Each result is
/// the exact rational value rounded to nearest, halves up.
struct HueKernels {
  PixelRow rgbToHls;
  PixelRow hlsToRgb;
  PixelRow rgbToHsv;
  PixelRow hsvToRgb;
};

VEK_KERNEL_TABLE(HueKernels, hueKernels)

}  // namespace vek
