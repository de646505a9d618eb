#include "core/assert.h"
#include "core/kernel/blocks.h"
#include "core/kernel/lanes.h"
#include "image/filter/median/median_counting.h"
#include "image/filter/median/median_histogram.h"
#include "image/filter/median/median_kernels.h"
#include "image/filter/median/median_network.h"
#include "image/filter/neighbours.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

/// The block of the networks: a vector of neighbouring samples.
struct Vector {
  using Value = V8u;
  static constexpr ptrdiff_t size = vectorBytes;

  static Value load(const Vek8u* p) { return hn::LoadU(u8, p); }
  static void store(Value v, Vek8u* p) { hn::StoreU(v, u8, p); }
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

struct Sorted3 {
  V8u least, middle, most;
};

/// A column of two windows of 3, one above the other, for each byte of a vector.
struct ColumnPair3 {
  Sorted3 upper, lower;
};

/// The rows of two windows of 3, one above the other: the two rows that both have are sorted once.
/// `lowerRow` and `lowerDst` are the upper ones where there is no lower window.
struct RowPair3 {
  const Vek8u *upperRow, *first, *second, *lowerRow;
  Vek8u *upperDst, *lowerDst;

  ColumnPair3 columns(ptrdiff_t x) const {
    const V8u a = Vector::load(first + x), b = Vector::load(second + x);
    const V8u low = hn::Min(a, b), high = hn::Max(a, b);
    const auto sortedWith = [&](V8u third) {
      return Sorted3{hn::Min(low, third), hn::Min(hn::Max(low, third), high), hn::Max(high, third)};
    };
    return {sortedWith(Vector::load(upperRow + x)), sortedWith(Vector::load(lowerRow + x))};
  }
  void store(const ColumnPair3& a, const ColumnPair3& b, const ColumnPair3& c, ptrdiff_t x) const {
    Vector::store(median(a.upper, b.upper, c.upper), upperDst + x);
    Vector::store(median(a.lower, b.lower, c.lower), lowerDst + x);
  }

 private:
  static V8u median(const Sorted3& a, const Sorted3& b, const Sorted3& c) {
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

void medianOfNine(const MedianRegion& r) {
  VEK_ASSERT(r.columns >= vectorBytes && r.maskWidth == 3 && r.maskHeight == 3);
  const auto filter = r.pixelBytes == 1 ? forWindowsOf3<1, RowPair3> : forWindowsOf3<3, RowPair3>;
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
    constexpr hn::CappedTag<Vek16u, 16> atMost16;
    constexpr size_t lanes = hn::MaxLanes(atMost16);
    size_t count = 0;
    for (size_t i = 0; i < 16; i += lanes) {
      const auto above = hn::Gt(hn::LoadU(atMost16, totals.upTo + i), hn::Set(atMost16, rank));
      count += lanes - hn::CountTrue(atMost16, above);
    }
    return static_cast<int>(count);
  }
};

}  // namespace

constexpr MedianKernels medianKernels = {
    .square3 = medianOfNine,
    .square5 = medianNetwork5<Vector>,
    .square7 = medianNetwork<Vector, 7>,
    .square9 = medianNetwork<Vector, 9>,
    .square11 = medianNetwork<Vector, 11>,
    .leastBytes = vectorBytes,
    .byCounting = medianByCounting,
    .columnHistograms = columnHistograms<VectorCount>,
    .runningHistogram = runningHistogram,
};

}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();
