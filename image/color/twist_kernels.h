// Row kernels that combine the three channels of a pixel linearly.
#pragma once

#include "vek/vek.h"

#include <stddef.h>

#include "core/level.h"

namespace vek {

/// One output channel: c0 w0 + c1 w1 + c2 w2 + offset, shifted right and clamped to 0..255.
struct Combination {
  Vek32s weight[3];
  Vek32s offset;
};

/// BT.601 luma (0.299, 0.587, 0.114) in Q10.
inline constexpr Combination luma = {{306, 601, 117}, 0};

/// Whether a combination can be summed in signed 32 bits from 16-bit weights:
/// 3 * 255 * 32768 < 2^25, so an offset below 2^30 leaves room.
constexpr bool fitsWords(const Combination& c) {
  for (Vek32s w : c.weight) {
    if (w < -32768 || w > 32767) return false;
  }
  return c.offset > -(1 << 30) && c.offset < 1 << 30;
}

struct TwistKernels {
  /// n pixels of three bytes to one byte each, Q10 with the weights of `luma`.
  void (*luma)(const Vek8u* src, Vek8u* dst, ptrdiff_t n);
  /// The same in Q14 with any weights that fit 16 bits.
  void (*grayQ14)(const Vek8u* src, Vek8u* dst, ptrdiff_t n, const Combination& gray);
  /// n pixels to three bytes each, Q10; combination k gives channel k.
  void (*twistQ10)(const Vek8u* src, Vek8u* dst, ptrdiff_t n, const Combination* channels);
};

VEK_KERNEL_TABLE(TwistKernels, twistKernels)

}  // namespace vek
