// The kernels of the cosine transform of 8 x 8 blocks.
#pragma once

#include "vek/vek.h"

#include <stddef.h>

#include "core/level.h"

namespace vek {

/// Blocks side by side, `blocks` >= 1, 16 bytes of 8 rows each, at any addresses. The destination may
/// be the source, with its step.
using TransformBlocks = void (*)(const Vek8u* src, ptrdiff_t srcStep, ptrdiff_t blocks, Vek8u* dst,
                                 ptrdiff_t dstStep);

struct BlockDctKernels {
  TransformBlocks forward;
  TransformBlocks inverse;
};

VEK_KERNEL_TABLE(BlockDctKernels, blockDctKernels)

}  // namespace vek
