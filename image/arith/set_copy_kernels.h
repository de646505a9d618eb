// The row kernel that repeats a pixel.
#pragma once

#include "vek/vek.h"

#include <stddef.h>

#include "core/level.h"

namespace vek {

struct SetKernels {
  /// dst[i] = pattern[i % Pattern::period] for 0 <= i < n, n >= 1.
  void (*repeat)(const Vek8u* pattern, ptrdiff_t n, Vek8u* dst);
};

VEK_KERNEL_TABLE(SetKernels, setKernels)

}  // namespace vek
