// Row kernels between RGB and the hue models.
#pragma once

#include "vek/vek.h"

#include <stddef.h>

#include "core/level.h"

namespace vek {

/// Converts n pixels of three bytes.
using PixelRow = void (*)(const Vek8u* src, Vek8u* dst, ptrdiff_t n);

/// Components are 0..255 for the real ranges 0..1, hue 0..255 for 0..360 degrees. Each result is
/// the exact rational value rounded to nearest, halves up.
struct HueRows {
  PixelRow rgbToHls;
  PixelRow hlsToRgb;
  PixelRow rgbToHsv;
  PixelRow hsvToRgb;
};

VEK_KERNEL_TABLE(HueRows, hueRows)

}  // namespace vek
