// The kernels that reduce the number of levels.
#pragma once

#include "vek/vek.h"

#include <stddef.h>

#include "core/level.h"

namespace vek {

/// Bytes to dither and where the result goes; neither needs alignment.
struct Picture {
  const Vek8u* src;
  ptrdiff_t srcStep;
  Vek8u* dst;
  ptrdiff_t dstStep;
  int width, height;  ///< >= 1
};

/// The widest rows whose errors are diffused.
inline constexpr int mostDiffusedWidth = 16384;

/// The widest rows of three channels whose errors have room on the stack together. The channels of wider
/// ones are diffused one after the other, which takes three times as long.
inline constexpr int mostWidthTogether = 6720;

/// Room for the errors of a row.
template <int channels>
inline constexpr int mostErrors = channels == 1 ? mostDiffusedWidth : channels* mostWidthTogether;

/// `levels` is 2 .. 256 where the destination has a byte for each sample, and of no account elsewhere.
/// `origin` places the matrix of ordered dithering; diffusion does not look at it.
using Dither = void (*)(const Picture& picture, int levels, VekiPoint origin);

/// The kernels of one method.
struct DitherKernels {
  Dither bytes;  ///< one channel, the destination may be the source
  Dither oneBit, twoBits, fourBits;
  Dither rgb565, rgb555, rgb444;  ///< three channels
};

VEK_KERNEL_TABLE(DitherKernels, orderKernels)
/// Of pictures of at most mostDiffusedWidth columns.
VEK_KERNEL_TABLE(DitherKernels, diffuseKernels)

}  // namespace vek
