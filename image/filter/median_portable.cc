#include "image/filter/median_histogram.h"
#include "image/filter/median_network.h"

namespace vek::portable {
namespace {

/// One sample: the loops over a strip are left to the compiler.
struct Sample {
  using Value = Vek8u;
  static constexpr ptrdiff_t size = 1;

  static Value load(const Vek8u* p) { return *p; }
  static void store(Value v, Vek8u* p) { *p = v; }
  static Value lower(Value a, Value b) { return a < b ? a : b; }
  static Value higher(Value a, Value b) { return a > b ? a : b; }

  template <class Body>
  static void cover(ptrdiff_t n, Body body) {
    for (ptrdiff_t x = 0; x < n; ++x) body(x);
  }
};

}  // namespace

constexpr MedianRows medianRows = {
    medianNetwork<Sample, 3>,     medianNetwork<Sample, 5>, {}, Sample::size,
    columnHistograms<PlainCount>, runningHistogram};

}  // namespace vek::portable
