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

  /// From `n` groups Cb, Y0, Cr, Y1: y[i] = the rounded average of Y0 and Y1, and the chroma.
  void (*splitPairs)(const Vek8u* src, ptrdiff_t n, Vek8u* y, Vek8u* cb, Vek8u* cr);

  /// Rounded averages of neighbours: dst[i] of src[2i] and src[2i + 1]; with an odd n the last
  /// sample stays as it is. n samples become (n + 1) / 2.
  void (*halve)(const Vek8u* src, ptrdiff_t n, Vek8u* dst);

  /// acc[i] = the rounded average of acc[i] and src[i] for i < n.
  void (*average)(const Vek8u* src, ptrdiff_t n, Vek8u* acc);
};

VEK_KERNEL_TABLE(ReduceRows, reduceRows)

}  // namespace vek
