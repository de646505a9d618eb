// Row kernels of the reductions by whole factors.
#pragma once

#include "vek/vek.h"

#include <stddef.h>

#include "core/level.h"
#include "core/region.h"

namespace vek {

struct ReduceKernels {
  /// dst[i] = src[i * stride] for i < n; stride 2, 4, 8, 16 or 32.
  void (*pick)(const Vek8u* src, ptrdiff_t stride, ptrdiff_t n, Vek8u* dst);

  /// dst[i] = (a + b + c + d + 4) >> 2 modulo 256, of the samples i * stride and i * stride + 1 of
  /// `top` and of `bottom`; stride 2 or 4.
  void (*sumBlocks)(const Vek8u* top, const Vek8u* bottom, ptrdiff_t stride, ptrdiff_t n,
                    Vek8u* dst);

  /// `n` pixels from blocks of factor x factor pixels of an image of groups Cb, Y0, Cr,
  /// Y1: rounded averages in pairs, first of horizontal neighbours until each row of a block is one
  /// value, then of rows. Chroma k is averaged over blocks 2k and 2k + 1, over block 2k alone if it
  /// is the last one.
  using AverageBlocks = void (*)(Plane<const Vek8u> src, ptrdiff_t n, Vek8u* y, Vek8u* cb,
                                 Vek8u* cr);
  AverageBlocks averageBlocks2;
  AverageBlocks averageBlocks4;
  AverageBlocks averageBlocks8;
};

VEK_KERNEL_TABLE(ReduceKernels, reduceKernels)

}  // namespace vek
