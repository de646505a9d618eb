#include "image/filter/fir_rows.h"

#include "image/filter/cover.h"
#include "image/filter/fir_body.h"
#include "image/filter/unrolled.h"

#if VEK_HAVE_HIGHWAY

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

constexpr hn::ScalableTag<Vek8u> bytes;
constexpr hn::Repartition<Vek16s, decltype(bytes)> words;
constexpr hn::RebindToUnsigned<decltype(words)> uwords;
constexpr hn::Repartition<Vek32s, decltype(bytes)> dwords;
constexpr hn::RebindToUnsigned<decltype(dwords)> udwords;
constexpr hn::RebindToFloat<decltype(dwords)> floats;
using VBytes = hn::Vec<decltype(bytes)>;
using VWords = hn::Vec<decltype(words)>;
using VDwords = hn::Vec<decltype(dwords)>;

constexpr ptrdiff_t vectorBytes = static_cast<ptrdiff_t>(hn::MaxLanes(bytes));

/// Calls body(where, factor) for `count` taps at a time, in order; what the last group lacks are
/// taps in the place of the last one with a coefficient of 0.
template <int count, class Body>
void forEachTaps(const FirTaps& taps, Body body) {
  const Vek32s* coefficient = taps.last;
  ptrdiff_t row = 0, at = 0, column = 0;
  for (ptrdiff_t rest = taps.inner * taps.outer; rest > 0; rest -= count) {
    ptrdiff_t where[count];
    Vek32s factor[count];
    for (int i = 0; i < count; ++i) {
      where[i] = at;
      factor[i] = i < rest ? *coefficient : 0;
      if (i + 1 >= rest) continue;
      --coefficient;
      at += taps.innerStep;
      if (++column == taps.inner) {
        column = 0;
        row += taps.outerStep;
        at = row;
      }
    }
    body(where, factor);
  }
}

/// The taps by groups as Sums takes them, found once for a region.
template <class Sums>
class ListedTaps {
 public:
  static constexpr ptrdiff_t most = 128;  ///< taps

  explicit ListedTaps(const FirTaps& taps) {
    forEachTaps<Sums::taps>(taps, [&](const auto& where, const auto& factor) {
      Group& group = groups_[size_++];
      for (int i = 0; i < Sums::taps; ++i) group.where[i] = where[i];
      group.factors = Sums::pack(factor);
    });
  }

  template <class Body>
  void forEach(Body body) const {
    for (const Group* g = groups_; g != groups_ + size_; ++g) body(g->where, g->factors);
  }

 private:
  struct Group {
    ptrdiff_t where[Sums::taps];
    Vek32s factors;
  };
  ptrdiff_t size_ = 0;
  Group groups_[most / Sums::taps];
};

/// The same for kernels of any size, found anew each time.
template <class Sums>
struct WalkedTaps {
  const FirTaps& taps;

  template <class Body>
  void forEach(Body body) const {
    forEachTaps<Sums::taps>(
        taps, [&](const auto& where, const auto& factor) { body(where, Sums::pack(factor)); });
  }
};

/// Sums of the products of each two bytes, unsigned samples and signed factors, that fit 16 bits.
VWords mulPairs(VBytes samples, VWords factors) {
#if HWY_TARGET <= HWY_AVX3 && HWY_ARCH_X86
  return VWords{_mm512_maddubs_epi16(samples.raw, factors.raw)};
#elif HWY_TARGET <= HWY_AVX2 && HWY_ARCH_X86
  return VWords{_mm256_maddubs_epi16(samples.raw, factors.raw)};
#else
  const auto pairs = hn::BitCast(uwords, samples);
  const auto first = hn::BitCast(words, hn::And(pairs, hn::Set(uwords, 0xFF)));
  const auto second = hn::BitCast(words, hn::ShiftRight<8>(pairs));
  return hn::Add(hn::Mul(first, hn::ShiftRight<8>(hn::ShiftLeft<8>(factors))),
                 hn::Mul(second, hn::ShiftRight<8>(factors)));
#endif
}

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

/// Below 2^31: Highway's conversion would see to values beyond.
VDwords truncated(hn::Vec<decltype(floats)> v) {
#if HWY_TARGET <= HWY_AVX3 && HWY_ARCH_X86
  return VDwords{_mm512_cvttps_epi32(v.raw)};
#elif HWY_TARGET <= HWY_AVX2 && HWY_ARCH_X86
  return VDwords{_mm256_cvttps_epi32(v.raw)};
#else
  return hn::ConvertTo(dwords, v);
#endif
}

