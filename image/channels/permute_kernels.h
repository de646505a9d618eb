// The kernels that change the order or the number of channels.
#pragma once

#include "vek/vek.h"

#include <stddef.h>

#include "core/level.h"

namespace vek {

/// Channel i of a pixel becomes what channel from[i] was, or `value` where from[i] is valueChannel.
struct ChannelOrder {
  static constexpr Vek8u valueChannel = 4;

  Vek8u from[4];
  Vek8u value;
};

/// `rows` rows of n pixels, n and rows >= 1. Where source and destination have as many channels, the
/// destination may be the source, with its step.
using Permute = void (*)(const Vek8u* src, ptrdiff_t srcStep, ptrdiff_t n, ptrdiff_t rows,
                         const ChannelOrder& order, Vek8u* dst, ptrdiff_t dstStep);

struct PermuteKernels {
  Permute from3To3;
  Permute from4To4;
  Permute from4To3;
  Permute from3To4;  ///< the only one with a valueChannel
};

VEK_KERNEL_TABLE(PermuteKernels, permuteKernels)

}  // namespace vek
