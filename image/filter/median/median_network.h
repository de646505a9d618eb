// Medians of square neighbourhoods by merging sorted columns. Compiled for every level, over
// whatever `Block` calls a value: one sample, or a vector of neighbouring ones.
//
// Each column of the mask is sorted once for all windows that contain it, and so are pairs (and
// fours) of neighbouring columns. A window of 7 is 4 + 2 + 1 columns, 9 is 8 + 1, 11 is 8 + 2 + 1.
// Windows of 5 are filtered two at a time, one above the other: the four rows that both have are
// merged once. Everything is unrolled: the compiler drops the comparisons whose outcome no median
// can depend on.
#pragma once

#include "vek/vek.h"

#include <stddef.h>
#include <string.h>

#include "core/assert.h"
#include "core/kernel/unroll.h"
#include "image/filter/median/median_kernels.h"

namespace vek::VEK_LEVEL {
namespace {

/// The plain block, one sample: the loops over a strip are left to the compiler.
struct Sample {
  using Value = Vek8u;
  static constexpr ptrdiff_t size = 1;

  static Value load(const Vek8u* p) { return *p; }
  static void store(Value v, Vek8u* p) { *p = v; }
  static Value lower(Value a, Value b) { return a < b ? a : b; }
  static Value higher(Value a, Value b) { return a > b ? a : b; }
  static void exchange(Value a, Value b, Value& low, Value& high) {
    low = lower(a, b);
    high = higher(a, b);
  }

