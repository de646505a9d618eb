// The sums of chroma_products.h for pixels of 16 bits, without packing: a sum w y + P has 15 bits, 8
// before and 7 behind the point, and a field is the top bits of it once it is clamped to 0 .. 32767.
//
// Two saturating operations on unsigned 16-bit lanes add the chroma part and clamp. `plus` and `minus`
// have the difference P, and `minus` is at least 32768: w y + plus saturates at 65535, so what is left
// after `minus` is subtracted is at most 32767, and it saturates at 0 from below. Red and green take
// plus = P + 32768 and minus = 32768.
//
// Blue's P may be less than -32768, so plus and minus are chosen by sample. Its product is 256 Cb and
// the floor of a rest; `low`, the part of 256 Cb up to some bound, is left out of both plus and minus.
// Where the first sum saturates Cb is large, so minus is 32768 there and the field is full.
//
// Example: Y = 81, Cb = 90 and Cr = 240 give w y = 149 * 81 = 12069. For red, P = 20492 and plus =
// 53260; the sums are 65329 and 32561, whose top five bits of 15 are 31. For blue, P = floor((2065 *
// -38 - 1192 * 16) / 8) = -12193. The bound of `low` is 2656 and the rest is floor(17 * 90 / 8) = 191,
// so plus = 23040 - 2656 + 191 = 20575 and minus = 35424 - 2656 = 32768, whose difference is P. The
// sums are 32644 and 0, which is the field: the exact sum is -124.
#pragma once

#include "core/color/chroma_products.h"
#include "core/color/pixel_store.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

template <const Matrix& m>
class FieldSums {
  using W = Weights<m>;
  static_assert(W::fractionBits == 7 && W::luma * 255 < 65536);
  static constexpr int sumBits = 15;
  static constexpr Vek32s half = 32768;

  V16u redPlus_, greenPlus_, bluePlus_, blueMinus_;

  static V16u sum(V16u luma, V16u plus, V16u minus) {
    return hn::SaturatedSub(hn::SaturatedAdd(luma, plus), minus);
  }

 public:
  FieldSums(const ChromaLanes& b, const ChromaLanes& r) {
    constexpr Vek32s black = W::template offset<0>, start = black + (half << W::drop);
    static_assert(black == W::template offset<1> && black == W::template offset<2>);
    redPlus_ = hn::BitCast(u16, chromaProduct<W::drop, W::red, start>(r.upper));
    greenPlus_ = hn::BitCast(u16, greenProducts<m, W::drop, start>(b, r));
    constexpr Vek32s centre = (128 * W::blue - black) >> W::drop;
    const V16u cb = hn::BitCast(u16, b.upper);
    const V16u low = hn::Min(cb, filled(u16, centre - half));
    const V16u rest =
        hn::BitCast(u16, timesHigh(b.upper, (W::blue - (256 << W::drop)) << (8 - W::drop)));
    bluePlus_ = hn::SaturatedAdd(hn::Sub(cb, low), rest);
    blueMinus_ = hn::Sub(filled(u16, centre), low);
  }

  /// The luma part of the even or the odd bytes.
  template <bool odd>
  static V16s luma(V8u v) {
    return timesHigh((odd ? oddChroma(v) : evenChroma(v)).upper, W::luma << 8);
  }

  /// Stores a block of pixels from the luma parts and the sums of the even and of the odd ones. With
  /// `byHalves`, the 128-bit blocks of the vectors hold four pairs of pixels for the first half of
  /// the destination, then four for the second one.
  template <class Format, bool byHalves = false>
  static void store(V16s even, V16s odd, const FieldSums& evenSums, const FieldSums& oddSums,
                    Vek8u* dst) {
    const V16s a = evenSums.template pixels<Format>(even), b = oddSums.template pixels<Format>(odd);
    if constexpr (!byHalves) return storeAlternately(a, b, dst);
    hn::StoreU(hn::BitCast(u8, hn::InterleaveLower(s16, a, b)), u8, dst);
    hn::StoreU(hn::BitCast(u8, hn::InterleaveUpper(s16, a, b)), u8, dst + vectorBytes);
  }

 private:
  /// The top bits of the sum in a field of `bits` bits at `position`. The others stay below it.
  template <int bits, int position>
  static V16s moved(V16u v) {
    constexpr int down = sumBits - bits - position;
    return hn::BitCast(s16, down >= 0 ? hn::ShiftRight<(down >= 0 ? down : 0)>(v)
                                      : hn::ShiftLeft<(down < 0 ? -down : 0)>(v));
  }

  template <class Format>
  V16s pixels(V16s luma) const {
    const V16u y = hn::BitCast(u16, luma);
    const V16s red = moved<Format::rBits, Format::rPos>(sum(y, redPlus_, filled(u16, half)));
    const V16s green = moved<Format::gBits, Format::gPos>(sum(y, greenPlus_, filled(u16, half)));
    const V16s blue = moved<Format::bBits, Format::bPos>(sum(y, bluePlus_, blueMinus_));
    const auto field = [](int bits, int position) {
      return filled(s16, ((1 << bits) - 1) << position);
    };
    const V16s low = Format::rPos == 0 ? red : blue, high = Format::rPos == 0 ? blue : red;
    return hn::OrAnd(hn::OrAnd(low, green, field(Format::gBits, Format::gPos)), high,
                     Format::rPos == 0 ? field(Format::bBits, Format::bPos)
                                       : field(Format::rBits, Format::rPos));
  }
};

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();
