// Linear combinations of channels, pixel by pixel.
#include <type_traits>

#include "core/assert.h"
#include "core/color/pixel_block.h"
#include "core/color/weighted_bytes.h"
#include "core/kernel/words.h"
#include "image/color/twist_kernels.h"

namespace vek::portable {
namespace {

/// `Sum` is wide enough for the weights: 32 bits for a combination that fits16Bits(), else 64. It is
/// made of weights of half its bits, which compilers multiply in vectors. From sample `first` on.
template <class Sum, int shift>
[[gnu::noinline]] void combine(const PixelBlock& p, ptrdiff_t first, ptrdiff_t n,
                               const Combination& c, Vek8u* __restrict dst) {
  using Weight = std::conditional_t<sizeof(Sum) == 4, Vek16s, Vek32s>;
  const Weight w0 = static_cast<Weight>(c.weight[0]), w1 = static_cast<Weight>(c.weight[1]),
               w2 = static_cast<Weight>(c.weight[2]);
  const Sum offset = Sum{c.offset} + (Sum{1} << (shift - 1));
  for (ptrdiff_t i = first; i < n; ++i) {
    const Sum sum =
        Sum{w0} * p.channel[0][i] + Sum{w1} * p.channel[1][i] + Sum{w2} * p.channel[2][i] + offset;
    const Sum value = sum >> shift;
    dst[i] = static_cast<Vek8u>(value < 0 ? 0 : value > 255 ? 255 : value);
  }
}

/// Of a combination that fits16Bits(), with what rounds it.
template <int shift>
constexpr ByteWeights byteWeights(const Combination& c) {
  return {{static_cast<Vek16s>(c.weight[0]), static_cast<Vek16s>(c.weight[1]),
           static_cast<Vek16s>(c.weight[2])},
          c.offset + (1 << (shift - 1))};
}

/// With sums of 32 bits, as far as vectors take them.
template <class Sum, int shift, int outputs>
void combineAll(const PixelBlock& p, ptrdiff_t n, const Combination* channels,
                Vek8u* const (&dst)[outputs]) {
  ptrdiff_t done = 0;
  if constexpr (sizeof(Sum) == 4) {
    ByteWeights weights[outputs];
    for (int k = 0; k < outputs; ++k) weights[k] = byteWeights<shift>(channels[k]);
    done = weighVectors<shift, outputs>(p.channel[0], p.channel[1], p.channel[2], n, weights, dst);
  }
  if (done == n) return;
  for (int k = 0; k < outputs; ++k) combine<Sum, shift>(p, done, n, channels[k], dst[k]);
}

template <class Sum, int shift>
void combineRow(ptrdiff_t n, const Vek8u* src, Vek8u* dst, const Combination& c) {
  VEK_ASSERT(n >= 1);
  if constexpr (!hasWords && sizeof(Sum) == 4) {
    return weighTriples<shift, true>(src, n, byteWeights<shift>(c), dst, 1);
  }
  forEachBlock(n, [&](ptrdiff_t x, ptrdiff_t count) {
    PixelBlock in;
    separate(src + 3 * x, count, in);
    combineAll<Sum, shift, 1>(in, count, &c, {dst + x});
  });
}

/// 306 r + 601 g + 117 b + 512 is 4 (76 r + 150 g + 29 b) + (2 r + g + b + 512). The bracket's own
/// quarter, rounded down, leaves nothing in 16 bits that a shift by 10 would keep.
void luma(ptrdiff_t n, const Vek8u* src, Vek8u* dst) {
  VEK_ASSERT(n >= 1);
  static_assert(lumaWeights.weight[0] == 4 * 76 + 2 && lumaWeights.weight[1] == 4 * 150 + 1 &&
                lumaWeights.weight[2] == 4 * 29 + 1 && lumaWeights.offset == 0);
  if constexpr (!hasWords) {
    static_assert(staysInBytes<10>(byteWeights<10>(lumaWeights)));
    return weighTriples<10, false>(src, n, byteWeights<10>(lumaWeights), dst, 1);
  }
  forEachBlock(n, [&](ptrdiff_t x, ptrdiff_t count) {
    PixelBlock in;
    separate(src + 3 * x, count, in);
    const Vek8u *const r = in.channel[0], *const g = in.channel[1], *const b = in.channel[2];
    Vek8u* const to = dst + x;
    for (ptrdiff_t i = 0; i < count; ++i) {
      const Vek16u quarter = static_cast<Vek16u>((2 * r[i] + g[i] + b[i] + 512) >> 2);
      const Vek16u sum = static_cast<Vek16u>(76 * r[i] + 150 * g[i] + 29 * b[i] + quarter);
      to[i] = static_cast<Vek8u>(sum >> 8);
    }
  });
}

template <class Sum>
void twist(ptrdiff_t n, const Vek8u* src, Vek8u* __restrict dst, const Combination* channels) {
  VEK_ASSERT(n >= 1);
  if constexpr (!hasWords && sizeof(Sum) == 4) {
    for (int k = 0; k < 3; ++k) {
      weighTriples<10, true>(src, n, byteWeights<10>(channels[k]), dst + k, 3);
    }
    return;
  }
  forEachBlock(n, [&](ptrdiff_t x, ptrdiff_t count) {
    PixelBlock in, out;
    separate(src + 3 * x, count, in);
    combineAll<Sum, 10, 3>(in, count, channels, {out.channel[0], out.channel[1], out.channel[2]});
    join(out, count, dst + 3 * x);
  });
}

void grayQ14(ptrdiff_t n, const Vek8u* src, Vek8u* dst, const Combination& weights) {
  VEK_ASSERT(fits16Bits(weights));
  combineRow<Vek32s, 14>(n, src, dst, weights);
}

void twistQ10(ptrdiff_t n, const Vek8u* src, Vek8u* dst, const Combination* channels) {
  VEK_ASSERT(fits16Bits(channels[0]) && fits16Bits(channels[1]) && fits16Bits(channels[2]));
  twist<Vek32s>(n, src, dst, channels);
}

}  // namespace

void wideGrayQ14(ptrdiff_t n, const Vek8u* src, Vek8u* dst, const Combination& weights) {
  combineRow<Vek64s, 14>(n, src, dst, weights);
}

void wideTwistQ10(ptrdiff_t n, const Vek8u* src, Vek8u* dst, const Combination* channels) {
  twist<Vek64s>(n, src, dst, channels);
}

constexpr TwistKernels twistKernels = {.luma = luma, .grayQ14 = grayQ14, .twistQ10 = twistQ10};

}  // namespace vek::portable
