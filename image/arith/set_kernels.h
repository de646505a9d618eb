// Row kernel that repeats a pixel.
#pragma once

#include "core/level.h"
#include "image/arith/pointwise.h"

namespace vek {

struct SetKernels {
  /// Writes n bytes of a Pattern.
  void (*repeat)(const Vek8u* pattern, ptrdiff_t n, Vek8u* dst);
};

VEK_KERNEL_TABLE(SetKernels, setKernels)

}  // namespace vek
