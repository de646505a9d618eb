// How the linear filters multiply groups of samples by their coefficients, add the products up and
// scale the sums.
#pragma once

#include "vek/vek.h"

#include <stdint.h>

#include "core/kernel/lanes.h"
#include "image/filter/fir/fir_kernels.h"
#include "image/filter/quotients.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

/// FirScale for sums in 16 signed bits; packing clamps the results to bytes afterwards.
///
/// A shift of k is one rounding multiplication, since (v * 2^(15 - k) + 2^14) >> 15 equals
/// (v + 2^(k - 1)) >> k. Shifts of 16 and more leave nothing of such a sum.
///
/// Any other divisor has a multiplier m = h * 2^16 + l of 32 bits, and (v * m + 2^31) >> 32 is
/// wanted. Sums below 0 give 0, so v is below 2^15. The products v * h and v * l have a high and a
/// low half each. The result is high(v * h) plus a carry, which is 1 if low(v * h) + high(v * l) +
/// 2^15 reaches 2^16. The rounded average of low(v * h) and high(v * l) + 2^15 - 1 is half of that
/// sum, so its top bit is the carry.
///
/// For a divisor of 3 both h and l are 21845. With v = 101 the product v * h is 33 * 2^16 + 43657,
/// and high(v * l) is 33. The average of 43657 and 32800 is 38229, whose top bit is set: 33 + 1 =
/// 34.
class Scaler16 {
 public:
  explicit Scaler16(const FirScale& scale)
      : shift_(scale.shift),
        factor_(hn::Set(s16, shift_ >= 1 && shift_ <= 15 ? static_cast<Vek16s>(1 << (15 - shift_))
                                                         : Vek16s{0})),
        high_(hn::Set(u16, static_cast<Vek16u>(scale.multiplier >> 16))),
        low_(hn::Set(u16, static_cast<Vek16u>(scale.multiplier & 0xFFFF))) {}

  V16s operator()(V16s sums) const {
    if (shift_ == 0) return sums;
    if (shift_ < 32) return hn::MulFixedPoint15(sums, factor_);
    const V16u v = hn::BitCast(u16, hn::Max(sums, hn::Zero(s16)));
    const V16u middle = hn::Add(hn::MulHigh(v, low_), hn::Set(u16, 0x7FFF));
    const V16u carry = hn::ShiftRight<15>(hn::AverageRound(hn::Mul(v, high_), middle));
    return hn::BitCast(s16, hn::Add(hn::MulHigh(v, high_), carry));
  }

 private:
  int shift_;
  V16s factor_;
  V16u high_, low_;
};

/// FirScale for sums in 32 signed bits; packing clamps the results to bytes afterwards.
class Scaler32 {
 public:
  explicit Scaler32(const FirScale& scale)
      : byFloats_(scale.divisor > 1 && scale.divisor <= Quotients::mostDivisor),
        shift_(scale.shift),
        limit_(
            hn::Set(s32, scale.limit < 0x7FFFFFFF ? static_cast<Vek32s>(scale.limit) : 0x7FFFFFFF)),
        factor_(hn::Set(u32, scale.multiplier)),
        half_(hn::Set(u32, scale.shift == 0 ? 0 : Vek32u{1} << ((scale.shift - 1) & 31))),
        quotients_(scale.divisor,
                   scale.shift < 32 || Quotients::roundsUp(scale.multiplier, scale.divisor)) {}

  V32s operator()(V32s sums) const {
    if (byFloats_) return quotients_.of(sums);
    const V32u clamped = hn::BitCast(u32, hn::Min(hn::Max(sums, hn::Zero(s32)), limit_));
    if (shift_ == 32) return hn::BitCast(s32, mulHighRounded(clamped, factor_));
    return hn::BitCast(s32, hn::ShiftRightSame(hn::Add(clamped, half_), shift_));
  }

 private:
  bool byFloats_;
  int shift_;
  V32s limit_;
  V32u factor_, half_;
  Quotients quotients_;
};

inline V8u packScaled(V32s a, V32s b, V32s c, V32s d, const Scaler32& scaler) {
  return packClamped(packClamped(scaler(a), scaler(b)), packClamped(scaler(c), scaler(d)));
}

// A policy `Dots` multiplies groups of `taps` taps and adds the products up. The sums of a vector
// of samples fill `parts` vectors, each with its share of every 128 bits in order, so that packing
// brings the samples back together. Each sample stands beside those of the other taps of its group,
// `tapBytes` bytes from tap to tap, and the coefficients stand alike in the 32 bits that factor()
// puts together. Samples 10 and 20 with coefficients 3 and -1 of 16 bits are the lanes (10, 20) and
// (3, -1), whose dot product 10 is added to the sum. Where `inParts` holds, coefficients of 16 bits
// are taken byte by byte (see ListedTaps).

/// Pairs of taps with coefficients of 16 bits, sums in 32 bits.
struct PairDots32 {
  static constexpr int taps = 2, parts = 4;
  [[maybe_unused]] static constexpr bool inParts = false;
  static constexpr int tapBytes = 2;
  /// NEON adds up in two vectors, x86 in the first alone.
  struct Sum {
    V32s sum, rest;
  };
  using Scaler = Scaler32;