/// FirScale over sums in dwords, which packing saturates afterwards.
class DwordScaler {
 public:
  explicit DwordScaler(const FirScale& scale)
      : byFloats_(scale.divisor > 1 && scale.divisor <= mostForFloats),
        shift_(scale.shift),
        limit_(hn::Set(dwords,
                       scale.limit < 0x7FFFFFFF ? static_cast<Vek32s>(scale.limit) : 0x7FFFFFFF)),
        factor_(hn::Set(udwords, scale.multiplier)),
        half_(hn::Set(udwords, scale.shift == 0 ? 0 : Vek32u{1} << ((scale.shift - 1) & 31))),
        ratio_(hn::Set(floats, 1 / static_cast<float>(scale.divisor))) {
    // Whether the multiplier is above 2^32 / divisor: then halves round up.
    const Vek32u excess = scale.multiplier * static_cast<Vek32u>(scale.divisor);
    const float quarter = 0.25f / static_cast<float>(scale.divisor);
    const bool up = scale.shift < 32 || excess < 0x80000000u;
    offset_ = hn::Set(floats, up ? 0.5f + quarter : 0.5f - quarter);
  }

  /// Up to a divisor of 4096 the sums that matter are exact as floats, and quotients are in error
  /// by less than 2^-15, while they are halves or at least 1 / (2 divisor) away from halves: a
  /// quarter of 1 / divisor decides halves and nothing else.
  VDwords operator()(VDwords sums) const {
    if (byFloats_) {
      return truncated(hn::MulAdd(hn::ConvertTo(floats, sums), ratio_, offset_));
    }
    const auto clamped = hn::BitCast(udwords, hn::Min(hn::Max(sums, hn::Zero(dwords)), limit_));
    if (shift_ == 32) return hn::BitCast(dwords, mulHighRounded(udwords, clamped, factor_));
    return hn::BitCast(dwords, hn::ShiftRightSame(hn::Add(clamped, half_), shift_));
  }

 private:
  static constexpr int mostForFloats = 4096;

  bool byFloats_;
  int shift_;
  VDwords limit_;
  hn::Vec<decltype(udwords)> factor_, half_;
  hn::Vec<decltype(floats)> ratio_, offset_;
};

/// The sums of a vector of samples in words. Samples are interleaved with those of the next tap
/// within each 128-bit block, and packing puts them back in order.
struct PairsInWords {
  static constexpr int taps = 2;
  using Scaler = WordScaler;

  static Vek32s pack(const Vek32s (&factor)[2]) {
    return static_cast<Vek32s>((static_cast<Vek32u>(factor[0]) & 0xFF) * 0x10001 +
                               (static_cast<Vek32u>(factor[1]) & 0xFF) * 0x1000100);
  }
  void add(const Vek8u* src, const ptrdiff_t (&where)[2], VDwords packed) {
    const VBytes a = hn::LoadU(bytes, src + where[0]), b = hn::LoadU(bytes, src + where[1]);
    const VWords factors = hn::BitCast(words, packed);
    low_ = hn::Add(low_, mulPairs(hn::InterleaveLower(bytes, a, b), factors));
    high_ = hn::Add(high_, mulPairs(hn::InterleaveUpper(bytes, a, b), factors));
  }
  VBytes scaled(const Scaler& scaler) const { return packWords(scaler(low_), scaler(high_)); }

 private:
  VWords low_ = hn::Zero(words), high_ = hn::Zero(words);
};

/// A vector of sums in dwords; some processors add up in two parts.
struct DwordSums {
  VDwords sum = hn::Zero(dwords), rest = hn::Zero(dwords);
};

/// The sums of a vector of samples in the order of interleaving twice. Members, not an array, which
/// compilers keep in memory.
struct Dwords {
  using Scaler = DwordScaler;

  VBytes scaled(const Scaler& scaler) const {
    const auto pack = [&](const DwordSums& low, const DwordSums& high) {
      return hn::ReorderDemote2To(words, scaler(hn::RearrangeToOddPlusEven(low.sum, low.rest)),
                                  scaler(hn::RearrangeToOddPlusEven(high.sum, high.rest)));
    };
    return packWords(pack(a, b), pack(c, d));
  }

  DwordSums a, b, c, d;
};

/// Coefficients of any size.
struct PairsInDwords : Dwords {
  static constexpr int taps = 2;

