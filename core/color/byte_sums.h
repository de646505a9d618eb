// The sums of chroma_products.h for pixels of three bytes, and for pixels of 16 bits where luma is
// added as it is. They are signed; packing the shifted sums into bytes clamps them.
//
// The luma part w y may be larger than 32767: 149 * 255 is 37995. It is kept too small by `bias` then,
// here 5228, and the chroma parts are too large by as much.
//
// Example: Y = 81, Cb = 90 and Cr = 240 give the luma part 149 * 81 - 5228 = 6841. Red has P + 5228 =
// 20492 + 5228 = 25720 from chroma, and (6841 + 25720) >> 7 = 254.
#pragma once

#include "core/color/chroma_products.h"
#include "core/color/pixel_store.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

template <const Matrix& m>
class ByteSums {
  using W = Weights<m>;
  static constexpr Vek32s bias = W::luma * 255 > 32767 ? W::luma * 255 - 32767 : 0;
  /// Blue's chroma part leaves 16 bits where luma has fractional bits: (2065 * 127 - 1192 * 16) / 8 +
  /// 5228 is 35625. It is added in two steps then, first 256 (Cb - 128), then the rest of the product.
  /// Where the first sum saturates, the exact one is beyond 0 .. 255 by so much that it stays there.
  static constexpr bool twoSteps = W::luma > 1;
  template <int k>
  static constexpr Vek32s start = W::template offset<k> + (bias << W::drop);

  V16s red_, green_, blue_, blueFirst_;

 public:
  ByteSums(const ChromaLanes& b, const ChromaLanes& r) {
    red_ = chromaProduct<W::drop, W::red, start<0>>(r.upper);
    green_ = greenProducts<m, W::drop, start<1>>(b, r);
    if constexpr (twoSteps) {
      blueFirst_ = hn::Xor(b.upper, filled(s16, 0x8000));  // 256 (Cb - 128)
      blue_ = chromaProduct<W::drop, W::blue - (256 << W::drop), start<2>>(b.upper);
    } else {
      blue_ = chromaProduct<W::drop, W::blue, start<2>>(b.upper);
    }
  }

  /// The luma part of the even or the odd bytes.
  template <bool odd>
  static V16s luma(V8u v) {
    const V16s y = odd ? oddBytes(s16, v) : evenBytes(s16, v);
    return W::luma == 1 ? y : hn::Sub(hn::Mul(y, filled(s16, W::luma)), filled(s16, bias));
  }

  /// Stores a block of pixels from the luma parts and the sums of the even and of the odd ones.
  template <class Format, bool byHalves = false>
  static void store(V16s even, V16s odd, const ByteSums& evenSums, const ByteSums& oddSums,
                    Vek8u* dst) {
    static_assert(!byHalves);
    const auto bytes = [&]<int k>() {
      return packClamped(evenSums.template component<k>(even), oddSums.template component<k>(odd));
    };
    storeEvenFirst<Format>({bytes.template operator()<0>(), bytes.template operator()<1>(),
                            bytes.template operator()<2>()},
                           dst);
  }

 private:
  template <int k>
  V16s component(V16s luma) const {
    if constexpr (k == 2 && twoSteps) luma = hn::SaturatedAdd(luma, blueFirst_);
    const V16s sum = hn::SaturatedAdd(luma, k == 0 ? red_ : k == 1 ? green_ : blue_);
    return W::fractionBits == 0 ? sum : hn::ShiftRight<W::fractionBits>(sum);
  }
};

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();
