// Medians by counting: the median of a window is the greatest t for which at most half of its
// samples are below t. It is searched bit by bit for a strip of windows at a time, and only
// thresholds that some window of the strip asks for are counted: few, as neighbouring medians are
// close. For each threshold the counts of the columns are kept and moved down when they are needed
// again. The work for a threshold does not depend on the mask's height and hardly on its width.
#pragma once

#include "core/kernel/lanes.h"
#include "core/kernel/unroll.h"
#include "image/filter/filter_lanes.h"
#include "image/filter/median/median_kernels.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

/// The numbers of samples below a threshold in a vector of windows of up to 255 samples.
class ByteTotals {
 public:
  static constexpr hn::ScalableTag<Vek8u> bytes = {};
  using Value = hn::Vec<hn::ScalableTag<Vek8u>>;

  void add(Value counts) { totals_ = hn::Add(totals_, counts); }
  hn::Mask<hn::ScalableTag<Vek8u>> notAbove(ptrdiff_t rank) const {
    return hn::Eq(hn::Min(totals_, hn::Set(bytes, static_cast<Vek8u>(rank))), totals_);
  }

 private:
  Value totals_ = hn::Zero(bytes);
};

/// The same for windows of up to 2^15 - 1 samples.
class WordTotals {
 public:
  static constexpr hn::ScalableTag<Vek8u> bytes = {};
  static constexpr hn::Repartition<Vek16u, hn::ScalableTag<Vek8u>> words = {};
  using Value = hn::Vec<hn::ScalableTag<Vek8u>>;
  using Words = hn::Vec<hn::Repartition<Vek16u, hn::ScalableTag<Vek8u>>>;

  void add(Value counts) {
    const Value zero = hn::Zero(bytes);
    low_ = hn::Add(low_, hn::BitCast(words, hn::InterleaveLower(bytes, counts, zero)));
    high_ = hn::Add(high_, hn::BitCast(words, hn::InterleaveUpper(bytes, counts, zero)));
  }
  hn::Mask<hn::ScalableTag<Vek8u>> notAbove(ptrdiff_t rank) const {
    constexpr hn::RebindToSigned<decltype(words)> swords;
    const auto excess = [&](Words totals) {
      const Words most = hn::Set(words, static_cast<Vek16u>(rank));
      return hn::BitCast(swords, hn::SaturatedSub(totals, most));
    };
    return hn::Eq(packClamped(excess(low_), excess(high_)), hn::Zero(bytes));
  }

 private:
  Words low_ = hn::Zero(words), high_ = hn::Zero(words);
};

/// A strip of `vectors` vectors of windows. The counts of three neighbouring columns fit 8 bits.
/// The bytes of a row are treated alike, whatever their channel.
template <class Totals, int vectors>
class CountingStrip {
 public:
  static constexpr hn::ScalableTag<Vek8u> bytes = {};
  using Value = hn::Vec<hn::ScalableTag<Vek8u>>;
  static constexpr ptrdiff_t size = static_cast<ptrdiff_t>(hn::MaxLanes(bytes));
  static constexpr ptrdiff_t length = vectors * size;

  /// The strip begins at column x.
  CountingStrip(const MedianRegion& r, ptrdiff_t x)
      : r_(r), corner_(r.corner + x), dst_(r.dst + x) {
    for (ptrdiff_t& top : top_) top = never;
  }

  void filterRow(ptrdiff_t y) {
    Value medians[vectors];
    unrolled<vectors>([&](auto i) { medians[i] = hn::Zero(bytes); });
    Vek8u known[2][256 + 1];  // the values that medians have so far, by turns
    known[0][0] = 0;
    int knownCount = 1, turn = 0;
    for (int bit = 128; bit > 0; bit /= 2, turn = 1 - turn) {
      const Vek8u* now = known[turn];
      Vek8u* next = known[1 - turn];
      int nextCount = 0;
      for (int i = 0; i < knownCount; i += group) {
        const int count = knownCount - i < group ? knownCount - i : group;
        const Vek8u* columns[group];
        alignas(64) Vek8u threes[group][room];
        for (int k = 0; k < count; ++k) {
          columns[k] = moveColumns(y, static_cast<Vek8u>(now[i + k] + bit));
        }
        for (int k = 0; k < count; ++k) sumThrees(columns[k], threes[k]);
        for (int k = 0; k < count; ++k) {
          const Vek8u base = now[i + k], raised = static_cast<Vek8u>(base + bit);
          const Found found = raise(columns[k], threes[k], base, raised, medians);
          next[nextCount] = base;
          nextCount += found.below;
          next[nextCount] = raised;
          nextCount += found.above;
        }
      }
      knownCount = nextCount;
    }
    Vek8u* dst = dst_ + y * r_.dstStep;
    unrolled<vectors>([&](auto i) { hn::StoreU(medians[i], bytes, dst + i * size); });
  }

