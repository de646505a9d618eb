#include "image/filter/fir_rows.h"

#include "core/kernel/byte_pairs.h"
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
using VBytes = hn::Vec<decltype(bytes)>;
using VWords = hn::Vec<decltype(words)>;
using VDwords = hn::Vec<decltype(dwords)>;

constexpr ptrdiff_t vectorBytes = static_cast<ptrdiff_t>(hn::MaxLanes(bytes));

/// Calls body(where, factor) for each tap in order.
template <class Body>
void forEachTap(const FirTaps& taps, Body body) {
  const Vek32s* coefficient = taps.last;
  for (ptrdiff_t o = 0; o < taps.outer; ++o) {
    for (ptrdiff_t i = 0; i < taps.inner; ++i) {
      body(o * taps.outerStep + i * taps.innerStep, *coefficient--);
    }
  }
}

/// Taps that are taken together, their coefficients, of `bits` each, packed into a dword (two bytes
/// twice). What a group lacks are taps in the place of another with a coefficient of 0.
template <int count, int bits>
struct TapGroup {
  ptrdiff_t where[count];
  Vek32u packed = 0;
  int size = 0;

  void add(ptrdiff_t place, Vek32s factor) {
    for (int i = size; i < count; ++i) where[i] = place;
    const Vek32u part = (static_cast<Vek32u>(factor) & ((1u << bits) - 1)) << (bits * size);
    packed |= count * bits == 16 ? part * 0x10001u : part;
    ++size;
  }
  bool isFull() const { return size == count; }
};

constexpr ptrdiff_t mostListed = 128;  ///< taps

template <class Group>
class GroupList {
 public:
  void add(ptrdiff_t where, Vek32s factor) {
    if (size_ == 0 || groups_[size_ - 1].isFull()) ++size_;
    groups_[size_ - 1].add(where, factor);
  }
  const Group* begin() const { return groups_; }
  const Group* end() const { return groups_ + size_; }

 private:
  static constexpr ptrdiff_t most = mostListed * static_cast<ptrdiff_t>(sizeof(ptrdiff_t)) /
                                    static_cast<ptrdiff_t>(sizeof(Group::where));
  ptrdiff_t size_ = 0;
  Group groups_[most];
};

/// The taps of a region that matter, by groups as Sums takes them, found once.
template <class Sums>
class ListedTaps {
 public:
  explicit ListedTaps(const FirTaps& taps) {
    forEachTap(taps, [&](ptrdiff_t where, Vek32s factor) {
      if (factor == 0) return;
      if (Sums::takesFours && factor >= -128 && factor <= 127) {
        fours_.add(where, factor);
      } else {
        pairs_.add(where, factor);
      }
    });
  }

  template <class Body>
  void forEach(Body body) const {
    for (const typename Sums::Four& four : fours_) body(four);
    for (const typename Sums::Pair& pair : pairs_) body(pair);
  }

 private:
  GroupList<typename Sums::Four> fours_;
  GroupList<typename Sums::Pair> pairs_;
};

/// Pairs of the taps of a kernel of any size, found anew each time.
template <class Sums>
struct WalkedTaps {
  const FirTaps& taps;

  template <class Body>
  void forEach(Body body) const {
    typename Sums::Pair pair;
    forEachTap(taps, [&](ptrdiff_t where, Vek32s factor) {
      pair.add(where, factor);
      if (!pair.isFull()) return;
      body(pair);
      pair = {};
    });
    if (pair.size > 0) body(pair);
  }
};

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

/// The sums of a vector of samples in words. Samples are interleaved with those of the next tap
/// within each 128-bit block, and packing puts them back in order.
struct PairsInWords {
  using Pair = TapGroup<2, 8>;
  using Four = TapGroup<4, 8>;
  using Scaler = WordScaler;
  static constexpr bool takesFours = false;

  void add(const Vek8u* src, const Pair& pair) {
    const VBytes factors = hn::BitCast(bytes, hn::Set(udwords, pair.packed));
    const VBytes a = hn::LoadU(bytes, src + pair.where[0]);
    const VBytes b = hn::LoadU(bytes, src + pair.where[1]);
    low_ = hn::Add(low_, sumOfPairs(hn::InterleaveLower(bytes, a, b), factors));
    high_ = hn::Add(high_, sumOfPairs(hn::InterleaveUpper(bytes, a, b), factors));
  }
  void add(const Vek8u*, const Four&) {}
  VBytes scaled(const Scaler& scaler) const { return packClamped(scaler(low_), scaler(high_)); }

 private:
  VWords low_ = hn::Zero(words), high_ = hn::Zero(words);
};

/// A vector of sums in dwords; some processors add up in two parts.
struct DwordSums {
  VDwords sum = hn::Zero(dwords), rest = hn::Zero(dwords);

