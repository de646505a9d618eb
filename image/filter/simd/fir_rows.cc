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

/// Vectors of sums that leave registers for the rest.
constexpr int mostSums = 8;
constexpr ptrdiff_t vectorBytes = static_cast<ptrdiff_t>(hn::MaxLanes(bytes));

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

/// A group of neighbours in a row, the first of them at `where`, and their coefficients for each row
/// of the destination.
struct Across {
  ptrdiff_t where;
  Vek32u factors[2];
};

/// A group of taps anywhere. What it lacks are taps in the place of another with a coefficient of 0.
template <class Dots>
struct Scattered {
  ptrdiff_t where[Dots::taps];
  Vek32u factors[2];
  int size;

  void add(ptrdiff_t place, Vek32s factor, Vek32s lowerFactor) {
    for (int i = size; i < Dots::taps; ++i) where[i] = place;
    factors[0] |= Dots::factor(factor, size);
    factors[1] |= Dots::factor(lowerFactor, size);
    ++size;
  }
};

/// The taps of `rows` rows of the destination at once, found once for a region: a row of the source
/// is multiplied by one row of the kernel for the upper one and by the row above for the lower one.
template <class Dots, int rows>
class ListedTaps {
 public:
  ListedTaps(const FirTaps& taps, ptrdiff_t rowStep) : taps_(taps), rowStep_(rowStep) {
    // A column that groups of neighbours would leave over goes in groups down the column.
    down_ = taps.width == 1 || (taps.width % Dots::taps == 1 && taps.height > 2);
    across_ = down_ ? taps.width - 1 : taps.width;
    const ptrdiff_t groups = (across_ + Dots::taps - 1) / Dots::taps;
    share_ = groups == 0 ? 1 : (across_ + groups - 1) / groups;
    if (Dots::inParts) {
      for (ptrdiff_t i = 0; i < taps.width * taps.height; ++i) {
        fits_ = fits_ && taps.last[-i] <= mostInParts;
      }
      add([](Vek32s v) { return (v - lowPart(v)) / 256; });
      firstLow_ = size_;
      firstLowScattered_ = sizeScattered_;
      add(lowPart);
    } else {
      add([](Vek32s v) { return v; });
    }
  }

  /// False for too many taps, or one whose coefficient is too large to be taken byte by byte.
  bool isComplete() const { return fits_ && size_ <= most && sizeScattered_ <= mostScattered; }
  /// From the first to the last tap of a group of neighbours, in bytes.
  ptrdiff_t reach() const { return (share_ - 1) * taps_.pixelBytes; }

  /// Walks the groups. In registers, where no store to an image could seem to change it.
  class Walk {
   public:
    explicit Walk(const ListedTaps& list)
        : groups_(list.groups_),
          low_(groups_ + list.firstLow_),
          end_(groups_ + list.size_),
          scattered_(list.scattered_),
          lowScattered_(scattered_ + list.firstLowScattered_),
          endScattered_(scattered_ + list.sizeScattered_),
          high_(list.firstLow_ + list.firstLowScattered_ > 0) {}

    /// Adds all groups to sums that are 0.
    template <class Sums>
    [[gnu::always_inline]] inline void addTo(Sums& sums, const Vek8u* src) const {
      if (Dots::inParts && high_) {
        for (const Across* group = groups_; group < low_; ++group) sums.add(src, *group);
        for (const Scattered<Dots>* group = scattered_; group < lowScattered_; ++group) {
          sums.add(src, *group);
        }
        sums.multiplyBy256();
      }
      for (const Across* group = low_; group < end_; ++group) sums.add(src, *group);
      for (const Scattered<Dots>* group = lowScattered_; group < endScattered_; ++group) {
        sums.add(src, *group);
      }
    }

   private:
    const Across *groups_, *low_, *end_;
    const Scattered<Dots>*scattered_, *lowScattered_, *endScattered_;
    bool high_;
  };

 private:
  static constexpr int most = 128, mostScattered = 64;
  static constexpr Vek32s mostInParts = 127 * 256 + 127;

  static Vek32s lowPart(Vek32s v) { return ((v + 128) & 0xFF) - 128; }

  template <class PartOf>
  void add(PartOf partOf) {
    const ptrdiff_t inputs = taps_.height + rows - 1;
    const auto coefficient = [&](ptrdiff_t x, ptrdiff_t y) {
      return y < 0 || y >= taps_.height ? 0 : partOf(taps_.last[-(y * taps_.width + x)]);
    };
    for (ptrdiff_t y = 0; y < inputs; ++y) {
      for (ptrdiff_t x = 0; x < across_; x += share_) {
        // The last group begins further back if it is not full.
        const ptrdiff_t first = x + share_ <= across_ ? x : across_ - share_;
        Across group = {y * rowStep_ + first * taps_.pixelBytes, {}};
        for (ptrdiff_t k = x; k < across_ && k < x + share_; ++k) {
          for (int r = 0; r < rows; ++r) {
            group.factors[r] |= Dots::factor(coefficient(k, y - r), static_cast<int>(k - first));
          }
        }
        append(groups_, size_, most, group);
      }
    }
    for (ptrdiff_t y = 0; down_ && y < inputs; y += Dots::taps) {
      Scattered<Dots> group = {};
      for (ptrdiff_t k = y; k < inputs && k < y + Dots::taps; ++k) {
        group.add(k * rowStep_ + across_ * taps_.pixelBytes, coefficient(across_, k),
                  rows == 2 ? coefficient(across_, k - 1) : 0);
      }
      append(scattered_, sizeScattered_, mostScattered, group);
    }
  }