 private:
  static constexpr ptrdiff_t never = -2;  // no row above one of the region
  static constexpr int group = 8;  ///< thresholds whose steps go side by side, to hide latency
  static constexpr ptrdiff_t room = (length + 3 * (countingWidth - 1) + 2 * size - 1) / size * size;

  struct Found {
    bool below, above;
  };

  /// The counts of samples below the threshold in the columns of the rows from y on.
  const Vek8u* moveColumns(ptrdiff_t y, Vek8u threshold) {
    Vek8u* columns = columns_[threshold];
    const ptrdiff_t top = top_[threshold];
    if (top == y) return columns;
    top_[threshold] = y;
    const Value last = hn::Set(bytes, static_cast<Vek8u>(threshold - 1));
    const ptrdiff_t step = r_.srcStep, height = r_.maskHeight;
    const Vek8u* src = corner_ + y * step;
    const auto load = [](const Vek8u* p) { return hn::LoadU(bytes, p); };
    if (top == y - 1) {
      const Vek8u* leaving = src - step;
      const Vek8u* entering = leaving + height * step;
      forColumns(columns, [&](ptrdiff_t x) {
        return subtract(add(load(columns + x), load(entering + x), last), load(leaving + x), last);
      });
    } else if (top == never || 2 * (y - top) >= height) {
      forColumns(columns, [&](ptrdiff_t x) {
        Value counts = hn::Zero(bytes);
        const Vek8u* row = src + x;
        for (ptrdiff_t j = 0; j < height; ++j, row += step) counts = add(counts, load(row), last);
        return counts;
      });
    } else {
      forColumns(columns, [&](ptrdiff_t x) {
        Value counts = load(columns + x);
        const Vek8u* leaving = src + (top - y) * step + x;
        for (ptrdiff_t j = top; j < y; ++j, leaving += step) {
          counts = add(counts, load(leaving + height * step), last);
          counts = subtract(counts, load(leaving), last);
        }
        return counts;
      });
    }
    return columns;
  }

  /// columns[x] = counts(x) for all columns. The last vector overlaps the one before: it is found
  /// before that is stored.
  template <class Counts>
  void forColumns(Vek8u* columns, Counts counts) {
    const ptrdiff_t last = length + (r_.maskWidth - 1) * r_.pixelBytes - size;
    const Value lastCounts = counts(last);
    unrolled<vectors>([&](auto i) {
      const Value now = counts(i * size);
      hn::StoreU(now, bytes, columns + i * size);
    });
    for (ptrdiff_t x = length; x < last; x += size) hn::StoreU(counts(x), bytes, columns + x);
    hn::StoreU(lastCounts, bytes, columns + last);
  }

  /// Sums of three neighbours; those beyond the strip's columns are of no use.
  void sumThrees(const Vek8u* columns, Vek8u* threes) const {
    r_.pixelBytes == 1 ? sumThrees<1>(columns, threes) : sumThrees<3>(columns, threes);
  }
  template <int distance>
  void sumThrees(const Vek8u* columns, Vek8u* threes) const {
    const ptrdiff_t end = length + (r_.maskWidth - 3) * distance;
    for (ptrdiff_t x = 0; x < end; x += size) {
      const Value first = hn::LoadU(bytes, columns + x);
#if defined(__AVX512BW__)
      // Vectors across two of those just stored would have to wait for them.
      const Value next = hn::LoadU(bytes, columns + x + size);
      const Value second = further<distance>(first, next),
                  third = further<2 * distance>(first, next);
#else
      const Value second = hn::LoadU(bytes, columns + x + distance);
      const Value third = hn::LoadU(bytes, columns + x + 2 * distance);
#endif
      hn::StoreU(hn::Add(hn::Add(first, second), third), bytes, threes + x);
    }
  }

