#include "image/filter/median_rows.h"

#include "image/filter/cover.h"
#include "image/filter/median_counting.h"
#include "image/filter/median_histogram.h"
#include "image/filter/median_network.h"

#if VEK_HAVE_HIGHWAY

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

  template <class Body>
  static void cover(ptrdiff_t n, Body body) {
    coverRow(n, size, body);
  }
};

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

constexpr MedianRows medianRows = {
    medianNetwork<Vector, 3>,
    medianNetwork<Vector, 5>,
    {medianNetwork<Vector, 7>, medianNetwork<Vector, 9>, medianNetwork<Vector, 11>},
    Vector::size,
    medianByCounting,
    columnHistograms<VectorCount>,
    runningHistogram};

}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();

#else

namespace vek::VEK_LEVEL {

constexpr MedianRows medianRows = {
    medianNetwork<Sample, 3>,     medianNetwork<Sample, 5>, {}, Sample::size, nullptr,
    columnHistograms<PlainCount>, runningHistogram};

}  // namespace vek::VEK_LEVEL

#endif
