// Medians by counting. The median of a window is the greatest t for which at most half of its
// samples are below t, and its bits are found one after the other, the highest first: a bit is set
// if at most half of the samples are below the value with it. Of the samples 3, 7, 7, 9, 200 four
// are below 128, 64, 32 and 16, and three are below 8, more than two each time; but one is below 4,
// below 4 + 2 and below 4 + 2 + 1, and so the median is 7.
//
// This is done for a strip of windows at a time, and only thresholds that some window of the strip
// asks for are counted: few, as neighbouring medians are close. For the thresholds that were asked
// for last the counts of the columns are kept, and moved down when they are needed again. The work
// for such a threshold does not depend on the mask's height and hardly on its width.
#pragma once

#include "vek/vek.h"

#include <stddef.h>
#include <stdint.h>

#include "core/assert.h"
#include "core/kernel/lanes.h"
#include "core/kernel/unroll.h"
#include "image/filter/median/median_kernels.h"
#include "image/filter/neighbours.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

/// The numbers of samples below a threshold in a vector of windows of up to 255 samples.
class WindowCounts8 {
 public:
  static constexpr bool fitsWideStrips = true;

  void add(V8u counts) { totals_ = hn::Add(totals_, counts); }
  hn::Mask<decltype(u8)> notAbove(ptrdiff_t rank) const {
    return hn::Eq(hn::Min(totals_, hn::Set(u8, static_cast<Vek8u>(rank))), totals_);
  }

 private:
  V8u totals_ = hn::Zero(u8);
};

/// The same for windows of up to 2^15 - 1 samples.
class WindowCounts16 {
 public:
  /// Whether there are registers for the counts of 256 windows.
  static constexpr bool fitsWideStrips = vectorBytes == 64;

  void add(V8u counts) {
    const V8u zero = hn::Zero(u8);
    low_ = hn::Add(low_, hn::BitCast(u16, hn::InterleaveLower(u8, counts, zero)));
    high_ = hn::Add(high_, hn::BitCast(u16, hn::InterleaveUpper(u8, counts, zero)));
  }
  hn::Mask<decltype(u8)> notAbove(ptrdiff_t rank) const {
    const auto excess = [&](V16u totals) {
      const V16u most = hn::Set(u16, static_cast<Vek16u>(rank));
      return hn::BitCast(s16, hn::SaturatedSub(totals, most));
    };
    return hn::Eq(packClamped(excess(low_), excess(high_)), hn::Zero(u8));
  }

 private:
  V16u low_ = hn::Zero(u16), high_ = hn::Zero(u16);
};

/// A strip of `vectors` vectors of windows. The counts of three neighbouring columns fit 8 bits.
/// The bytes of a row are treated alike, whatever their channel.
template <class WindowCounts, int vectors>
class CountingStrip {
 public:
  static constexpr ptrdiff_t length = ptrdiff_t{vectors} * vectorBytes;

  /// The strip begins at column x.
  CountingStrip(const MedianRegion& r, ptrdiff_t x)
      : r_(r), corner_(r.corner + x), dst_(r.dst + x) {
    for (int& slot : slotOf_) slot = none;
  }

  void filterRow(ptrdiff_t y) {
    firstRow_ = corner_ + y * r_.srcStep;
    lastRow_ = firstRow_ + (r_.maskHeight - 1) * r_.srcStep;
    V8u medians[vectors];
    unrolled<vectors>([&](auto i) { medians[i] = hn::Zero(u8); });
    Vek8u known[2][256 + 1];  // the values that medians have before a bit and with it
    known[0][0] = 0;
    int knownCount = 1, current = 0;
    for (int bit = 128; bit > 0; bit /= 2, current = 1 - current) {
      const Vek8u* now = known[current];
      Vek8u* next = known[1 - current];
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
      asked_ += knownCount;
      knownCount = nextCount;
    }
    Vek8u* dst = dst_ + y * r_.dstStep;
    unrolled<vectors>([&](auto i) { hn::StoreU(medians[i], u8, dst + i * vectorBytes); });
  }

  /// How many thresholds the rows have asked for.
  ptrdiff_t asked() const { return asked_; }

 private:
  static constexpr ptrdiff_t never = -2;  // no row above one of the region
  static constexpr int group = 8;  ///< thresholds whose steps go side by side, to hide latency
  /// Bytes of a strip's columns, and of what vectors read beyond them.
  static constexpr ptrdiff_t room =
      (length + 3 * (countingWidth - 1) + 2 * vectorBytes - 1) / vectorBytes * vectorBytes;

  /// Thresholds whose counts are kept: as many as fit 44 KB with those of a group and their sums of
  /// three.
  static constexpr ptrdiff_t fitting =
      44 * 1024 / (room + ptrdiff_t{sizeof(ptrdiff_t)}) - 2 * group;
  static constexpr int slots = static_cast<int>(fitting < 256 ? fitting : 256);
  static constexpr int none = -1;

