// Linear combinations of channels, pixel by pixel.
#pragma once

#include "image/color/twist_kernels.h"

namespace vek::VEK_LEVEL {
namespace {

/// `Sum` is wide enough for the weights: 32 bits for those that fit 16 bits, else 64.
template <class Sum, int shift>
Vek8u combine(const Vek8u* pixel, const Combination& c) {
  const Sum sum = Sum{c.weight[0]} * pixel[0] + Sum{c.weight[1]} * pixel[1] +
                  Sum{c.weight[2]} * pixel[2] + Sum{c.offset} + (Sum{1} << (shift - 1));
  const Sum value = sum >> shift;
  return static_cast<Vek8u>(value < 0 ? 0 : value > 255 ? 255 : value);
}

inline void lumaRow(const Vek8u* __restrict src, Vek8u* __restrict dst, ptrdiff_t n) {
  for (ptrdiff_t i = 0; i < n; ++i) dst[i] = combine<Vek32s, 10>(src + 3 * i, luma);
}

template <class Sum>
void grayQ14(const Vek8u* __restrict src, Vek8u* __restrict dst, ptrdiff_t n,
             const Combination& c) {
  const Combination weights = c;
  for (ptrdiff_t i = 0; i < n; ++i) dst[i] = combine<Sum, 14>(src + 3 * i, weights);
}

template <class Sum>
void twist(const Vek8u* __restrict src, Vek8u* __restrict dst, ptrdiff_t n,
           const Combination* channels) {
  const Combination c[3] = {channels[0], channels[1], channels[2]};
  for (ptrdiff_t i = 0; i < 3 * n; i += 3) {
    for (int k = 0; k < 3; ++k) dst[i + k] = combine<Sum, 10>(src + i, c[k]);
  }
}

}  // namespace
}  // namespace vek::VEK_LEVEL
