// Medians of square neighbourhoods by merging sorted columns. Compiled for every level, over
// whatever `Block` calls a value: one sample, or a vector of neighbouring ones.
//
// Each column of the mask is sorted once for all windows that contain it, and so are pairs (and
// fours) of neighbouring columns. A window of 5 merges two pairs and takes the median of the result
// and its fifth column; 7 is 4 + 2 + 1, 9 is 8 + 1, 13 is 8 + 4 + 1. Everything is unrolled:
// the compiler drops the comparisons whose outcome no median can depend on.
#pragma once

#include "vek/vek.h"

#include <stddef.h>

#include "image/filter/unrolled.h"

namespace vek::VEK_LEVEL {
namespace {

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
      out[2 * i + 1] = Block::lower(odd[i], even[i + 1]);
      out[2 * i + 2] = Block::higher(odd[i], even[i + 1]);
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
/// by the mask (36 bytes at most), the last vector, and the distance of neighbours that are merged.
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

template <class Block, int side>
void sortColumns(const Vek8u* corner, ptrdiff_t srcStep, ptrdiff_t count,
                 SortedRows<side, side>& sorted) {
  Block::cover(count, [&](ptrdiff_t x) {
    typename Block::Value v[side];
    unrolled<side>([&](auto j) { v[j] = Block::load(corner + j * srcStep + x); });
    sortValues<Block, side>(v);
    unrolled<side>([&](auto j) { Block::store(v[j], sorted.at[j] + x); });
  });
}

template <class Block>
typename Block::Value median3(typename Block::Value a, typename Block::Value b,
                              typename Block::Value c) {
  return Block::higher(Block::lower(a, b), Block::lower(Block::higher(a, b), c));
}

/// The greatest minimum, the median middle and the least maximum of the three columns have the
/// window's median as their own median.
template <class Block>
void medians3(const SortedRows<3, 3>& sorted, ptrdiff_t pixelBytes, ptrdiff_t n, Vek8u* dst) {
  Block::cover(n, [&](ptrdiff_t x) {
    const auto load = [&](int rank, ptrdiff_t column) {
      return Block::load(sorted.at[rank] + x + column * pixelBytes);
    };
    const auto least = Block::higher(Block::higher(load(0, 0), load(0, 1)), load(0, 2));
    const auto middle = median3<Block>(load(1, 0), load(1, 1), load(1, 2));
    const auto most = Block::lower(Block::lower(load(2, 0), load(2, 1)), load(2, 2));
    Block::store(median3<Block>(least, middle, most), dst + x);
  });
}

/// The sorted union of the last `columns` columns of a window, merged from what is at hand for 4,
/// 2 and 1 columns; x is where the first of them starts.
template <class Block, int side, int columns, class Fours>
[[gnu::always_inline]] inline void mergeRest(const SortedRows<side, side>& ones,
                                             const SortedRows<side, 2 * side>& twos,
                                             const Fours& fours, ptrdiff_t x, ptrdiff_t pixelBytes,
                                             typename Block::Value* out) {
  constexpr int head = columns >= 4 ? 4 : columns >= 2 ? 2 : 1;
  constexpr int rest = columns - head;
  typename Block::Value first[head * side];
  if constexpr (head == 4) {
    loadSorted<Block>(fours, x, first);
  } else if constexpr (head == 2) {
    loadSorted<Block>(twos, x, first);
  } else {
    loadSorted<Block>(ones, x, first);
  }
  if constexpr (rest == 0) {
    unrolled<head * side>([&](auto i) { out[i] = first[i]; });
  } else {
    typename Block::Value others[rest * side];
    mergeRest<Block, side, rest>(ones, twos, fours, x + head * pixelBytes, pixelBytes, others);
    mergeSorted<Block, head * side, rest * side>(first, others, out);
  }
}

/// Medians from two halves of `half` columns each and the columns that are left.
template <class Block, int side, class Fours, int halfCount>
void mediansOfHalves(const SortedRows<side, side>& ones, const SortedRows<side, 2 * side>& twos,
                     const Fours& fours, const SortedRows<side, halfCount>& halves,
                     ptrdiff_t pixelBytes, ptrdiff_t n, Vek8u* dst) {
  using Value = typename Block::Value;
  constexpr int half = halfCount / side;
  constexpr int rest = side - 2 * half;
  Block::cover(n, [&](ptrdiff_t x) {
    Value left[halfCount], right[halfCount], most[2 * halfCount], others[rest * side];
    loadSorted<Block>(halves, x, left);
    loadSorted<Block>(halves, x + half * pixelBytes, right);
    mergeSorted<Block, halfCount, halfCount>(left, right, most);
    mergeRest<Block, side, rest>(ones, twos, fours, x + 2 * half * pixelBytes, pixelBytes, others);
    Block::store(rankOfTwo<Block, (side * side - 1) / 2, rest * side>(most, others), dst + x);
  });
}

template <class Block, int side>
void medianNetwork(const Vek8u* corner, ptrdiff_t srcStep, ptrdiff_t pixelBytes, Vek8u* dst,
                   ptrdiff_t n) {
  SortedRows<side, side> ones;
  [[maybe_unused]] SortedRows<side, side == 3 ? 1 : 2 * side> twos;
  [[maybe_unused]] SortedRows < side, side<8 ? 1 : 4 * side> fours;
  ptrdiff_t x = 0;
  while (x < n) {
    // The last strip is never shorter than a block: it overlaps the one before.
    if (n - x < Block::size) x = n - Block::size;
    const ptrdiff_t count = n - x < networkStrip(side) ? n - x : networkStrip(side);
    const ptrdiff_t columns = count + (side - 1) * pixelBytes;
    sortColumns<Block>(corner + x, srcStep, columns, ones);
    if constexpr (side == 3) {
      medians3<Block>(ones, pixelBytes, count, dst + x);
    } else {
      mergeNeighbours<Block>(ones, pixelBytes, columns - pixelBytes, twos);
      if constexpr (side < 8) {
        mediansOfHalves<Block>(ones, twos, 0, twos, pixelBytes, count, dst + x);
      } else {
        mergeNeighbours<Block>(twos, 2 * pixelBytes, columns - 3 * pixelBytes, fours);
        mediansOfHalves<Block>(ones, twos, fours, fours, pixelBytes, count, dst + x);
      }
    }
    x += count;
  }
}

}  // namespace
}  // namespace vek::VEK_LEVEL
