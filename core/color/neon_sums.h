// The sums of chroma_products.h in what NEON has: products and sums of bytes whose lanes are twice as
// wide, shifts that clamp, and loads that separate the pixels of pairs. Empty elsewhere.
#pragma once

#include "core/color/chroma_products.h"
#include "core/color/pixel_store.h"
#include "core/kernel/neon_memory.h"

#if HWY_ARCH_ARM

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

/// The chroma parts of eight samples of Cb and Cr, for as many pixels or for as many pairs of pixels.
/// Where luma has fractional bits the sums have 8 bits before and 7 behind the point, and the biases
/// and the two steps of blue are those of byte_sums.h. Otherwise the sums are whole.
template <const Matrix& m>
class NeonSums {
  using W = Weights<m>;
  static constexpr bool hasFraction = W::luma > 1;
  static_assert(W::fractionBits == (hasFraction ? 7 : 0));
  static constexpr Vek32s bias = W::luma * 255 > 32767 ? W::luma * 255 - 32767 : 0;
  template <int k>
  static constexpr Vek32s start = W::template offset<k> + (bias << W::drop);

  int16x8_t red_, green_, blue_, blueFirst_;

 public:
  NeonSums(uint8x8_t b, uint8x8_t r) {
    if constexpr (hasFraction) {
      red_ = product<W::red, start<0>>(r);
      blueFirst_ = vreinterpretq_s16_u16(vshll_n_u8(veor_u8(b, vdup_n_u8(128)), 8));
      blue_ = product<W::blue - (256 << W::drop), start<2>>(b);
      green_ = greenProducts<start<1>>(b, r);
    } else {
      const int16x8_t b8 = centredTimes8(b), r8 = centredTimes8(r);
      red_ = product8<W::red, start<0>>(r8);
      blue_ = product8<W::blue, start<2>>(b8);
      green_ = highHalves<64 * start<1>>(greenProducts8(vget_low_s16(b8), vget_low_s16(r8)),
                                         greenProducts8(vget_high_s16(b8), vget_high_s16(r8)));
      blueFirst_ = blue_;  // not used
    }
  }

  /// Stores eight pixels.
  template <class Format>
  void store(uint8x8_t y, Vek8u*& dst) const {
    if constexpr (Format::bytes == 2) return storeSixteen(packed<Format>(y), dst);
    static_assert(Format::bytes == 2 || Format::gPos == 1);
    Components c = components(y);
    const uint8x8_t red = bytes(c.red), green = bytes(c.green), blue = bytes(c.blue);
    if constexpr (Format::rPos == 0) return storePixels(red, green, blue, dst);
    storePixels(blue, green, red, dst);
  }

  /// Eight pixels of 16 bits.
  template <class Format>
  uint8x16_t packed(uint8x8_t y) const {
    return vreinterpretq_u8_u16(fields<Format>(components(y)));
  }

  /// Stores the pixels of eight pairs, whose even ones have the lower half of the luma.
  template <class Format>
  void storePairs(const HalvesOfBytes& y, Vek8u*& dst) const {
    if constexpr (Format::bytes == 2) {
      const uint16x8_t even = fields<Format>(components(y.lower));
      storeAlternately(even, fields<Format>(components(y.upper)), dst);
    } else {
      Components even = components(y.lower), odd = components(y.upper);
      static_assert(Format::gPos == 1);
      const uint8x16_t red = alternateBytes(even.red, odd.red);
      const uint8x16_t green = alternateBytes(even.green, odd.green);
      const uint8x16_t blue = alternateBytes(even.blue, odd.blue);
      if constexpr (Format::rPos == 0) return storePixels(red, green, blue, dst);
      storePixels(blue, green, red, dst);
    }
  }

 private:
  struct Components {
    int16x8_t red, green, blue;
  };

  // ---- Chroma parts for sums with a fraction, modulo 2^16.

  /// floor((factor * (c - 128) + offset) / 2^drop). What the factor leaves when it is divided by
  /// 2^drop is 0 or a power of two.
  template <Vek32s factor, Vek32s offset>
  static int16x8_t product(uint8x8_t c) {
    constexpr Vek32s unit = 1 << W::drop, total = offset - 128 * factor, rest = factor % unit;
    static_assert(factor / unit < 256 && total % unit == 0 && (rest & (rest - 1)) == 0);
    uint16x8_t sum = factor / unit == 2 ? vshll_n_u8(c, 1) : vmull_u8(c, vdup_n_u8(factor / unit));
    if constexpr (rest != 0) {
      constexpr int shift = W::drop - __builtin_ctz(static_cast<unsigned>(rest));
      sum = vaddw_u8(sum, vshr_n_u8(c, shift));
    }
    return vaddq_s16(vreinterpretq_s16_u16(sum), vdupq_n_s16(static_cast<Vek16s>(total / unit)));
  }

