// The chroma part of a conversion to RGB, exactly, in 16-bit lanes.
//
// A component of RGB is (f (y - c) + g (Cb - 128) + h (Cr - 128) + offset) >> n, clamped, where all
// three components have the same factor f of luma. Write f as w << d with an odd w. The product of f
// is then a multiple of 2^d, so the rest of the sum can be shifted by d bits on its own:
//
//   (w y + P) >> (n - d)  with  P = floor((g (Cb - 128) + h (Cr - 128) + offset - f c) / 2^d)
//
// P depends on chroma alone. It is computed once for all pixels that share the chroma sample, and
// after it an addition and a shift are left for each component of a pixel.
//
// Example: red is (1192 (Y - 16) + 1634 (Cr - 128)) >> 10, and 1192 is 149 << 3. For Y = 81 and Cr =
// 240 it is (77480 + 183008) >> 10 = 254. Here P is (1634 * 112 - 1192 * 16) >> 3 = 20492 and red is
// (149 * 81 + 20492) >> 7 = 32561 >> 7 = 254.
#pragma once

#include "core/color/color_matrix.h"
#include "core/kernel/interleave.h"
#include "core/kernel/lanes.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

/// One chroma sample c in each 16-bit lane, in both forms that products start from.
struct ChromaLanes {
  V16s upper;  ///< c << 8
  V16s lower;  ///< c
};

inline ChromaLanes evenChroma(V8u v) {
  return {hn::ShiftLeft<8>(hn::BitCast(s16, v)), evenBytes(s16, v)};
}
inline ChromaLanes oddChroma(V8u v) {
  return {hn::And(hn::BitCast(s16, v), filled(s16, 0xFF00)), oddBytes(s16, v)};
}