  template <class Group>
  static void append(Group* groups, int& size, int limit, const Group& group) {
    if ((group.factors[0] | group.factors[1]) == 0) return;
    if (size < limit) groups[size] = group;
    if (size <= limit) ++size;
  }

  const FirTaps& taps_;
  ptrdiff_t rowStep_;
  ptrdiff_t across_, share_;  ///< taps of a row that go in groups of neighbours, and of each group
  bool down_, fits_ = true;
  int size_ = 0, sizeScattered_ = 0, firstLow_ = 0, firstLowScattered_ = 0;
  Across groups_[most];
  Scattered<Dots> scattered_[mostScattered];
};

/// The taps of a kernel of any size, found anew each time.
template <class Dots>
struct WalkedTaps {
  using Walk = WalkedTaps;

  const FirTaps& taps;
  ptrdiff_t rowStep;

  template <class Sums>
  [[gnu::always_inline]] inline void addTo(Sums& sums, const Vek8u* src) const {
    Scattered<Dots> group = {};
    const Vek32s* coefficient = taps.last;
    for (ptrdiff_t y = 0; y < taps.height; ++y) {
      for (ptrdiff_t x = 0; x < taps.width; ++x) {
        group.add(y * rowStep + x * taps.pixelBytes, *coefficient--, 0);
        if (group.size < Dots::taps) continue;
        sums.add(src, group);
        group = {};
      }
    }
    if (group.size > 0) sums.add(src, group);
  }
};

/// Brings neighbours together from vectors that begin with a group's first tap or end with its last,
/// so that no byte is read that is not a tap's: from those two alone unless the last one is `far`,
/// nine bytes away.
template <class Dots, bool far>
class Neighbours {
 public:
  Neighbours(ptrdiff_t reach, ptrdiff_t pixelBytes) : reach_(reach) {
    unrolled<Dots::parts>([&](auto p) {
      const ptrdiff_t start = p * (16 / Dots::parts) - begin(p);
      alignas(64) Vek8u index[vectorBytes];
      for (ptrdiff_t i = 0; i < vectorBytes; ++i) {
        const ptrdiff_t sample = i % 16 / Dots::parts, byte = i % Dots::parts;
        const ptrdiff_t at = start + sample + byte / Dots::tapBytes * pixelBytes;
        index[i] = static_cast<Vek8u>(byte % Dots::tapBytes != 0 ? 0x80 : at & 15);
      }
      indices_[p] = hn::Load(bytes, index);
    });
  }

  VBytes load(const Vek8u* first, int p) const {
    return hn::TableLookupBytesOr0(hn::LoadU(bytes, first + begin(p)), indices_[p]);
  }

 private:
  ptrdiff_t begin(int p) const {
    constexpr ptrdiff_t reachOfFours = 9;
    if (!far) return p < Dots::parts / 2 ? 0 : reach_;
    return p * 4 < reachOfFours ? p * 4 : reachOfFours;
  }

  ptrdiff_t reach_;
  VBytes indices_[Dots::parts];
};

/// The sums of `vectors` vectors of samples in each of `rows` rows.
template <class Dots, int rows, int vectors, bool far>
class Sums {
 public:
  using Sum = typename Dots::Sum;

  [[gnu::always_inline]] inline explicit Sums(const Neighbours<Dots, far>& neighbours)
      : neighbours_(neighbours) {
    unrolled<rows * vectors * Dots::parts>([&](auto i) { sums_[i] = Sum{}; });
  }

  [[gnu::always_inline]] inline void add(const Vek8u* src, const Across& group) {
    unrolled<vectors>([&](auto v) {
      VBytes samples[Dots::parts];
      unrolled<Dots::parts>(
          [&](auto p) { samples[p] = neighbours_.load(src + group.where + v * vectorBytes, p); });
      addProducts(v, samples, group.factors);
    });
  }
  [[gnu::always_inline]] inline void add(const Vek8u* src, const Scattered<Dots>& group) {
    unrolled<vectors>([&](auto v) {
      VBytes tap[Dots::taps], samples[Dots::parts];
      unrolled<Dots::taps>(
          [&](auto i) { tap[i] = hn::LoadU(bytes, src + group.where[i] + v * vectorBytes); });
      Dots::interleave(tap, samples);
      addProducts(v, samples, group.factors);
    });
  }
  [[gnu::always_inline]] inline void multiplyBy256() {
    if constexpr (Dots::inParts) {
      unrolled<rows * vectors * Dots::parts>([&](auto i) { sums_[i] <<= 8; });
    }
  }
  [[gnu::always_inline]] inline VBytes scaled(int row, int vector,
                                              const typename Dots::Scaler& scaler) const {
    return Dots::scaled(sums_ + (row * vectors + vector) * Dots::parts, scaler);
  }