  struct Found {
    bool below, above;
  };

  /// Gives a threshold a new slot, or the one that was not asked for longest. If all were asked for
  /// in row y, it gets one of those behind them, whose counts are lost after the group.
  [[gnu::noinline]] int takeSlot(Vek8u threshold, ptrdiff_t y) {
    int slot = used_;
    if (used_ < slots) {
      ++used_;
    } else {
      slot = 0;
      for (int i = 1; i < slots; ++i) slot = top_[i] < top_[slot] ? i : slot;
      if (top_[slot] == y) {
        slot = slots + static_cast<int>(unkept_++ % group);
        top_[slot] = never;
        return slot;
      }
      slotOf_[threshold_[slot]] = none;
    }
    slotOf_[threshold] = slot;
    threshold_[slot] = threshold;
    top_[slot] = never;
    return slot;
  }

  /// The counts of samples below the threshold in the columns of the rows from y on.
  const Vek8u* moveColumns(ptrdiff_t y, Vek8u threshold) {
    int slot = slotOf_[threshold];
    if (slot < 0) slot = takeSlot(threshold, y);
    Vek8u* columns = columns_[slot];
    const ptrdiff_t top = top_[slot];
    if (top == y) return columns;
    top_[slot] = y;
    const V8u last = hn::Set(u8, static_cast<Vek8u>(threshold - 1));
    const auto load = [](const Vek8u* p) { return hn::LoadU(u8, p); };
    const ptrdiff_t step = r_.srcStep, height = r_.maskHeight;
    const Vek8u* const src = firstRow_;
    if (top == y - 1) {
      const Vek8u *leaving = src - step, *entering = lastRow_;
      forColumns(columns, [&](ptrdiff_t x) {
        return subtract(add(load(columns + x), load(entering + x), last), load(leaving + x), last);
      });
    } else if (top == never || 2 * (y - top) >= height) {
      forColumns(columns, [&](ptrdiff_t x) {
        V8u counts = hn::Zero(u8);
        const Vek8u* row = src + x;
        for (ptrdiff_t j = 0; j < height; ++j, row += step) counts = add(counts, load(row), last);
        return counts;
      });
    } else {
      forColumns(columns, [&](ptrdiff_t x) {
        V8u counts = load(columns + x);
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

  /// columns[x] = counts(x) for all columns, of which there are `length` at least: the vectors of
  /// the strip itself are unrolled. The last vector overlaps the one before. Counts may be moved in
  /// place, so it is computed before that one is stored.
  template <class Counts>
  void forColumns(Vek8u* columns, Counts counts) {
    const ptrdiff_t last = length + (r_.maskWidth - 1) * r_.pixelBytes - vectorBytes;
    const V8u lastCounts = counts(last);
    unrolled<vectors>([&](auto i) {
      const V8u now = counts(i * vectorBytes);
      hn::StoreU(now, u8, columns + i * vectorBytes);
    });
    for (ptrdiff_t x = length; x < last; x += vectorBytes) hn::StoreU(counts(x), u8, columns + x);
    hn::StoreU(lastCounts, u8, columns + last);
  }

  /// Sums of three neighbours; those beyond the strip's columns are of no use.
  void sumThrees(const Vek8u* columns, Vek8u* threes) const {
    r_.pixelBytes == 1 ? sumThrees<1>(columns, threes) : sumThrees<3>(columns, threes);
  }
  template <int distance>
  void sumThrees(const Vek8u* columns, Vek8u* threes) const {
    const ptrdiff_t end = length + (r_.maskWidth - 3) * distance;
    for (ptrdiff_t x = 0; x < end; x += vectorBytes) {
      const V8u first = hn::LoadU(u8, columns + x);
#if defined(__AVX512BW__)
      // Vectors across two of those just stored would have to wait for them.
      const V8u next = hn::LoadU(u8, columns + x + vectorBytes);
      const V8u second = further<distance>(first, next), third = further<2 * distance>(first, next);
#else
      const V8u second = hn::LoadU(u8, columns + x + distance);
      const V8u third = hn::LoadU(u8, columns + x + 2 * distance);
#endif
      hn::StoreU(hn::Add(hn::Add(first, second), third), u8, threes + x);
    }
  }

  /// Raises those medians that equal `base` and are at least `raised`; tells which there are.
  Found raise(const Vek8u* columns, const Vek8u* threes, Vek8u base, Vek8u raised,
              V8u* medians) const {
    const ptrdiff_t distance = r_.pixelBytes;
    WindowCounts totals[vectors];
    const auto addAll = [&](const Vek8u* counts) {
      unrolled<vectors>([&](auto i) { totals[i].add(hn::LoadU(u8, counts + i * vectorBytes)); });
    };
    ptrdiff_t k = 0;
    for (; k + 3 <= r_.maskWidth; k += 3) addAll(threes + k * distance);
    for (; k < r_.maskWidth; ++k) addAll(columns + k * distance);
    const ptrdiff_t rank = (r_.maskWidth * r_.maskHeight - 1) / 2;
    const V8u from = hn::Set(u8, base), to = hn::Set(u8, raised);
    auto below = hn::Eq(from, to), above = below;  // both of no lane
    unrolled<vectors>([&](auto i) {
      const auto asked = hn::Eq(medians[i], from);
      const auto reached = hn::And(asked, totals[i].notAbove(rank));
      medians[i] = hn::IfThenElse(reached, to, medians[i]);
      above = hn::Or(above, reached);
      below = hn::Or(below, hn::AndNot(reached, asked));
    });
    return {!hn::AllFalse(u8, below), !hn::AllFalse(u8, above)};
  }

  /// counts + 1 where v <= last, and counts - 1.
#if HWY_TARGET <= HWY_AVX3 && HWY_ARCH_X86
  static V8u add(V8u counts, V8u v, V8u last) {
    const __mmask64 here = _mm512_cmple_epu8_mask(v.raw, last.raw);
    return V8u{_mm512_mask_sub_epi8(counts.raw, here, counts.raw, _mm512_set1_epi8(-1))};
  }
  static V8u subtract(V8u counts, V8u v, V8u last) {
    const __mmask64 here = _mm512_cmple_epu8_mask(v.raw, last.raw);
    return V8u{_mm512_mask_add_epi8(counts.raw, here, counts.raw, _mm512_set1_epi8(-1))};
  }
#else
  static V8u add(V8u counts, V8u v, V8u last) {
    return hn::Sub(counts, hn::VecFromMask(u8, hn::Eq(hn::Min(v, last), v)));
  }
  static V8u subtract(V8u counts, V8u v, V8u last) {
    return hn::Add(counts, hn::VecFromMask(u8, hn::Eq(hn::Min(v, last), v)));
  }
#endif

  const MedianRegion& r_;
  const Vek8u* corner_;
  Vek8u* dst_;
  const Vek8u *firstRow_, *lastRow_;  ///< of the windows
  int slotOf_[256];                   ///< of each threshold, or none
  Vek8u threshold_[slots];            ///< of each slot
  ptrdiff_t asked_ = 0;
  int used_ = 0;                  ///< slots that keep counts
  unsigned unkept_ = 0;           ///< how often counts were not kept
  ptrdiff_t top_[slots + group];  ///< the row that the counts of a slot are for
  alignas(64) Vek8u columns_[slots + group][room];
};

/// Filters the strip that begins at x; returns how many thresholds its rows asked for.
template <class WindowCounts, ptrdiff_t length>
ptrdiff_t filterStrip(const MedianRegion& r, ptrdiff_t x) {
  CountingStrip<WindowCounts, static_cast<int>(length / vectorBytes)> strip(r, x);
  for (ptrdiff_t y = 0; y < r.rows; ++y) strip.filterRow(y);
  return strip.asked();
}

/// Strips of 256 bytes, or of 128 where fewer registers hold the counts or where rows ask for many
/// thresholds. On noise a row of a wide strip asks for about fifty and of a narrow one for forty; where
/// edges are strong these are 150 and 75. What is left are strips of 64 bytes and of one vector, the
/// last of which overlaps the one before.
template <class WindowCounts>
void countMedians(const MedianRegion& r) {
  bool wide = WindowCounts::fitsWideStrips;
  ptrdiff_t x = 0;
  while (x + 128 <= r.columns) {
    if (wide && x + 256 <= r.columns) {
      wide = filterStrip<WindowCounts, 256>(r, x) <= 80 * r.rows;
      x += 256;
    } else {
      const bool few = filterStrip<WindowCounts, 128>(r, x) <= 40 * r.rows;
      wide = few && WindowCounts::fitsWideStrips;
      x += 128;
    }
  }
  if constexpr (vectorBytes < 64) {
    for (; x + 64 <= r.columns; x += 64) filterStrip<WindowCounts, 64>(r, x);
  }
  for (; x + vectorBytes <= r.columns; x += vectorBytes)
    filterStrip<WindowCounts, vectorBytes>(r, x);
  if (x < r.columns) filterStrip<WindowCounts, vectorBytes>(r, r.columns - vectorBytes);
}

void medianByCounting(const MedianRegion& r) {
  VEK_ASSERT(r.columns >= vectorBytes && isCountable(r.maskWidth, r.maskHeight));
  const bool fit8 = r.maskWidth * r.maskHeight <= 255;
  (fit8 ? countMedians<WindowCounts8> : countMedians<WindowCounts16>)(r);
}

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();
