#include "core/kernel/blocks.h"
#include "image/filter/filter_lanes.h"
#include "image/filter/median/median_counting.h"
#include "image/filter/median/median_histogram.h"
#include "image/filter/median/median_kernels.h"
#include "image/filter/median/median_network.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

struct Vector {
  static constexpr hn::ScalableTag<Vek8u> bytes = {};
  using Value = hn::Vec<hn::ScalableTag<Vek8u>>;
  static constexpr ptrdiff_t size = static_cast<ptrdiff_t>(hn::MaxLanes(bytes));

  static Value load(const Vek8u* p) { return hn::LoadU(bytes, p); }
  static void store(Value v, Vek8u* p) { hn::StoreU(v, bytes, p); }
  static Value lower(Value a, Value b) { return hn::Min(a, b); }
  static Value higher(Value a, Value b) { return hn::Max(a, b); }
  /// The lower and the higher value. Minima and maxima of 512 bits all go to one port: a comparison
  /// and two choices now and then take the others.
  static void exchange(Value a, Value b, Value& low, Value& high) {
#if defined(__AVX512BW__)
    const auto less = hn::Lt(a, b);
    low = hn::IfThenElse(less, a, b);
    high = hn::IfThenElse(less, b, a);
#else
    low = lower(a, b);
    high = higher(a, b);
#endif
  }

  template <class Body>
  static void cover(ptrdiff_t n, Body body) {
    overlappingBlocks(n, size, body);
  }
};

using Value = Vector::Value;

struct Sorted3 {
  Value least, middle, most;
};

/// The columns of two windows of 3, one above the other, in a vector of places.
struct ColumnPair3 {
  Sorted3 upper, lower;
};

/// Windows of 3 by two, one above the other: the rows that they share are sorted once. `lowerRow`
/// and `lowerDst` are the upper ones where there is no lower window.
struct RowPair3 {
  const Vek8u *upperRow, *first, *second, *lowerRow;
  Vek8u *upperDst, *lowerDst;

  ColumnPair3 columns(ptrdiff_t x) const {
    const Value a = Vector::load(first + x), b = Vector::load(second + x);
    const Value low = hn::Min(a, b), high = hn::Max(a, b);
    const auto sortedWith = [&](Value own) {
      return Sorted3{hn::Min(low, own), hn::Min(hn::Max(low, own), high), hn::Max(high, own)};
    };
    return {sortedWith(Vector::load(upperRow + x)), sortedWith(Vector::load(lowerRow + x))};
  }
  void store(const ColumnPair3& a, const ColumnPair3& b, const ColumnPair3& c, ptrdiff_t x) const {
    Vector::store(median(a.upper, b.upper, c.upper), upperDst + x);
    Vector::store(median(a.lower, b.lower, c.lower), lowerDst + x);
  }

 private:
  static Value median(const Sorted3& a, const Sorted3& b, const Sorted3& c) {
    return medianOfColumns<Vector>(a.least, b.least, c.least, a.middle, b.middle, c.middle, a.most,
                                   b.most, c.most);
  }
};

template <int distance>
ColumnPair3 further(const ColumnPair3& v, const ColumnPair3& next) {
  const auto moved = [](const Sorted3& a, const Sorted3& b) {
    return Sorted3{further<distance>(a.least, b.least), further<distance>(a.middle, b.middle),
                   further<distance>(a.most, b.most)};
  };
  return {moved(v.upper, next.upper), moved(v.lower, next.lower)};
}

/// Neighbouring columns come from registers but for the last windows of a row, which would read
/// beyond it.
template <int pixelBytes>
void filterRows3(const RowPair3& rows, ptrdiff_t n) {
  constexpr ptrdiff_t size = Vector::size;
  ColumnPair3 now = rows.columns(0);
  ptrdiff_t x = 0;
  for (; x + 2 * size <= n + 2 * pixelBytes; x += size) {
    const ColumnPair3 next = rows.columns(x + size);
    rows.store(now, further<pixelBytes>(now, next), further<2 * pixelBytes>(now, next), x);
    now = next;
  }
  for (; x < n; x += size) {
    if (n - x < size) x = n - size;
    rows.store(rows.columns(x), rows.columns(x + pixelBytes), rows.columns(x + 2 * pixelBytes), x);
  }
}

void medianOfNine(const MedianRegion& r) {
  const auto filter = r.pixelBytes == 1 ? filterRows3<1> : filterRows3<3>;
  for (ptrdiff_t y = 0; y < r.rows; y += 2) {
    const bool single = y + 1 == r.rows;
    const Vek8u* src = r.corner + y * r.srcStep;
    Vek8u* dst = r.dst + y * r.dstStep;
    filter({src, src + r.srcStep, src + 2 * r.srcStep, src + (single ? 0 : 3 * r.srcStep), dst,
            dst + (single ? 0 : r.dstStep)},
           r.columns);
  }
}

struct VectorCount {
  static int notAbove(const Totals<Vek16u>& totals, Vek16u rank) {
    constexpr hn::CappedTag<Vek16u, 16> words;
    constexpr size_t lanes = hn::MaxLanes(words);
    size_t count = 0;
    for (size_t i = 0; i < 16; i += lanes) {
      const auto above = hn::Gt(hn::LoadU(words, totals.upTo + i), hn::Set(words, rank));
      count += lanes - hn::CountTrue(words, above);
    }
    return static_cast<int>(count);
  }
};

}  // namespace

constexpr MedianKernels medianKernels = {
    medianOfNine,
    medianNetwork5<Vector>,
    {medianNetwork<Vector, 7>, medianNetwork<Vector, 9>, medianNetwork<Vector, 11>},
    Vector::size,
    medianByCounting,
    columnHistograms<VectorCount>,
    runningHistogram};

}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();