  template <class Body>
  static void cover(ptrdiff_t n, Body body) {
    for (ptrdiff_t x = 0; x < n; ++x) body(x);
  }
};

/// Batcher's odd-even merge of the sorted a[0], a[step] ... (m values) and b (n values).
template <class Block, int m, int n, int step = 1>
[[gnu::always_inline]] inline void mergeSorted(const typename Block::Value* a,
                                               const typename Block::Value* b,
                                               typename Block::Value* out) {
  using Value = typename Block::Value;
  if constexpr (m == 0 || n == 0) {
    unrolled<m + n>([&](auto i) { out[i] = m == 0 ? b[i * step] : a[i * step]; });
  } else if constexpr (m == 1 && n == 1) {
    out[0] = Block::lower(a[0], b[0]);
    out[1] = Block::higher(a[0], b[0]);
  } else {
    constexpr int evens = (m + 1) / 2 + (n + 1) / 2;
    constexpr int odds = m / 2 + n / 2;
    constexpr int pairs = odds < evens - 1 ? odds : evens - 1;
    Value even[evens], odd[odds];
    mergeSorted<Block, (m + 1) / 2, (n + 1) / 2, 2 * step>(a, b, even);
    mergeSorted<Block, m / 2, n / 2, 2 * step>(a + step, b + step, odd);
    out[0] = even[0];
    unrolled<pairs>([&](auto i) {
      if constexpr (i % 2 == 1) {
        Block::exchange(odd[i], even[i + 1], out[2 * i + 1], out[2 * i + 2]);
      } else {
        out[2 * i + 1] = Block::lower(odd[i], even[i + 1]);
        out[2 * i + 2] = Block::higher(odd[i], even[i + 1]);
      }
    });
    if constexpr (odds > pairs) out[m + n - 1] = odd[odds - 1];
    if constexpr (evens - 1 > pairs) out[m + n - 1] = even[evens - 1];
  }
}

template <class Block, int n>
[[gnu::always_inline]] inline void sortValues(typename Block::Value* v) {
  if constexpr (n > 1) {
    typename Block::Value sorted[n];
    sortValues<Block, n / 2>(v);
    sortValues<Block, n - n / 2>(v + n / 2);
    mergeSorted<Block, n / 2, n - n / 2>(v, v + n / 2, sorted);
    unrolled<n>([&](auto i) { v[i] = sorted[i]; });
  }
}

/// The value of the given rank (0 is the least) in two sorted sequences, where n <= rank < m: the
/// least of max(a[rank - j], b[j - 1]) over the ways to take j values from b.
template <class Block, int rank, int n>
[[gnu::always_inline]] inline typename Block::Value rankOfTwo(const typename Block::Value* a,
                                                              const typename Block::Value* b) {
  typename Block::Value result = a[rank];
  unrolled<n>([&](auto j) { result = Block::lower(result, Block::higher(a[rank - 1 - j], b[j])); });
  return result;
}

/// Bytes of a row that are filtered at a time, so that its sorted columns fit the first cache.
constexpr ptrdiff_t networkStrip(int side) {
  return side == 3 ? 2048 : side == 5 ? 1024 : side == 7 ? 512 : 192;
}

/// Sorted sequences of n values, one per byte of a strip, rank by rank. They reach beyond the strip
/// by the mask (30 bytes at most), the last vector, and the distance of neighbours that are merged.
template <int side, int n>
struct SortedRows {
  static constexpr ptrdiff_t room = networkStrip(side) + 128;
  alignas(64) Vek8u at[n][room];
};

template <class Block, int side, int n>
[[gnu::always_inline]] inline void loadSorted(const SortedRows<side, n>& rows, ptrdiff_t x,
                                              typename Block::Value* v) {
  unrolled<n>([&](auto i) { v[i] = Block::load(rows.at[i] + x); });
}

/// merged(x) = the union of sorted(x) and sorted(x + distance). Garbage behind the strip's last
/// sequence stays behind it.
template <class Block, int side, int n>
[[gnu::noinline]] void mergeNeighbours(const SortedRows<side, n>& sorted, ptrdiff_t distance,
                                       ptrdiff_t count, SortedRows<side, 2 * n>& merged) {
  using Value = typename Block::Value;
  for (ptrdiff_t x = 0; x < count; x += Block::size) {
    Value a[n], b[n], out[2 * n];
    loadSorted<Block>(sorted, x, a);
    loadSorted<Block>(sorted, x + distance, b);
    mergeSorted<Block, n, n>(a, b, out);
    unrolled<2 * n>([&](auto i) { Block::store(out[i], merged.at[i] + x); });
  }
}

/// Sorts n samples, `step` bytes apart, from each byte on.
template <class Block, int side, int n>
void sortSamples(const Vek8u* src, ptrdiff_t step, ptrdiff_t count, SortedRows<side, n>& sorted) {
  Block::cover(count, [&](ptrdiff_t x) {
    typename Block::Value v[n];
    unrolled<n>([&](auto j) { v[j] = Block::load(src + j * step + x); });
    sortValues<Block, n>(v);
    unrolled<n>([&](auto j) { Block::store(v[j], sorted.at[j] + x); });
  });
}

template <class Block>
typename Block::Value median3(typename Block::Value a, typename Block::Value b,
                              typename Block::Value c) {
  return Block::higher(Block::lower(a, b), Block::lower(Block::higher(a, b), c));
}

/// The greatest minimum, the median middle and the least maximum of the three columns have the
/// window's median as their own median.
template <class Block, class Value = typename Block::Value>
Value medianOfColumns(Value least0, Value least1, Value least2, Value middle0, Value middle1,
                      Value middle2, Value most0, Value most1, Value most2) {
  return median3<Block>(Block::higher(Block::higher(least0, least1), least2),
                        median3<Block>(middle0, middle1, middle2),
                        Block::lower(Block::lower(most0, most1), most2));
}

template <class Block>
void medians3(const SortedRows<3, 3>& sorted, ptrdiff_t pixelBytes, ptrdiff_t n, Vek8u* dst) {
  Block::cover(n, [&](ptrdiff_t x) {
    const auto load = [&](int rank, ptrdiff_t column) {
      return Block::load(sorted.at[rank] + x + column * pixelBytes);
    };
    Block::store(medianOfColumns<Block>(load(0, 0), load(0, 1), load(0, 2), load(1, 0), load(1, 1),
                                        load(1, 2), load(2, 0), load(2, 1), load(2, 2)),
                 dst + x);
  });
}

/// The sorted union of the last 1 or 3 columns of a window, which begin at x.
template <class Block, int side, int columns>
[[gnu::always_inline]] inline void mergeRest(const SortedRows<side, side>& ones,
                                             const SortedRows<side, 2 * side>& twos, ptrdiff_t x,
                                             ptrdiff_t pixelBytes, typename Block::Value* out) {
  static_assert(columns == 1 || columns == 3);
  if constexpr (columns == 1) {
    loadSorted<Block>(ones, x, out);
  } else {
    typename Block::Value two[2 * side], one[side];
    loadSorted<Block>(twos, x, two);
    loadSorted<Block>(ones, x + 2 * pixelBytes, one);
    mergeSorted<Block, 2 * side, side>(two, one, out);
  }
}

/// Medians from two halves of `half` columns each and the columns that are left.
template <class Block, int side, int halfCount>
void mediansOfHalves(const SortedRows<side, side>& ones, const SortedRows<side, 2 * side>& twos,
                     const SortedRows<side, halfCount>& halves, ptrdiff_t pixelBytes, ptrdiff_t n,
                     Vek8u* dst) {
  using Value = typename Block::Value;
  constexpr int half = halfCount / side;
  constexpr int rest = side - 2 * half;
  Block::cover(n, [&](ptrdiff_t x) {
    Value left[halfCount], right[halfCount], most[2 * halfCount], others[rest * side];
    loadSorted<Block>(halves, x, left);
    loadSorted<Block>(halves, x + half * pixelBytes, right);
    mergeSorted<Block, halfCount, halfCount>(left, right, most);
    mergeRest<Block, side, rest>(ones, twos, x + 2 * half * pixelBytes, pixelBytes, others);
    Block::store(rankOfTwo<Block, (side * side - 1) / 2, rest * side>(most, others), dst + x);
  });
}

/// Calls filter(x, count) for strips that cover a row. The last one is never shorter than a block:
/// it overlaps the one before.
template <class Block, int side, class Filter>
void forStrips(ptrdiff_t n, Filter filter) {
  for (ptrdiff_t x = 0; x < n;) {
    if (n - x < Block::size) x = n - Block::size;
    const ptrdiff_t count = n - x < networkStrip(side) ? n - x : networkStrip(side);
    filter(x, count);
    x += count;
  }
}

template <class Block, int side>
void medianNetwork(const MedianRegion& r) {
  VEK_ASSERT(r.columns >= Block::size && r.maskWidth == side && r.maskHeight == side);
  SortedRows<side, side> ones;
  constexpr int inTwos = side > 3 ? 2 * side : 1, inFours = side > 8 ? 4 * side : 1;
  [[maybe_unused]] SortedRows<side, inTwos> twos;
  [[maybe_unused]] SortedRows<side, inFours> fours;
  const ptrdiff_t pixelBytes = r.pixelBytes;
  for (ptrdiff_t y = 0; y < r.rows; ++y) {
    forStrips<Block, side>(r.columns, [&](ptrdiff_t x, ptrdiff_t count) {
      Vek8u* dst = r.dst + y * r.dstStep + x;
      const ptrdiff_t columns = count + (side - 1) * pixelBytes;
      sortSamples<Block>(r.corner + y * r.srcStep + x, r.srcStep, columns, ones);
      if constexpr (side == 3) {
        medians3<Block>(ones, pixelBytes, count, dst);
      } else {
        mergeNeighbours<Block>(ones, pixelBytes, columns - pixelBytes, twos);
        if constexpr (side < 8) {
          mediansOfHalves<Block>(ones, twos, twos, pixelBytes, count, dst);
        } else {
          mergeNeighbours<Block>(twos, 2 * pixelBytes, columns - 3 * pixelBytes, fours);
          mediansOfHalves<Block>(ones, twos, fours, pixelBytes, count, dst);
        }
      }
    });
  }
}

/// The row that only one of two windows of 5 has. The plain block works on a copy, or the compiler
/// would fear that storing medians changes it.
template <class Block>
struct UnsharedRow {
  static constexpr bool copies = Block::size == 1;
  const Vek8u* src;
  Vek8u* dst;
  Vek8u copy[copies ? networkStrip(5) + 16 : 1];

