// Row kernels of the reductions by whole factors.
#pragma once

#include "vek/vek.h"

#include <stddef.h>

#include "core/level.h"

namespace vek {

struct ReduceRows {
  /// dst[i] = src[i * stride] for i < n; stride 2, 4, 8, 16 or 32.
  void (*pick)(const Vek8u* src, ptrdiff_t stride, ptrdiff_t n, Vek8u* dst);

  /// dst[i] = (a + b + c + d + 4) >> 2 modulo 256, of the samples i * stride and i * stride + 1 of
  /// `top` and of `bottom`; stride 2 or 4.
  void (*sumBlocks)(const Vek8u* top, const Vek8u* bottom, ptrdiff_t stride, ptrdiff_t n,
                    Vek8u* dst);
};

VEK_KERNEL_TABLE(ReduceRows, reduceRows)

}  // namespace vek