  static Vek32s pack(const Vek32s (&factor)[2]) {
    return static_cast<Vek32s>((static_cast<Vek32u>(factor[1]) << 16) |
                               (static_cast<Vek32u>(factor[0]) & 0xFFFF));
  }
  void add(const Vek8u* src, const ptrdiff_t (&where)[2], VDwords packed) {
    const VBytes first = hn::LoadU(bytes, src + where[0]);
    const VBytes second = hn::LoadU(bytes, src + where[1]);
    const VWords factors = hn::BitCast(words, packed);
    const VBytes zero = hn::Zero(bytes);
    const VBytes low = hn::InterleaveLower(bytes, first, second);
    const VBytes high = hn::InterleaveUpper(bytes, first, second);
    addTo(a, hn::InterleaveLower(bytes, low, zero), factors);
    addTo(b, hn::InterleaveUpper(bytes, low, zero), factors);
    addTo(c, hn::InterleaveLower(bytes, high, zero), factors);
    addTo(d, hn::InterleaveUpper(bytes, high, zero), factors);
  }

 private:
  static void addTo(DwordSums& s, VBytes samples, VWords factors) {
#if defined(__AVX512VNNI__)
    s.sum = VDwords{_mm512_dpwssd_epi32(s.sum.raw, samples.raw, factors.raw)};
#else
    s.sum =
        hn::ReorderWidenMulAccumulate(dwords, hn::BitCast(words, samples), factors, s.sum, s.rest);
#endif
  }
};

#if defined(__AVX512VNNI__)
/// Coefficients of 8 bits.
struct FoursInDwords : Dwords {
  static constexpr int taps = 4;

  static Vek32s pack(const Vek32s (&factor)[4]) {
    Vek32u packed = 0;
    for (int i = 0; i < 4; ++i) packed |= (static_cast<Vek32u>(factor[i]) & 0xFF) << (8 * i);
    return static_cast<Vek32s>(packed);
  }
  void add(const Vek8u* src, const ptrdiff_t (&where)[4], VDwords factors) {
    const auto load = [&](int i) { return hn::LoadU(bytes, src + where[i]); };
    const VBytes first = load(0), second = load(1), third = load(2), fourth = load(3);
    addTo(a, b, hn::InterleaveLower(bytes, first, second),
          hn::InterleaveLower(bytes, third, fourth), factors);
    addTo(c, d, hn::InterleaveUpper(bytes, first, second),
          hn::InterleaveUpper(bytes, third, fourth), factors);
  }

 private:
  static void addTo(DwordSums& low, DwordSums& high, VBytes pairs, VBytes next, VDwords factors) {
    const auto one = hn::BitCast(words, pairs), two = hn::BitCast(words, next);
    low.sum = VDwords{
        _mm512_dpbusd_epi32(low.sum.raw, hn::InterleaveLower(words, one, two).raw, factors.raw)};
    high.sum = VDwords{
        _mm512_dpbusd_epi32(high.sum.raw, hn::InterleaveUpper(words, one, two).raw, factors.raw)};
  }
};
#else
using FoursInDwords = PairsInDwords;
#endif

template <class Sums, int parts, class Taps>
void filterBlocks(const FirRegion& r, const Taps& taps, const FirScale& scale) {
  const typename Sums::Scaler scaler(scale);
  for (ptrdiff_t y = 0; y < r.rows; ++y) {
    const Vek8u* src = r.src + y * r.srcStep;
    Vek8u* dst = r.dst + y * r.dstStep;
    coverRow(r.n, parts * vectorBytes, [&](ptrdiff_t x) {
      Sums sums[parts];
      taps.forEach([&](const auto& where, Vek32s packed) {
        const VDwords factors = hn::Set(dwords, packed);
        unrolled<parts>([&](auto p) { sums[p].add(src + x + p * vectorBytes, where, factors); });
      });
      unrolled<parts>(
          [&](auto p) { hn::StoreU(sums[p].scaled(scaler), bytes, dst + x + p * vectorBytes); });
    });
  }
}

template <class Sums>
void filterRegion(const FirRegion& r, const FirTaps& taps, const FirScale& scale) {
  if (r.n < vectorBytes) return fir<Vek32s>(r, taps, scale);
  if (taps.inner * taps.outer > ListedTaps<Sums>::most) {
    return filterBlocks<Sums, 1>(r, WalkedTaps<Sums>{taps}, scale);
  }
  const ListedTaps<Sums> list(taps);
  (r.n < 2 * vectorBytes ? filterBlocks<Sums, 1, ListedTaps<Sums>>
                         : filterBlocks<Sums, 2, ListedTaps<Sums>>)(r, list, scale);
}

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();

namespace vek::VEK_LEVEL {

constexpr FirRows firRows = {filterRegion<PairsInWords>, filterRegion<FoursInDwords>,
                             filterRegion<PairsInDwords>, fir<int64_t>};

}  // namespace vek::VEK_LEVEL

#else

namespace vek::VEK_LEVEL {

constexpr FirRows firRows = {fir<Vek32s>, fir<Vek32s>, fir<Vek32s>, fir<int64_t>};

}  // namespace vek::VEK_LEVEL

#endif