  void set(const Vek8u* from, Vek8u* to, ptrdiff_t count) {
    src = from;
    dst = to;
    if (copies) memcpy(copy, from, static_cast<size_t>(count));
  }

  /// Stores the median of six sorted candidates and the row's five samples from x on.
  [[gnu::always_inline]] inline void storeMedian(const typename Block::Value* candidates,
                                                 ptrdiff_t x, ptrdiff_t pixelBytes) const {
    typename Block::Value five[5];
    unrolled<5>([&](auto i) { five[i] = Block::load((copies ? copy : src) + x + i * pixelBytes); });
    sortValues<Block, 5>(five);
    Block::store(rankOfTwo<Block, 5, 5>(candidates, five), dst + x);
  }
};

/// Of the 20 samples that two windows share only those of rank 7 to 12 can be the median of either:
/// it has 12 below it, at most five of them in the window's own row.
template <class Block>
void mediansOfTwo(const SortedRows<5, 4>& ones, const SortedRows<5, 8>& twos,
                  const UnsharedRow<Block>& upper, const UnsharedRow<Block>& lower,
                  ptrdiff_t pixelBytes, ptrdiff_t n) {
  Block::cover(n, [&](ptrdiff_t x) {
    typename Block::Value left[8], right[8], last[4], sixteen[16], middle[14];
    loadSorted<Block>(twos, x, left);
    loadSorted<Block>(twos, x + 2 * pixelBytes, right);
    mergeSorted<Block, 8, 8>(left, right, sixteen);
    loadSorted<Block>(ones, x + 4 * pixelBytes, last);
    mergeSorted<Block, 10, 4>(sixteen + 3, last, middle);
    upper.storeMedian(middle + 4, x, pixelBytes);
    lower.storeMedian(middle + 4, x, pixelBytes);
  });
}

template <class Block>
void medianNetwork5(const MedianRegion& r) {
  VEK_ASSERT(r.columns >= Block::size && r.maskWidth == 5 && r.maskHeight == 5);
  SortedRows<5, 4> ones;
  SortedRows<5, 8> twos;
  UnsharedRow<Block> upper, lower;
  for (ptrdiff_t y = 0; y < r.rows; y += 2) {
    const bool single = y + 1 == r.rows;  // both windows are the same
    const Vek8u* src = r.corner + y * r.srcStep;
    Vek8u* dst = r.dst + y * r.dstStep;
    forStrips<Block, 5>(r.columns, [&](ptrdiff_t x, ptrdiff_t count) {
      const ptrdiff_t columns = count + 4 * r.pixelBytes;
      upper.set(src + x, dst + x, columns);
      lower.set(src + x + (single ? 0 : 5 * r.srcStep), dst + x + (single ? 0 : r.dstStep),
                columns);
      sortSamples<Block>(src + r.srcStep + x, r.srcStep, columns, ones);
      mergeNeighbours<Block>(ones, r.pixelBytes, columns - r.pixelBytes, twos);
      mediansOfTwo(ones, twos, upper, lower, r.pixelBytes, count);
    });
  }
}

}  // namespace
}  // namespace vek::VEK_LEVEL
