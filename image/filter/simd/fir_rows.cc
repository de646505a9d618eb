#include "image/filter/fir_rows.h"

#include "image/filter/cover.h"
#include "image/filter/fir_body.h"

#if VEK_HAVE_HIGHWAY

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

constexpr hn::ScalableTag<Vek16s> words;
constexpr hn::Rebind<Vek8u, decltype(words)> bytes;
constexpr hn::Half<decltype(words)> halfWords;
constexpr hn::Repartition<Vek32s, decltype(words)> dwords;
constexpr hn::Repartition<Vek32u, decltype(words)> udwords;
using VWords = hn::Vec<decltype(words)>;
using VDwords = hn::Vec<decltype(dwords)>;

/// Vectors of words that a block of pixels fills: enough sums to hide the latency of their updates.
constexpr int parts = 4;

VWords loadSamples(const Vek8u* from) {
  return hn::PromoteTo(words, hn::LoadU(bytes, from));
}

/// FirScale over lanes of 32 bits. A limit beyond 2^31 - 1 cannot be reached.
class Scaler {
 public:
  explicit Scaler(const FirScale& scale)
      : limit_(hn::Set(dwords,
                       scale.limit < 0x7FFFFFFF ? static_cast<Vek32s>(scale.limit) : 0x7FFFFFFF)),
        factor_(hn::Set(udwords, scale.multiplier)),
        half_(hn::Set(udwords, scale.shift == 0 ? 0 : Vek32u{1} << ((scale.shift - 1) & 31))),
        shift_(scale.shift) {}

  /// 0..255 in each lane.
  VDwords operator()(VDwords sums) const {
    const auto clamped = hn::BitCast(udwords, hn::Min(hn::Max(sums, hn::Zero(dwords)), limit_));
    if (shift_ == 32) return hn::BitCast(dwords, mulHighRounded(udwords, clamped, factor_));
    return hn::BitCast(dwords, hn::ShiftRightSame(hn::Add(clamped, half_), shift_));
  }

 private:
  VDwords limit_;
  hn::Vec<decltype(udwords)> factor_, half_;
  int shift_;
};

/// Sums of up to 2^15 - 1, before saturation to 255. With the rounding term of a shift of up to 15
/// they still fit unsigned words.
VWords scaleWords(VWords sums, const FirScale& scale, const Scaler& scaler) {
  constexpr hn::RebindToUnsigned<decltype(words)> uwords;
  if (scale.shift == 0) return sums;
  if (scale.shift <= 15) {
    const auto half = hn::Set(words, static_cast<Vek16s>(1 << (scale.shift - 1)));
    const auto rounded = hn::Add(hn::Max(sums, hn::Zero(words)), half);
    return hn::BitCast(words, hn::ShiftRightSame(hn::BitCast(uwords, rounded), scale.shift));
  }
  const VDwords low = scaler(hn::PromoteTo(dwords, hn::LowerHalf(halfWords, sums)));
  const VDwords high = scaler(hn::PromoteTo(dwords, hn::UpperHalf(halfWords, sums)));
  return hn::Combine(words, hn::DemoteTo(halfWords, high), hn::DemoteTo(halfWords, low));
}

/// sum |K| * 255 < 2^15: all arithmetic in words.
void sums16(const Vek8u* src, const FirTaps& taps, const FirScale& scale, ptrdiff_t n, Vek8u* dst) {
  const ptrdiff_t lanes = static_cast<ptrdiff_t>(hn::Lanes(words));
  if (n < parts * lanes) return firRow<Vek32s>(src, taps, scale, n, dst);
  const Scaler scaler(scale);
  coverRow(n, parts * lanes, [&](ptrdiff_t x) {
    VWords sums[parts];
    for (VWords& s : sums) s = hn::Zero(words);
    const Vek32s* coefficient = taps.last;
    for (ptrdiff_t o = 0; o < taps.outer; ++o) {
      const Vek8u* at = src + x + o * taps.outerStep;
      for (ptrdiff_t k = 0; k < taps.inner; ++k, at += taps.innerStep) {
        const VWords factor = hn::Set(words, static_cast<Vek16s>(*coefficient--));
        for (int p = 0; p < parts; ++p) {
          sums[p] = hn::Add(sums[p], hn::Mul(loadSamples(at + p * lanes), factor));
        }
      }
    }
    for (int p = 0; p < parts; ++p) {
      hn::StoreU(hn::DemoteTo(bytes, scaleWords(sums[p], scale, scaler)), bytes,
                 dst + x + p * lanes);
    }
  });
}

