// How the linear filters multiply groups of samples by their coefficients, add the products up and
// scale the sums.
#pragma once

#include "core/kernel/lanes.h"
#include "image/filter/filter_lanes.h"
#include "image/filter/fir/fir_kernels.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

constexpr hn::ScalableTag<Vek8u> bytes;
constexpr hn::Repartition<Vek16s, decltype(bytes)> words;
constexpr hn::RebindToUnsigned<decltype(words)> uwords;
constexpr hn::Repartition<Vek32s, decltype(bytes)> dwords;
constexpr hn::RebindToUnsigned<decltype(dwords)> udwords;
using VBytes = hn::Vec<decltype(bytes)>;
using VWords = hn::Vec<decltype(words)>;
using VDwords = hn::Vec<decltype(dwords)>;

/// FirScale over sums in words, which packing saturates to bytes afterwards.
class WordScaler {
 public:
  explicit WordScaler(const FirScale& scale)
      : shift_(scale.shift),
        factor_(hn::Set(words, shift_ >= 1 && shift_ <= 15 ? static_cast<Vek16s>(1 << (15 - shift_))
                                                           : Vek16s{0})),
        high_(hn::Set(uwords, static_cast<Vek16u>(scale.multiplier >> 16))),
        low_(hn::Set(uwords, static_cast<Vek16u>(scale.multiplier & 0xFFFF))) {}

  /// A shift of n is a rounding multiplication by 2^-n; 16 and more leave nothing. The product of
  /// a sum below 2^15 with both halves of a multiplier, h 2^16 + l, plus 2^31, is taken in three
  /// words: the average is half of what the middle ones add up to, its top bit the carry.
  VWords operator()(VWords sums) const {
    if (shift_ == 0) return sums;
    if (shift_ < 32) return hn::MulFixedPoint15(sums, factor_);
    const auto v = hn::BitCast(uwords, hn::Max(sums, hn::Zero(words)));
    const auto middle = hn::Add(hn::MulHigh(v, low_), hn::Set(uwords, 0x7FFF));
    const auto carry = hn::ShiftRight<15>(hn::AverageRound(hn::Mul(v, high_), middle));
    return hn::BitCast(words, hn::Add(hn::MulHigh(v, high_), carry));
  }

 private:
  int shift_;
  VWords factor_;
  hn::Vec<decltype(uwords)> high_, low_;
};

/// FirScale over sums in dwords, which packing saturates afterwards.
class DwordScaler {
 public:
  explicit DwordScaler(const FirScale& scale)
      : byFloats_(scale.divisor > 1 && scale.divisor <= Quotients::mostDivisor),
        shift_(scale.shift),
        limit_(hn::Set(dwords,
                       scale.limit < 0x7FFFFFFF ? static_cast<Vek32s>(scale.limit) : 0x7FFFFFFF)),
        factor_(hn::Set(udwords, scale.multiplier)),
        half_(hn::Set(udwords, scale.shift == 0 ? 0 : Vek32u{1} << ((scale.shift - 1) & 31))),
        quotients_(scale.divisor,
                   scale.shift < 32 || Quotients::roundsUp(scale.multiplier, scale.divisor)) {}

  VDwords operator()(VDwords sums) const {
    if (byFloats_) return quotients_.of(sums);
    const auto clamped = hn::BitCast(udwords, hn::Min(hn::Max(sums, hn::Zero(dwords)), limit_));
    if (shift_ == 32) return hn::BitCast(dwords, mulHighRounded(udwords, clamped, factor_));
    return hn::BitCast(dwords, hn::ShiftRightSame(hn::Add(clamped, half_), shift_));
  }

 private:
  bool byFloats_;
  int shift_;
  VDwords limit_;
  hn::Vec<decltype(udwords)> factor_, half_;
  Quotients quotients_;
};

VBytes scaledDwords(VDwords a, VDwords b, VDwords c, VDwords d, const DwordScaler& scaler) {
  return packClamped(hn::ReorderDemote2To(words, scaler(a), scaler(b)),
                     hn::ReorderDemote2To(words, scaler(c), scaler(d)));
}

/// How groups of taps are multiplied and added up: DwordDots pairs with coefficients of 16 bits,
/// sums in dwords. The sums of a vector of samples are `parts` vectors, each with its share of every
/// 128 bits, in order, so that packing brings the samples back together.
struct DwordDots {
  static constexpr int taps = 2, parts = 4;
  /// Whether coefficients are taken byte by byte.
  [[maybe_unused]] static constexpr bool inParts = false;
  static constexpr int tapBytes = 2;  ///< between the taps of a sample in a vector
  /// Some processors add up in two vectors.
  struct Sum {
    VDwords sum, rest;
  };
  using Scaler = DwordScaler;

  static Sum zero() { return {hn::Zero(dwords), hn::Zero(dwords)}; }