  /// As greenProducts() of chroma_products.h.
  template <Vek32s offset>
  static int16x8_t greenProducts(uint8x8_t b, uint8x8_t r) {
    constexpr Vek32s bFactor = -m.factor[1][1], rFactor = -m.factor[1][2], unit = 1 << W::drop;
    constexpr Vek32s total = offset + 128 * (bFactor + rFactor), rest = bFactor % unit;
    static_assert(rFactor % unit == rest && rest <= 1 && total % unit == 0);
    uint16x8_t products = vmull_u8(b, vdup_n_u8(bFactor / unit));
    products = vmlal_u8(products, r, vdup_n_u8(rFactor / unit));
    if constexpr (rest != 0) {
      const uint16x8_t sum = vaddq_u16(vaddl_u8(b, r), vdupq_n_u16(unit - 1));
      products = vsraq_n_u16(products, sum, W::drop);
    }
    return vsubq_s16(vdupq_n_s16(static_cast<Vek16s>(total / unit)),
                     vreinterpretq_s16_u16(products));
  }

  // ---- Chroma parts for whole sums, whose factors have 10 fractional bits: 8 (c - 128) times 8 factors
  // has 16.

  static int16x8_t centredTimes8(uint8x8_t c) {
    return vsubq_s16(vreinterpretq_s16_u16(vshll_n_u8(c, 3)), vdupq_n_s16(8 * 128));
  }

  /// floor((factor * c8 / 8 + offset) / 2^10).
  template <Vek32s factor, Vek32s offset>
  static int16x8_t product8(int16x8_t c8) {
    static_assert(W::drop == 10 && 8 * factor < 32768);
    if constexpr (offset == 0) {
      return vqdmulhq_s16(c8, vdupq_n_s16(4 * factor));  // which doubles the product
    } else {
      const int16x4_t f = vdup_n_s16(8 * factor);
      return highHalves<64 * offset>(vmull_s16(vget_low_s16(c8), f),
                                     vmull_s16(vget_high_s16(c8), f));
    }
  }

  static int32x4_t greenProducts8(int16x4_t b8, int16x4_t r8) {
    return vmlal_s16(vmull_s16(b8, vdup_n_s16(8 * m.factor[1][1])), r8,
                     vdup_n_s16(8 * m.factor[1][2]));
  }

  /// (sum + added) >> 16 of the lanes of both. GCC 12 would move the halves side by side.
  template <Vek32s added>
  static int16x8_t highHalves(int32x4_t lower, int32x4_t upper) {
    if constexpr (added != 0) {
      const int32x4_t term = vdupq_n_s32(added);
#if VEK_NEON_BY_NAME
      int16x8_t v;
      asm("vaddhn.i32 %e[v], %q[lower], %q[term]\n\tvaddhn.i32 %f[v], %q[upper], %q[term]"
          : [v] "=&w"(v)
          : [lower] "w"(lower), [upper] "w"(upper), [term] "w"(term));
      return v;
#else
      return vcombine_s16(vaddhn_s32(lower, term), vaddhn_s32(upper, term));
#endif
    }
#if VEK_NEON_BY_NAME
    int16x8_t v;
    asm("vshrn.i32 %e[v], %q[lower], #16\n\tvshrn.i32 %f[v], %q[upper], #16"
        : [v] "=&w"(v)
        : [lower] "w"(lower), [upper] "w"(upper));
    return v;
#else
    return vcombine_s16(vshrn_n_s32(lower, 16), vshrn_n_s32(upper, 16));
#endif
  }

  // ---- Pixels.

  Components components(uint8x8_t y) const {
    if constexpr (hasFraction) {
      const int16x8_t luma =
          vsubq_s16(vreinterpretq_s16_u16(vmull_u8(y, vdup_n_u8(W::luma))), vdupq_n_s16(bias));
      return {vqaddq_s16(luma, red_), vqaddq_s16(luma, green_),
              vqaddq_s16(vqaddq_s16(luma, blueFirst_), blue_)};
    } else {
      const auto sum = [y](int16x8_t chroma) {
        return vreinterpretq_s16_u16(vaddw_u8(vreinterpretq_u16_s16(chroma), y));
      };
      return {sum(red_), sum(green_), sum(blue_)};
    }
  }

  /// Clamped to 0 .. 255.
  static uint8x8_t bytes(int16x8_t sum) {
    if constexpr (hasFraction) return vqshrun_n_s16(sum, 7);
    return vqmovun_s16(sum);
  }

  /// The same in the high bytes of the lanes, with the fraction below them.
  static uint16x8_t highBytes(int16x8_t sum) {
    return hasFraction ? vqshluq_n_s16(sum, 1) : vqshluq_n_s16(sum, 8);
  }

  static uint8x16_t alternateBytes(int16x8_t even, int16x8_t odd) {
    return vreinterpretq_u8_u16(vsriq_n_u16(highBytes(odd), highBytes(even), 8));
  }

  /// 16-bit pixels: a field's top bits are moved down, and the bits above them stay what they were.
  template <class Format>
  static uint16x8_t fields(const Components& c) {
    constexpr bool redIsHigh = Format::rPos != 0;
    constexpr int unused = 16 - Format::rBits - Format::gBits - Format::bBits;
    uint16x8_t pixels = highBytes(redIsHigh ? c.red : c.blue);
    if constexpr (unused != 0) pixels = vshrq_n_u16(pixels, unused != 0 ? unused : 1);
    pixels = vsriq_n_u16(pixels, highBytes(c.green), 16 - Format::gPos - Format::gBits);
    return vsriq_n_u16(pixels, highBytes(redIsHigh ? c.blue : c.red),
                       redIsHigh ? 16 - Format::bBits : 16 - Format::rBits);
  }
};

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();

#endif