/// Sums of pairs of products in lanes of 32 bits: pixels are interleaved with those of the next
/// tap, within each 128-bit block, and the final packing puts them back in order.
class PairSums {
 public:
  void add(VWords samples, VWords next, VWords factors) {
    low_ = hn::ReorderWidenMulAccumulate(dwords, hn::InterleaveLower(words, samples, next), factors,
                                         low_, lowRest_);
    high_ = hn::ReorderWidenMulAccumulate(dwords, hn::InterleaveUpper(words, samples, next),
                                          factors, high_, highRest_);
  }

  VWords scaled(const Scaler& scaler) const {
    return hn::ReorderDemote2To(words, scaler(hn::RearrangeToOddPlusEven(low_, lowRest_)),
                                scaler(hn::RearrangeToOddPlusEven(high_, highRest_)));
  }

 private:
  VDwords low_ = hn::Zero(dwords), lowRest_ = hn::Zero(dwords);
  VDwords high_ = hn::Zero(dwords), highRest_ = hn::Zero(dwords);
};

VWords factorPair(Vek32s first, Vek32s second) {
  const Vek32u pair = (static_cast<Vek32u>(second) << 16) | (static_cast<Vek32u>(first) & 0xFFFF);
  return hn::BitCast(words, hn::Set(udwords, pair));
}

/// sum |K| * 255 < 2^31.
void sums32(const Vek8u* src, const FirTaps& taps, const FirScale& scale, ptrdiff_t n, Vek8u* dst) {
  constexpr int pairParts = 2;
  const ptrdiff_t lanes = static_cast<ptrdiff_t>(hn::Lanes(words));
  if (n < pairParts * lanes) return firRow<Vek32s>(src, taps, scale, n, dst);
  const Scaler scaler(scale);
  coverRow(n, pairParts * lanes, [&](ptrdiff_t x) {
    PairSums sums[pairParts];
    const Vek32s* coefficient = taps.last;
    for (ptrdiff_t o = 0; o < taps.outer; ++o) {
      const Vek8u* at = src + x + o * taps.outerStep;
      ptrdiff_t k = 0;
      for (; k + 1 < taps.inner; k += 2, at += 2 * taps.innerStep, coefficient -= 2) {
        const VWords factors = factorPair(coefficient[0], coefficient[-1]);
        for (int p = 0; p < pairParts; ++p) {
          sums[p].add(loadSamples(at + p * lanes), loadSamples(at + taps.innerStep + p * lanes),
                      factors);
        }
      }
      if (k < taps.inner) {
        const VWords factors = factorPair(*coefficient--, 0);
        for (int p = 0; p < pairParts; ++p) {
          sums[p].add(loadSamples(at + p * lanes), hn::Zero(words), factors);
        }
      }
    }
    for (int p = 0; p < pairParts; ++p) {
      hn::StoreU(hn::DemoteTo(bytes, sums[p].scaled(scaler)), bytes, dst + x + p * lanes);
    }
  });
}

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();

#else

namespace vek::VEK_LEVEL {
namespace {
constexpr FirRow sums16 = firRow<Vek32s>, sums32 = firRow<Vek32s>;
}
}  // namespace vek::VEK_LEVEL

#endif

namespace vek::VEK_LEVEL {

constexpr FirRows firRows = {sums16, sums32, firRow<int64_t>};

}  // namespace vek::VEK_LEVEL
