// From YCbCr or YUV to RGB where chroma is shared, or lies in planes: sums of a luma part and of a
// chroma part, which is computed once for all pixels that share it, in 16-bit lanes.
#pragma once

#include "core/color/color_matrix.h"
#include "core/kernel/interleave.h"
#include "core/kernel/lanes.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

/// Bytes, one for each word: as its upper and as its lower byte.
struct WordBytes {
  V16s upper, lower;
};

inline WordBytes evenWordBytes(V8u v) {
  return {hn::ShiftLeft<8>(hn::BitCast(s16, v)), evenBytes(s16, v)};
}
inline WordBytes oddWordBytes(V8u v) {
  return {hn::And(hn::BitCast(s16, v), hn::Set(s16, static_cast<Vek16s>(0xFF00))),
          oddBytes(s16, v)};
}

/// Half a block's bytes.
inline WordBytes loadWordBytes(const Vek8u* src) {
  const auto bytes = hn::LoadU(halfU8, src);
  const V16s lower = hn::PromoteTo(s16, bytes);
#if defined(__AVX512VBMI__)
  static constexpr ByteOrder order = [] {
    ByteOrder o = {};
    for (int i = 0; i < 64; ++i) o.at[i] = static_cast<Vek8u>(i % 2 == 0 ? 32 : i / 2);
    return o;
  }();
  return {V16s{permuted(order, _mm512_zextsi256_si512(bytes.raw))}, lower};
#else
  return {hn::ShiftLeft<8>(lower), lower};
#endif
}

/// The bits that a component's field has in the low (byte 0) or the high byte (1) of a pixel: the
/// top `bits` bits of v at bit `position` of the word.
template <int byte, int bits, int position>
struct FieldByte {
  static constexpr int mask = ((1 << bits) - 1) << position >> 8 * byte & 0xFF;

  /// With other bits beside the field's.
  static V16s of(V8u v) {
    constexpr int left = position - 8 * byte - (8 - bits);
    const hn::RebindToUnsigned<decltype(s16)> lanes;
    const auto words = hn::BitCast(lanes, v);
    return hn::BitCast(s16, left > 0   ? hn::ShiftLeft<(left > 0 ? left : 0)>(words)
                            : left < 0 ? hn::ShiftRight<(left < 0 ? -left : 0)>(words)
                                       : words);
  }
};

/// Bits of `yes` where the mask has ones, else those of `no`.
inline V16s bitsFrom(V16s mask, V16s yes, V16s no) {
#if defined(__AVX512F__)
  return hn::IfVecThenElse(mask, yes, no);
#else
  return hn::Or(hn::And(mask, yes), hn::AndNot(mask, no));
#endif
}

/// In every byte.
inline V16s byteMask(int mask) {
  return hn::Set(s16, static_cast<Vek16s>(mask * 0x101));
}

/// A field keeps the top bits of its component: what remains of the clamped byte is the same as
/// reducing the sum to the field and clamping that. Of a byte's one or two fields the upper one is
/// red's or blue's in the high byte, green's in the low one.
template <int byte, class Format>
V8u packedByte(const Channels& v) {
  using Green = FieldByte<byte, Format::gBits, Format::gPos>;
  constexpr bool isRed = (Format::rPos < Format::bPos) == (byte == 0);
  using Other =
      FieldByte<byte, isRed ? Format::rBits : Format::bBits, isRed ? Format::rPos : Format::bPos>;
  const V16s other = Other::of(isRed ? v.c0 : v.c2), green = Green::of(v.c1);
  V16s all = other;
  if constexpr (Green::mask != 0) all = bitsFrom(byteMask(Other::mask), other, green);
  constexpr int mask = Green::mask | Other::mask;
  return hn::BitCast(u8, mask == 0xFF ? all : hn::And(all, byteMask(mask)));
}

/// Even words and odd words in turn.
inline void storeInTurn(V16s even, V16s odd, Vek8u* out) {
#if defined(__AVX512F__)
  alignas(64) static constexpr Vek64s low[8] = {0, 1, 8, 9, 2, 3, 10, 11};
  alignas(64) static constexpr Vek64s high[8] = {4, 5, 12, 13, 6, 7, 14, 15};
  const __m512i lower = _mm512_unpacklo_epi16(even.raw, odd.raw);
  const __m512i upper = _mm512_unpackhi_epi16(even.raw, odd.raw);
  _mm512_storeu_si512(out, _mm512_permutex2var_epi64(lower, _mm512_load_si512(low), upper));
  _mm512_storeu_si512(out + 64, _mm512_permutex2var_epi64(lower, _mm512_load_si512(high), upper));
#else
  hn::StoreInterleaved2(even, odd, s16, reinterpret_cast<Vek16s*>(out));
#endif
}

