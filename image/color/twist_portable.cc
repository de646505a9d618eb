// Linear combinations of channels, pixel by pixel.
#include "core/assert.h"
#include "image/color/twist_kernels.h"

namespace vek::portable {
namespace {

/// `Sum` is wide enough for the weights: 32 bits for a combination that fits16Bits(), else 64.
template <class Sum, int shift>
Vek8u combine(const Vek8u* pixel, const Combination& c) {
  const Sum sum = Sum{c.weight[0]} * pixel[0] + Sum{c.weight[1]} * pixel[1] +
                  Sum{c.weight[2]} * pixel[2] + Sum{c.offset} + (Sum{1} << (shift - 1));
  const Sum value = sum >> shift;
  return static_cast<Vek8u>(value < 0 ? 0 : value > 255 ? 255 : value);
}

void luma(ptrdiff_t n, const Vek8u* __restrict src, Vek8u* __restrict dst) {
  VEK_ASSERT(n >= 1);
  for (ptrdiff_t i = 0; i < n; ++i) dst[i] = combine<Vek32s, 10>(src + 3 * i, lumaWeights);
}

template <class Sum>
void gray(ptrdiff_t n, const Vek8u* __restrict src, Vek8u* __restrict dst, const Combination& c) {
  VEK_ASSERT(n >= 1);
  const Combination weights = c;  // a copy, which no store to dst can change
  for (ptrdiff_t i = 0; i < n; ++i) dst[i] = combine<Sum, 14>(src + 3 * i, weights);
}

template <class Sum>
void twist(ptrdiff_t n, const Vek8u* __restrict src, Vek8u* __restrict dst,
           const Combination* channels) {
  VEK_ASSERT(n >= 1);
  const Combination c[3] = {channels[0], channels[1], channels[2]};
  for (ptrdiff_t i = 0; i < 3 * n; i += 3) {
    for (int k = 0; k < 3; ++k) dst[i + k] = combine<Sum, 10>(src + i, c[k]);
  }
}

void grayQ14(ptrdiff_t n, const Vek8u* src, Vek8u* dst, const Combination& weights) {
  VEK_ASSERT(fits16Bits(weights));
  gray<Vek32s>(n, src, dst, weights);
}

void twistQ10(ptrdiff_t n, const Vek8u* src, Vek8u* dst, const Combination* channels) {
  VEK_ASSERT(fits16Bits(channels[0]) && fits16Bits(channels[1]) && fits16Bits(channels[2]));
  twist<Vek32s>(n, src, dst, channels);
}

}  // namespace

void wideGrayQ14(ptrdiff_t n, const Vek8u* src, Vek8u* dst, const Combination& weights) {
  gray<Vek64s>(n, src, dst, weights);
}

void wideTwistQ10(ptrdiff_t n, const Vek8u* src, Vek8u* dst, const Combination* channels) {
  twist<Vek64s>(n, src, dst, channels);
}

constexpr TwistKernels twistKernels = {.luma = luma, .grayQ14 = grayQ14, .twistQ10 = twistQ10};

}  // namespace vek::portable