/// Half as many bytes as a vector has.
inline ChromaLanes loadChroma(const Vek8u* src) {
  const auto bytes = hn::LoadU(halfU8, src);
  const V16s lower = hn::PromoteTo(s16, bytes);
#if defined(__AVX512VBMI__)
  // One permutation: byte 32, which is 0, under every sample.
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

/// What the explanation above calls f, w, d and n - d, and the factors of chroma that red and blue
/// have. Red does not depend on Cb, nor blue on Cr.
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

/// The upper 16 bits of the unsigned products.
inline V16s timesHigh(V16s v, Vek32s factor) {
  return hn::BitCast(s16, hn::MulHigh(hn::BitCast(u16, v), filled(u16, factor)));
}

/// How floor((factor * (c - 128) + offset) / 2^drop) is computed for a chroma sample c: as
///
///   (floor((256 c + low) * (factor << (8 - bits)) / 2^16) + added) >> (drop - bits)
///
/// The quotient by 2^16 is the upper half of a 16-bit product of c << 8. With low = 0 it is
/// floor(factor * c / 2^bits).
struct ChromaProduct {
  int drop;
  Vek32s factor, offset;
  int bits;
  Vek32s low, added;

  /// Whether this is right for every sample. The sum must fit 16 bits where a shift follows it;
  /// elsewhere its low 16 bits are all that is wanted.
  constexpr bool isExact() const {
    for (Vek32s c = 0; c < 256; ++c) {
      const Vek64s product = Vek64s{256 * c + low} * (factor << (8 - bits)) >> 16;
      const Vek64s sum = product + added;
      if (drop != bits && (sum < -32768 || sum > 32767)) return false;
      if (sum >> (drop - bits) != (factor * (c - 128) + offset) >> drop) return false;
    }
    return true;
  }
};

/// A way that is exact, or one whose factor is 0 if none is found. With total = offset - 128 * factor
/// the exact sum is (factor * c + total) / 2^bits before it is floored. The product and the total are
/// floored each for itself instead, which loses a carry where their fractions add up to 1 or more.
/// There are three ways to account for it, tried in this order: nothing is done, since no sample needs
/// it; the total is rounded up; the fraction of the total is multiplied along as `low`.
constexpr ChromaProduct exactProduct(int drop, Vek32s factor, Vek32s offset) {
  const Vek32s total = offset - 128 * factor;
  for (int bits = drop <= 8 ? drop : 0; bits <= 8 && bits <= drop; ++bits) {
    if (factor << (8 - bits) > 0xFFFF) continue;
    const Vek32s floor = total >> bits, rest = total - (floor << bits);
    const ChromaProduct ways[] = {{drop, factor, offset, bits, 0, floor},
                                  {drop, factor, offset, bits, 0, floor + 1},
                                  {drop, factor, offset, bits, 256 * rest / factor + 1, floor}};
    for (const ChromaProduct& way : ways) {
      if (way.low < 256 && way.isExact()) return way;
    }
  }
  return {};
}

/// floor((factor * (c - 128) + offset) / 2^drop) from c << 8; where it leaves 16 bits, its low ones.
template <int drop, Vek32s factor, Vek32s offset>
V16s chromaProduct(V16s upper) {
  constexpr ChromaProduct p = exactProduct(drop, factor, offset);
  static_assert(p.factor != 0, "no exact way is known");
  if constexpr (p.low != 0) upper = hn::Or(upper, filled(s16, p.low));
  const V16s sum = hn::Add(timesHigh(upper, factor << (8 - p.bits)), filled(s16, p.added));
  return drop == p.bits ? sum : hn::ShiftRight<drop - p.bits>(sum);
}

/// The same of both products in green, whose factors are negative: floor((total - B b - R r) / 2^drop)
/// with the samples b and r and the positive factors B and R. If B and R both leave e = 0 or both e =
/// 1 when they are divided by 2^drop, and the total leaves 0, this is
///
///   total / 2^drop - floor(B / 2^drop) b - floor(R / 2^drop) r - ceil(e (b + r) / 2^drop)
///
/// Example: 401 = 50 * 8 + 1 and 833 = 104 * 8 + 1, and the total of ycbcrToRgb is 138880 = 17360 * 8
/// (and a multiple of 8 more, where the caller's offset is larger than that of the matrix). For b = 90 and r = 240, (138880 - 401 * 90 - 833 * 240) >> 3 is -97130 >> 3 = -12142, and 17360 -
/// 50 * 90 - 104 * 240 - ceil(330 / 8) is 17360 - 4500 - 24960 - 42 = -12142.
template <const Matrix& m, int drop, Vek32s offset>
V16s greenProducts(const ChromaLanes& b, const ChromaLanes& r) {
  constexpr Vek32s bFactor = -m.factor[1][1], rFactor = -m.factor[1][2], unit = 1 << drop;
  constexpr Vek32s total = offset + 128 * (bFactor + rFactor);
  if constexpr (bFactor % unit == rFactor % unit && bFactor % unit <= 1 && total % unit == 0) {
    const V16s products = hn::Add(timesHigh(b.upper, (bFactor >> drop) << 8),
                                  timesHigh(r.upper, (rFactor >> drop) << 8));
    const V16s part = hn::Sub(filled(s16, total >> drop), products);
    if constexpr (bFactor % unit == 0) return part;
    // b + r from the average of 256 b and 256 r, which fits 16 bits and is never rounded.
    const V16u sum =
        hn::ShiftRight<7>(hn::AverageRound(hn::BitCast(u16, b.upper), hn::BitCast(u16, r.upper)));
    const V16u roundedUp = hn::ShiftRight<drop>(hn::Add(sum, filled(u16, unit - 1)));
    return hn::Sub(part, hn::BitCast(s16, roundedUp));
  } else {
    const auto sum = [](V16s pairs) {
      return hn::ShiftRight<drop>(
          plusDot(hn::Set(s32, total), pairs, pairOfFactors(-bFactor, -rFactor)));
    };
    return packClamped(sum(hn::InterleaveLower(s16, b.lower, r.lower)),
                       sum(hn::InterleaveUpper(s16, b.lower, r.lower)));
  }
}

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();