  /// Raises those medians that equal `base` and are at least `raised`; tells which there are.
  Found raise(const Vek8u* columns, const Vek8u* threes, Vek8u base, Vek8u raised,
              Value* medians) const {
    const ptrdiff_t distance = r_.pixelBytes;
    Totals totals[vectors];
    const auto addAll = [&](const Vek8u* counts) {
      unrolled<vectors>([&](auto i) { totals[i].add(hn::LoadU(bytes, counts + i * size)); });
    };
    ptrdiff_t k = 0;
    for (; k + 3 <= r_.maskWidth; k += 3) addAll(threes + k * distance);
    for (; k < r_.maskWidth; ++k) addAll(columns + k * distance);
    const ptrdiff_t rank = (r_.maskWidth * r_.maskHeight - 1) / 2;
    const Value from = hn::Set(bytes, base), to = hn::Set(bytes, raised);
    auto below = hn::Eq(from, to), above = below;  // none
    unrolled<vectors>([&](auto i) {
      const auto asked = hn::Eq(medians[i], from);
      const auto reached = hn::And(asked, totals[i].notAbove(rank));
      medians[i] = hn::IfThenElse(reached, to, medians[i]);
      above = hn::Or(above, reached);
      below = hn::Or(below, hn::AndNot(reached, asked));
    });
    return {!hn::AllFalse(bytes, below), !hn::AllFalse(bytes, above)};
  }

  /// counts + 1 where v <= last, and counts - 1.
#if HWY_TARGET <= HWY_AVX3 && HWY_ARCH_X86
  static Value add(Value counts, Value v, Value last) {
    const __mmask64 here = _mm512_cmple_epu8_mask(v.raw, last.raw);
    return Value{_mm512_mask_sub_epi8(counts.raw, here, counts.raw, _mm512_set1_epi8(-1))};
  }
  static Value subtract(Value counts, Value v, Value last) {
    const __mmask64 here = _mm512_cmple_epu8_mask(v.raw, last.raw);
    return Value{_mm512_mask_add_epi8(counts.raw, here, counts.raw, _mm512_set1_epi8(-1))};
  }
#else
  static Value add(Value counts, Value v, Value last) {
    return hn::Sub(counts, hn::VecFromMask(bytes, hn::Eq(hn::Min(v, last), v)));
  }
  static Value subtract(Value counts, Value v, Value last) {
    return hn::Add(counts, hn::VecFromMask(bytes, hn::Eq(hn::Min(v, last), v)));
  }
#endif

  const MedianRegion& r_;
  const Vek8u* corner_;
  Vek8u* dst_;
  ptrdiff_t top_[256];  ///< the row that the counts of a threshold are for
  alignas(64) Vek8u columns_[256][room];
};

/// Filters the strips that fit from x on; returns where they end.
template <class Totals, int vectors>
ptrdiff_t filterStrips(const MedianRegion& r, ptrdiff_t x) {
  using Strip = CountingStrip<Totals, vectors>;
  for (; x + Strip::length <= r.columns; x += Strip::length) {
    Strip strip(r, x);
    for (ptrdiff_t y = 0; y < r.rows; ++y) strip.filterRow(y);
  }
  return x;
}

template <class Totals>
void countMedians(const MedianRegion& r) {
  constexpr ptrdiff_t size = CountingStrip<Totals, 1>::size;
  constexpr int vectors = static_cast<int>(256 / size);
  const ptrdiff_t end = filterStrips<Totals, 1>(r, filterStrips<Totals, vectors>(r, 0));
  // The last strip overlaps the one before.
  if (end < r.columns) filterStrips<Totals, 1>(r, r.columns - size);
}

void medianByCounting(const MedianRegion& r) {
  const bool small = r.maskWidth * r.maskHeight <= 255;
  (small ? countMedians<ByteTotals> : countMedians<WordTotals>)(r);
}

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();