  static Sum zero() { return {hn::Zero(s32), hn::Zero(s32)}; }

  static Vek32u factor(Vek32s coefficient, int tap) {
    return (static_cast<Vek32u>(coefficient) & 0xFFFF) << (16 * tap);
  }
  static void add(Sum& to, V8u samples, Vek32u factors) {
    const V16s both = hn::BitCast(s16, hn::Set(u32, factors));
#if defined(__AVX512VNNI__)
    to.sum = V32s{_mm512_dpwssd_epi32(to.sum.raw, samples.raw, both.raw)};
#else
    to.sum = hn::ReorderWidenMulAccumulate(s32, hn::BitCast(s16, samples), both, to.sum, to.rest);
#endif
  }
  static void interleave(const V8u* tap, V8u* samples) {
    const V8u zero = hn::Zero(u8);
    const V8u low = hn::InterleaveLower(u8, tap[0], tap[1]);
    const V8u high = hn::InterleaveUpper(u8, tap[0], tap[1]);
    samples[0] = hn::InterleaveLower(u8, low, zero);
    samples[1] = hn::InterleaveUpper(u8, low, zero);
    samples[2] = hn::InterleaveLower(u8, high, zero);
    samples[3] = hn::InterleaveUpper(u8, high, zero);
  }
  static V8u scaled(const Sum* sums, const Scaler& scaler) {
    const auto total = [&](int i) { return hn::RearrangeToOddPlusEven(sums[i].sum, sums[i].rest); };
    return packScaled(total(0), total(1), total(2), total(3), scaler);
  }
};

#if defined(__AVX512VNNI__)

/// Fours of taps, the coefficients byte by byte, sums in 32 bits.
struct FourDots32 {
  static constexpr int taps = 4, parts = 4;
  static constexpr bool inParts = true;
  static constexpr int tapBytes = 1;
  /// The type that the instruction is defined with: compilers copy others around it.
  using Sum [[gnu::vector_size(64)]] = Vek32s;
  using Scaler = Scaler32;

  static Sum zero() { return Sum{}; }

  static Vek32u factor(Vek32s coefficient, int tap) {
    return (static_cast<Vek32u>(coefficient) & 0xFF) << (8 * tap);
  }
  static void add(Sum& sum, V8u samples, Vek32u factors) {
    sum = reinterpret_cast<Sum>(_mm512_dpbusd_epi32(reinterpret_cast<__m512i>(sum), samples.raw,
                                                    hn::Set(u32, factors).raw));
  }
  static void interleave(const V8u* tap, V8u* samples) {
    const auto interleavePairs = [&](V8u pairs, V8u next, V8u* fours) {
      const V16s a = hn::BitCast(s16, pairs), b = hn::BitCast(s16, next);
      fours[0] = hn::BitCast(u8, hn::InterleaveLower(s16, a, b));
      fours[1] = hn::BitCast(u8, hn::InterleaveUpper(s16, a, b));
    };
    interleavePairs(hn::InterleaveLower(u8, tap[0], tap[1]),
                    hn::InterleaveLower(u8, tap[2], tap[3]), samples);
    interleavePairs(hn::InterleaveUpper(u8, tap[0], tap[1]),
                    hn::InterleaveUpper(u8, tap[2], tap[3]), samples + 2);
  }
  static V8u scaled(const Sum* sums, const Scaler& scaler) {
    return packScaled(lanesOf(sums[0]), lanesOf(sums[1]), lanesOf(sums[2]), lanesOf(sums[3]),
                      scaler);
  }

 protected:
  static V32s lanesOf(Sum sum) { return V32s{reinterpret_cast<__m512i>(sum)}; }
};

/// The same where sums fit 16 bits.
struct FourDots16 : FourDots32 {
  using Scaler = Scaler16;

  static V8u scaled(const Sum* sums, const Scaler& scaler) {
    return packClamped(scaler(packClamped(lanesOf(sums[0]), lanesOf(sums[1]))),
                       scaler(packClamped(lanesOf(sums[2]), lanesOf(sums[3]))));
  }
};

#else

/// Pairs of taps with coefficients of 8 bits, sums in 16 bits.
struct PairDots16 {
  static constexpr int taps = 2, parts = 2;
  static constexpr bool inParts = false;
  static constexpr int tapBytes = 1;
  using Sum = V16s;
  using Scaler = Scaler16;

  static Sum zero() { return hn::Zero(s16); }

  static Vek32u factor(Vek32s coefficient, int tap) {
    return (static_cast<Vek32u>(coefficient) & 0xFF) * 0x10001u << (8 * tap);
  }
  static void add(Sum& sum, V8u samples, Vek32u factors) {
    sum = hn::Add(sum, sumOfPairs(samples, hn::BitCast(u8, hn::Set(u32, factors))));
  }
  static void interleave(const V8u* tap, V8u* samples) {
    samples[0] = hn::InterleaveLower(u8, tap[0], tap[1]);
    samples[1] = hn::InterleaveUpper(u8, tap[0], tap[1]);
  }
  static V8u scaled(const Sum* sums, const Scaler& scaler) {
    return packClamped(scaler(sums[0]), scaler(sums[1]));
  }
};

#endif

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();
