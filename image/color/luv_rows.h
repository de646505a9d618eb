// Row kernels between RGB and CIE LUV, and the constants that they share.
#pragma once

#include "vek/vek.h"

#include <stddef.h>

#include "core/level.h"

namespace vek {

struct LuvRows {
  void (*rgbToLuv)(const Vek8u* src, Vek8u* dst, ptrdiff_t n);
  void (*luvToRgb)(const Vek8u* src, Vek8u* dst, ptrdiff_t n);
};

VEK_KERNEL_TABLE(LuvRows, luvRows)

}  // namespace vek