/// In each 128-bit lane the bytes of its lower and its upper half in turn.
inline V8u alternateHalves(V8u v) {
  alignas(16) static constexpr Vek8u order[16] = {0, 8,  1, 9,  2, 10, 3, 11,
                                                  4, 12, 5, 13, 6, 14, 7, 15};
  return hn::TableLookupBytes(v, hn::LoadDup128(u8, order));
}

#if defined(__AVX512VBMI__)
/// For each lane of storeThirds() where its pixel's sample lies.
template <int channel>
constexpr ByteOrder alternatingPixelOf = [] {
  ByteOrder order = {};
  for (int i = 0; i < 64; ++i) {
    order.at[(3 * i + channel) % 64] = static_cast<Vek8u>(i / 16 * 16 + i % 2 * 8 + i % 16 / 2);
  }
  return order;
}();
#endif

/// Stores red, green and blue whose 128-bit lanes hold eight even pixels, then the odd ones.
template <class Format>
void storeAlternating(const Channels& v, Vek8u* dst) {
  if constexpr (Format::bytes == 2) {
    const V8u low = packedByte<0, Format>(v), high = packedByte<1, Format>(v);
    storeInTurn(hn::BitCast(s16, hn::InterleaveLower(u8, low, high)),
                hn::BitCast(s16, hn::InterleaveUpper(u8, low, high)), dst);
  } else {
    static_assert(Format::gPos == 1);
    const V8u first = Format::rPos == 0 ? v.c0 : v.c2, third = Format::rPos == 0 ? v.c2 : v.c0;
#if defined(__AVX512VBMI__)
    storeThirds(permuted(alternatingPixelOf<0>, first.raw),
                permuted(alternatingPixelOf<1>, v.c1.raw),
                permuted(alternatingPixelOf<2>, third.raw), dst);
#elif defined(__AVX2__)
    storeChannels<true>({first, v.c1, third}, dst);
#else
    storeChannels({alternateHalves(first), alternateHalves(v.c1), alternateHalves(third)}, dst);
#endif
  }
}

// Luma's factor is weight << drop, so floor((factor * y + c) / 2^n) is
// (weight * y + floor(c / 2^drop)) >> (n - drop), exactly.

template <const Matrix& m>
struct Weights {
  static constexpr Vek32s factor = m.factor[0][0], red = m.factor[0][2], blue = m.factor[2][1];
  static_assert(m.factor[1][0] == factor && m.factor[2][0] == factor);
  static_assert(m.factor[0][1] == 0 && m.factor[2][2] == 0);
  static constexpr int drop = __builtin_ctz(static_cast<unsigned>(factor));
  static constexpr Vek32s luma = factor >> drop;
  static constexpr int fractionBits = m.fractionBits - drop;
  /// What component k gets beside the products of y, Cb - 128 and Cr - 128.
  template <int k>
  static constexpr Vek32s offset = m.offset[k] - factor* m.centre[0];
};

constexpr Vek32s half = 0x8000;

inline V16s wordOf(Vek32s value) {
  return hn::Set(s16, static_cast<Vek16s>(value));
}

inline V16u unsignedOf(Vek32s value) {
  return hn::Set(u16, static_cast<Vek16u>(value));
}

/// The upper words of unsigned products.
inline V16s timesHigh(V16s v, Vek32s factor) {
  return hn::BitCast(s16, hn::MulHigh(hn::BitCast(u16, v), unsignedOf(factor)));
}

/// floor((factor * (v - 128) + offset) / 2^drop) as (floor((256 v + low) * (factor << (8 - bits)) / 2^16)
/// + added) >> (drop - bits).
struct Product {
  int drop;
  Vek32s factor, offset;
  int bits;
  Vek32s low, added;

  /// For every byte, and within 16 bits where there is something left to shift.
  constexpr bool isExact() const {
    for (Vek32s v = 0; v < 256; ++v) {
      const Vek64s product = Vek64s{256 * v + low} * (factor << (8 - bits)) >> 16;
      const Vek64s sum = product + added;
      if (drop != bits && (sum < -32768 || sum > 32767)) return false;
      if (sum >> (drop - bits) != (factor * (v - 128) + offset) >> drop) return false;
    }
    return true;
  }
};

/// The first of a few ways to see to the bits that a product leaves out: nothing, rounding up what is
/// added, or beginning beside the sample.
constexpr Product exactProduct(int drop, Vek32s factor, Vek32s offset) {
  const Vek32s total = offset - 128 * factor;
  for (int bits = drop <= 8 ? drop : 0; bits <= 8 && bits <= drop; ++bits) {
    if (factor << (8 - bits) > 0xFFFF) continue;
    const Vek32s floor = total >> bits, rest = total - (floor << bits);
    const Product ways[] = {{drop, factor, offset, bits, 0, floor},
                            {drop, factor, offset, bits, 0, floor + 1},
                            {drop, factor, offset, bits, 256 * rest / factor + 1, floor}};
    for (const Product& way : ways) {
      if (way.low < 256 && way.isExact()) return way;
    }
  }
  return {};
}

