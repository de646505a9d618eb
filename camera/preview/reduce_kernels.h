// Row kernels of the reductions by whole factors.
#pragma once

#include "vek/vek.h"

#include <stddef.h>

#include "core/level.h"
#include "core/region.h"

namespace vek {

struct ReduceKernels {
  /// dst[i] = src[i * stride] for i < n; the member's name ends in the stride. Nothing behind the
  /// last sample is read.
  using Pick = void (*)(const Vek8u* src, ptrdiff_t n, Vek8u* dst);
  Pick pick2, pick4, pick8, pick16, pick32;

  /// dst[i] = (a + b + c + d + 4) >> 2 modulo 256 for i < n, of the samples i * stride and
  /// i * stride + 1 of `top` and of `bottom`; the member's name ends in the stride. Nothing behind
  /// the last two samples is read. @quirk The average adds 4 instead of 2, so that it is half a step
  /// brighter than the exact one and four samples of 255 give 0; callers compare the bytes.
  using SumBlocks = void (*)(const Vek8u* top, const Vek8u* bottom, ptrdiff_t n, Vek8u* dst);
  SumBlocks sumBlocks2, sumBlocks4;

  /// `n` pixels from blocks of factor x factor pixels of an image of groups Cb, Y0, Cr, Y1; the
  /// member's name ends in the factor. The averages are taken in pairs, (a + b + 1) >> 1: first of
  /// horizontal neighbours until each row of a block is one value, then of rows. Chroma k is
  /// averaged over blocks 2k and 2k + 1, or over block 2k alone if it is the last one.
  using AverageBlocks = void (*)(Plane<const Vek8u> src, ptrdiff_t n, Vek8u* y, Vek8u* cb,
                                 Vek8u* cr);
  AverageBlocks averageBlocks2, averageBlocks4, averageBlocks8;

  Pick pick(int stride) const {
    switch (stride) {
      case 2:
        return pick2;
      case 4:
        return pick4;
      case 8:
        return pick8;
      case 16:
        return pick16;
      default:
        return pick32;
    }
  }

  SumBlocks sumBlocks(int stride) const { return stride == 2 ? sumBlocks2 : sumBlocks4; }

  AverageBlocks averageBlocks(int factor) const {
    return factor == 2 ? averageBlocks2 : factor == 4 ? averageBlocks4 : averageBlocks8;
  }
};

VEK_KERNEL_TABLE(ReduceKernels, reduceKernels)

}  // namespace vek
