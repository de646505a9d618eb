// Row kernels between RGB and the hue models.
#pragma once

#include "core/level.h"
#include "image/color/convert_row.h"

namespace vek {

/// Components are 0..255 for the real ranges 0..1, hue 0..255 for 0..360 degrees. Each result of the
/// forward kernels is the exact rational value rounded to nearest, halves up.
struct HueKernels {
  ConvertRow rgbToHls;
  ConvertRow hlsToRgb;
  ConvertRow rgbToHsv;
  ConvertRow hsvToRgb;
};

VEK_KERNEL_TABLE(HueKernels, hueKernels)

}  // namespace vek