/// Of v << 8.
template <int drop, Vek32s factor, Vek32s offset>
V16s product(V16s v8) {
  constexpr Product p = exactProduct(drop, factor, offset);
  static_assert(p.factor != 0, "no way");
  if constexpr (p.low != 0) v8 = hn::Or(v8, wordOf(p.low));
  const V16s sum = hn::Add(timesHigh(v8, factor << (8 - p.bits)), wordOf(p.added));
  return drop == p.bits ? sum : hn::ShiftRight<drop - p.bits>(sum);
}

/// Green's chroma part. Where both factors leave 0 or both leave 1 of 2^drop, which is -1 of the
/// negative ones, the products of their multiples need no more than the sum of both samples.
template <const Matrix& m, int drop, Vek32s offset>
V16s greenPart(const WordBytes& b, const WordBytes& r) {
  constexpr Vek32s bFactor = -m.factor[1][1], rFactor = -m.factor[1][2], unit = 1 << drop;
  constexpr Vek32s total = offset + 128 * (bFactor + rFactor);
  if constexpr (bFactor % unit == rFactor % unit && bFactor % unit <= 1 && total % unit == 0) {
    const V16s products = hn::Add(timesHigh(b.upper, (bFactor >> drop) << 8),
                                  timesHigh(r.upper, (rFactor >> drop) << 8));
    const V16s part = hn::Sub(wordOf(total >> drop), products);
    if constexpr (bFactor % unit == 0) return part;
    const V16u sum = hn::ShiftRight<7>(  // the average has no fraction to round
        hn::AverageRound(hn::BitCast(u16, b.upper), hn::BitCast(u16, r.upper)));
    return hn::Sub(part,
                   hn::BitCast(s16, hn::ShiftRight<drop>(hn::Add(sum, unsignedOf(unit - 1)))));
  } else {
    const auto sum = [](V16s pairs) {
      return hn::ShiftRight<drop>(
          plusDot(hn::Set(s32, total), pairs, pairOfFactors(-bFactor, -rFactor)));
    };
    return packClamped(sum(hn::InterleaveLower(s16, b.lower, r.lower)),
                       sum(hn::InterleaveUpper(s16, b.lower, r.lower)));
  }
}

/// Sums for pixels of three bytes, and of 16 bits where luma is added as it is: bytes, clamped as they
/// are packed.
template <const Matrix& m>
class ByteSums {
  using W = Weights<m>;
  /// What the luma part is too large by for 16 bits; the chroma parts have it.
  static constexpr Vek32s bias = W::luma * 255 > 32767 ? W::luma * 255 - 32767 : 0;
  /// Blue's chroma leaves 16 bits where luma has fractional ones. It is added in two steps then: a
  /// sum that saturates in the first one is beyond 0 .. 255 by far and stays there.
  static constexpr bool twoSteps = W::luma > 1;
  template <int k>
  static constexpr Vek32s start = W::template offset<k> + (bias << W::drop);

  V16s red_, green_, blue_, blueFirst_;

 public:
  ByteSums(const WordBytes& b, const WordBytes& r) {
    red_ = product<W::drop, W::red, start<0>>(r.upper);
    green_ = greenPart<m, W::drop, start<1>>(b, r);
    if constexpr (twoSteps) {
      blueFirst_ = hn::Xor(b.upper, wordOf(half));  // 256 * (Cb - 128)
      blue_ = product<W::drop, W::blue - (256 << W::drop), start<2>>(b.upper);
    } else {
      blue_ = product<W::drop, W::blue, start<2>>(b.upper);
    }
  }

  /// The luma part of the even or the odd bytes.
  template <bool odd>
  static V16s luma(V8u v) {
    const V16s y = odd ? oddBytes(s16, v) : evenBytes(s16, v);
    return W::luma == 1 ? y : hn::Sub(hn::Mul(y, wordOf(W::luma)), wordOf(bias));
  }