  static Vek32u factor(Vek32s coefficient, int tap) {
    return (static_cast<Vek32u>(coefficient) & 0xFFFF) << (16 * tap);
  }
  static void add(Sum& to, VBytes samples, Vek32u factors) {
    const VWords both = hn::BitCast(words, hn::Set(udwords, factors));
#if defined(__AVX512VNNI__)
    to.sum = VDwords{_mm512_dpwssd_epi32(to.sum.raw, samples.raw, both.raw)};
#else
    to.sum =
        hn::ReorderWidenMulAccumulate(dwords, hn::BitCast(words, samples), both, to.sum, to.rest);
#endif
  }
  static void interleave(const VBytes* tap, VBytes* samples) {
    const VBytes zero = hn::Zero(bytes);
    const VBytes low = hn::InterleaveLower(bytes, tap[0], tap[1]);
    const VBytes high = hn::InterleaveUpper(bytes, tap[0], tap[1]);
    samples[0] = hn::InterleaveLower(bytes, low, zero);
    samples[1] = hn::InterleaveUpper(bytes, low, zero);
    samples[2] = hn::InterleaveLower(bytes, high, zero);
    samples[3] = hn::InterleaveUpper(bytes, high, zero);
  }
  static VBytes scaled(const Sum* sums, const Scaler& scaler) {
    const auto total = [&](int i) { return hn::RearrangeToOddPlusEven(sums[i].sum, sums[i].rest); };
    return scaledDwords(total(0), total(1), total(2), total(3), scaler);
  }
};

#if defined(__AVX512VNNI__)

/// Fours, the coefficients byte by byte, sums in dwords.
struct FourDots {
  static constexpr int taps = 4, parts = 4;
  static constexpr bool inParts = true;
  static constexpr int tapBytes = 1;
  /// The type that the instruction is defined with: compilers copy others around it.
  using Sum [[gnu::vector_size(64)]] = Vek32s;
  using Scaler = DwordScaler;

  static Sum zero() { return Sum{}; }

  static Vek32u factor(Vek32s coefficient, int tap) {
    return (static_cast<Vek32u>(coefficient) & 0xFF) << (8 * tap);
  }
  static void add(Sum& sum, VBytes samples, Vek32u factors) {
    sum = reinterpret_cast<Sum>(_mm512_dpbusd_epi32(reinterpret_cast<__m512i>(sum), samples.raw,
                                                    hn::Set(udwords, factors).raw));
  }
  static void interleave(const VBytes* tap, VBytes* samples) {
    const auto interleaveFours = [&](VBytes pairs, VBytes next, VBytes* both) {
      const VWords a = hn::BitCast(words, pairs), b = hn::BitCast(words, next);
      both[0] = hn::BitCast(bytes, hn::InterleaveLower(words, a, b));
      both[1] = hn::BitCast(bytes, hn::InterleaveUpper(words, a, b));
    };
    interleaveFours(hn::InterleaveLower(bytes, tap[0], tap[1]),
                    hn::InterleaveLower(bytes, tap[2], tap[3]), samples);
    interleaveFours(hn::InterleaveUpper(bytes, tap[0], tap[1]),
                    hn::InterleaveUpper(bytes, tap[2], tap[3]), samples + 2);
  }
  static VBytes scaled(const Sum* sums, const Scaler& scaler) {
    return scaledDwords(dwordsOf(sums[0]), dwordsOf(sums[1]), dwordsOf(sums[2]), dwordsOf(sums[3]),
                        scaler);
  }

 protected:
  static VDwords dwordsOf(Sum sum) { return VDwords{reinterpret_cast<__m512i>(sum)}; }
};

/// The same where sums fit words.
struct SmallFourDots : FourDots {
  using Scaler = WordScaler;

  static VBytes scaled(const Sum* sums, const Scaler& scaler) {
    return packClamped(scaler(hn::ReorderDemote2To(words, dwordsOf(sums[0]), dwordsOf(sums[1]))),
                       scaler(hn::ReorderDemote2To(words, dwordsOf(sums[2]), dwordsOf(sums[3]))));
  }
};

#else

/// Pairs with coefficients of 8 bits, sums in words.
struct WordDots {
  static constexpr int taps = 2, parts = 2;
  static constexpr bool inParts = false;
  static constexpr int tapBytes = 1;
  using Sum = VWords;
  using Scaler = WordScaler;

  static Sum zero() { return hn::Zero(words); }

  static Vek32u factor(Vek32s coefficient, int tap) {
    return (static_cast<Vek32u>(coefficient) & 0xFF) * 0x10001u << (8 * tap);
  }
  static void add(Sum& sum, VBytes samples, Vek32u factors) {
    sum = hn::Add(sum, sumOfPairs(samples, hn::BitCast(bytes, hn::Set(udwords, factors))));
  }
  static void interleave(const VBytes* tap, VBytes* samples) {
    samples[0] = hn::InterleaveLower(bytes, tap[0], tap[1]);
    samples[1] = hn::InterleaveUpper(bytes, tap[0], tap[1]);
  }
  static VBytes scaled(const Sum* sums, const Scaler& scaler) {
    return packClamped(scaler(sums[0]), scaler(sums[1]));
  }
};

#endif

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();