  void add(VBytes samples, VWords factors) {
#if defined(__AVX512VNNI__)
    sum = VDwords{_mm512_dpwssd_epi32(sum.raw, samples.raw, factors.raw)};
#else
    sum = hn::ReorderWidenMulAccumulate(dwords, hn::BitCast(words, samples), factors, sum, rest);
#endif
  }
};

/// The sums of a vector of samples in dwords, in the order of interleaving twice: pairs with
/// coefficients of any size, and fours of 8 bits where the level multiplies four bytes at once.
/// Members, not an array, which compilers keep in memory.
class Dwords {
 public:
  using Pair = TapGroup<2, 16>;
  using Four = TapGroup<4, 8>;
  using Scaler = DwordScaler;

  void add(const Vek8u* src, const Pair& pair) {
    const VWords factors = hn::BitCast(words, hn::Set(udwords, pair.packed));
    const VBytes zero = hn::Zero(bytes);
    const VBytes first = hn::LoadU(bytes, src + pair.where[0]);
    const VBytes second = hn::LoadU(bytes, src + pair.where[1]);
    const VBytes low = hn::InterleaveLower(bytes, first, second);
    const VBytes high = hn::InterleaveUpper(bytes, first, second);
    a_.add(hn::InterleaveLower(bytes, low, zero), factors);
    b_.add(hn::InterleaveUpper(bytes, low, zero), factors);
    c_.add(hn::InterleaveLower(bytes, high, zero), factors);
    d_.add(hn::InterleaveUpper(bytes, high, zero), factors);
  }

#if defined(__AVX512VNNI__)
  static constexpr bool takesFours = true;

  void add(const Vek8u* src, const Four& four) {
    const auto factors = hn::Set(udwords, four.packed);
    const auto load = [&](int i) { return hn::LoadU(bytes, src + four.where[i]); };
    const VBytes first = load(0), second = load(1), third = load(2), fourth = load(3);
    const auto addFours = [&](DwordSums& low, DwordSums& high, VBytes pairs, VBytes next) {
      const auto one = hn::BitCast(words, pairs), two = hn::BitCast(words, next);
      const auto lower = hn::InterleaveLower(words, one, two);
      const auto upper = hn::InterleaveUpper(words, one, two);
      low.sum = VDwords{_mm512_dpbusd_epi32(low.sum.raw, lower.raw, factors.raw)};
      high.sum = VDwords{_mm512_dpbusd_epi32(high.sum.raw, upper.raw, factors.raw)};
    };
    addFours(a_, b_, hn::InterleaveLower(bytes, first, second),
             hn::InterleaveLower(bytes, third, fourth));
    addFours(c_, d_, hn::InterleaveUpper(bytes, first, second),
             hn::InterleaveUpper(bytes, third, fourth));
  }
#else
  static constexpr bool takesFours = false;

  void add(const Vek8u*, const Four&) {}
#endif

  VBytes scaled(const Scaler& scaler) const {
    const auto pack = [&](const DwordSums& low, const DwordSums& high) {
      return hn::ReorderDemote2To(words, scaler(hn::RearrangeToOddPlusEven(low.sum, low.rest)),
                                  scaler(hn::RearrangeToOddPlusEven(high.sum, high.rest)));
    };
    return packClamped(pack(a_, b_), pack(c_, d_));
  }

 private:
  DwordSums a_, b_, c_, d_;
};

template <class Sums, int parts, class Taps>
void filterBlocks(const FirRegion& r, const Taps& taps, const FirScale& scale) {
  const typename Sums::Scaler scaler(scale);
  for (ptrdiff_t y = 0; y < r.rows; ++y) {
    const Vek8u* src = r.src + y * r.srcStep;
    Vek8u* dst = r.dst + y * r.dstStep;
    coverRow(r.n, parts * vectorBytes, [&](ptrdiff_t x) {
      Sums sums[parts];
      taps.forEach([&](const auto& group) {
        unrolled<parts>([&](auto p) { sums[p].add(src + x + p * vectorBytes, group); });
      });
      unrolled<parts>(
          [&](auto p) { hn::StoreU(sums[p].scaled(scaler), bytes, dst + x + p * vectorBytes); });
    });
  }
}

template <class Sums>
void filterRegion(const FirRegion& r, const FirTaps& taps, const FirScale& scale) {
  if (r.n < vectorBytes) return fir<Vek32s>(r, taps, scale);
  if (taps.inner * taps.outer > mostListed) {
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

constexpr FirRows firRows = {filterRegion<PairsInWords>, filterRegion<Dwords>, fir<int64_t>};

}  // namespace vek::VEK_LEVEL

#else

namespace vek::VEK_LEVEL {

constexpr FirRows firRows = {fir<Vek32s>, fir<Vek32s>, fir<int64_t>};

}  // namespace vek::VEK_LEVEL

#endif