 private:
  template <class Vector>
  [[gnu::always_inline]] inline void addProducts(Vector v, const VBytes* samples,
                                                 const Vek32u* factors) {
    unrolled<rows>([&](auto r) {
      unrolled<Dots::parts>([&](auto p) {
        Dots::add(sums_[(r * vectors + v) * Dots::parts + p], samples[p], factors[r]);
      });
    });
  }

  const Neighbours<Dots, far>& neighbours_;
  Sum sums_[rows * vectors * Dots::parts];
};

template <class Dots, int rows, int vectors, bool far, class Taps>
[[gnu::noinline, gnu::flatten]] void filterRows(const FirRegion& region, const Taps& taps,
                                                ptrdiff_t reach, ptrdiff_t pixelBytes,
                                                const FirScale& scale) {
  constexpr ptrdiff_t block = vectors * vectorBytes;
  const FirRegion r = region;
  const typename Taps::Walk walk(taps);
  const typename Dots::Scaler scaler(scale);
  const Neighbours<Dots, far> neighbours(reach, pixelBytes);
  for (ptrdiff_t y = 0; y < r.rows; y += rows) {
    if (y > r.rows - rows) y = r.rows - rows;  // the last ones again
    const Vek8u* src = r.src + y * r.srcStep;
    Vek8u* dst = r.dst + y * r.dstStep;
    for (ptrdiff_t x = 0; x < r.n; x += block) {
      if (x > r.n - block) x = r.n - block;
      Sums<Dots, rows, vectors, far> sums(neighbours);
      walk.addTo(sums, src + x);
      unrolled<rows>([&](auto i) {
        unrolled<vectors>([&](auto v) {
          hn::StoreU(sums.scaled(i, v, scaler), bytes, dst + i * r.dstStep + x + v * vectorBytes);
        });
      });
    }
  }
}

/// Whether the taps could be listed.
template <class Dots, int rows>
bool filterListed(const FirRegion& r, const FirTaps& taps, const FirScale& scale) {
  const ListedTaps<Dots, rows> list(taps, r.srcStep);
  if (!list.isComplete()) return false;
  constexpr bool farther = Dots::taps == 4;
  constexpr int vectors = rows * Dots::parts * 2 <= mostSums ? 2 : 1;
  const ptrdiff_t reach = list.reach(), pixelBytes = taps.pixelBytes;
  const auto filter =
      r.n < vectors * vectorBytes
          ? (reach > 8 ? filterRows<Dots, rows, 1, farther, ListedTaps<Dots, rows>>
                       : filterRows<Dots, rows, 1, false, ListedTaps<Dots, rows>>)
          : (reach > 8 ? filterRows<Dots, rows, vectors, farther, ListedTaps<Dots, rows>>
                       : filterRows<Dots, rows, vectors, false, ListedTaps<Dots, rows>>);
  filter(r, list, reach, pixelBytes, scale);
  return true;
}

/// Rows go by two where they share taps and multiplications are few beside the rest.
template <class Dots>
bool filterListed(const FirRegion& r, const FirTaps& taps, const FirScale& scale) {
  const bool two = r.rows > 1 && taps.height > 1 && (Dots::parts > 2 || taps.width == 1);
  return (two ? filterListed<Dots, 2> : filterListed<Dots, 1>)(r, taps, scale);
}

template <class Dots>
void filterRegion(const FirRegion& r, const FirTaps& taps, const FirScale& scale) {
  if (r.n < vectorBytes) return fir<Vek32s>(r, taps, scale);
  if (filterListed<Dots>(r, taps, scale)) return;
  filterRows<DwordDots, 1, 1, false>(r, WalkedTaps<DwordDots>{taps, r.srcStep}, 0, 0, scale);
}

#if defined(__AVX512VNNI__)
constexpr FirKernel filterSmall = filterRegion<SmallFourDots>, filterLarge = filterRegion<FourDots>;
#else
constexpr FirKernel filterSmall = filterRegion<WordDots>, filterLarge = filterRegion<DwordDots>;
#endif

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();

namespace vek::VEK_LEVEL {

constexpr FirRows firRows = {filterSmall, filterLarge, fir<int64_t>};

}  // namespace vek::VEK_LEVEL

#else

namespace vek::VEK_LEVEL {

constexpr FirRows firRows = {fir<Vek32s>, fir<Vek32s>, fir<int64_t>};

}  // namespace vek::VEK_LEVEL

#endif