  template <class Format, bool byBlocks = false>
  static void store(V16s even, V16s odd, const ByteSums& evenSums, const ByteSums& oddSums,
                    Vek8u* dst) {
    static_assert(!byBlocks);
    const auto bytes = [&]<int k>() {
      return packClamped(evenSums.template component<k>(even), oddSums.template component<k>(odd));
    };
    storeAlternating<Format>({bytes.template operator()<0>(), bytes.template operator()<1>(),
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

/// Sums for pixels of 16 bits, in unsigned lanes with 15 bits: `plus` is added and `minus`, at least
/// 32768, subtracted. Both saturate, which clamps the sum to the top of every field and to 0.
template <const Matrix& m>
class FieldSums {
  using W = Weights<m>;
  static_assert(W::fractionBits == 7 && W::luma * 255 < 65536);
  static constexpr int sumBits = 15;

  using V = V16u;
  V red_, green_, blue_, blueMinus_;

  static V sum(V luma, V plus, V minus) {
    return hn::SaturatedSub(hn::SaturatedAdd(luma, plus), minus);
  }

 public:
  FieldSums(const WordBytes& b, const WordBytes& r) {
    constexpr Vek32s black = W::template offset<0>, start = black + (half << W::drop);
    static_assert(black == W::template offset<1> && black == W::template offset<2>);
    red_ = hn::BitCast(u16, product<W::drop, W::red, start>(r.upper));
    green_ = hn::BitCast(u16, greenPart<m, W::drop, start>(b, r));
    // 256 Cb + floor(rest Cb) is what blue gets from Cb; all but `low` of it is added. That leaves at
    // least 32768 to subtract.
    constexpr Vek32s centre = (128 * W::blue - black) >> W::drop;
    const V cb = hn::BitCast(u16, b.upper);
    const V low = hn::Min(cb, unsignedOf(centre - half));
    const V rest =
        hn::BitCast(u16, timesHigh(b.upper, (W::blue - (256 << W::drop)) << (8 - W::drop)));
    blue_ = hn::SaturatedAdd(hn::Sub(cb, low), rest);
    blueMinus_ = hn::Sub(unsignedOf(centre), low);
  }

  /// The luma part of the even or the odd bytes.
  template <bool odd>
  static V16s luma(V8u v) {
    return timesHigh((odd ? oddWordBytes(v) : evenWordBytes(v)).upper, W::luma << 8);
  }

  /// `byBlocks` if the 128-bit blocks of the vectors hold four pairs of pixels for the first half of
  /// the destination, then four for the second one.
  template <class Format, bool byBlocks = false>
  static void store(V16s even, V16s odd, const FieldSums& evenSums, const FieldSums& oddSums,
                    Vek8u* dst) {
    const V16s a = evenSums.template pixels<Format>(even), b = oddSums.template pixels<Format>(odd);
    if constexpr (!byBlocks) return storeInTurn(a, b, dst);
    hn::StoreU(hn::BitCast(u8, hn::InterleaveLower(s16, a, b)), u8, dst);
    hn::StoreU(hn::BitCast(u8, hn::InterleaveUpper(s16, a, b)), u8, dst + vectorBytes);
  }

 private:
  /// The top of the sum's bits at the top of the `bits` bits at `position`; what the field does not
  /// hold stays beneath it.
  template <int bits, int position>
  static V16s moved(V v) {
    constexpr int down = sumBits - bits - position;
    return hn::BitCast(s16, down >= 0 ? hn::ShiftRight<(down >= 0 ? down : 0)>(v)
                                      : hn::ShiftLeft<(down < 0 ? -down : 0)>(v));
  }

  template <class Format>
  V16s pixels(V16s luma) const {
    const V y = hn::BitCast(u16, luma);
    const V16s red = moved<Format::rBits, Format::rPos>(sum(y, red_, unsignedOf(half)));
    const V16s green = moved<Format::gBits, Format::gPos>(sum(y, green_, unsignedOf(half)));
    const V16s blue = moved<Format::bBits, Format::bPos>(sum(y, blue_, blueMinus_));
    const auto field = [](int bits, int position) { return wordOf(((1 << bits) - 1) << position); };
    const V16s low = Format::rPos == 0 ? red : blue, high = Format::rPos == 0 ? blue : red;
    return hn::OrAnd(hn::OrAnd(low, green, field(Format::gBits, Format::gPos)), high,
                     Format::rPos == 0 ? field(Format::bBits, Format::bPos)
                                       : field(Format::rBits, Format::rPos));
  }
};

template <const Matrix& m, class Format, bool fields = Format::bytes == 2 && (Weights<m>::luma > 1)>
struct SumsFor {
  using Type = ByteSums<m>;
};
template <const Matrix& m, class Format>
struct SumsFor<m, Format, true> {
  using Type = FieldSums<m>;
};

/// For a block of pixels: Sums(Cb, Cr) for the even and for the odd ones,
/// Sums::luma<odd>(bytes), Sums::store<Format>(luma parts, sums, dst).
template <const Matrix& m, class Format>
using Sums = typename SumsFor<m, Format>::Type;

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();
