// The accumulation of norms sample by sample.
#include <stddef.h>
#include <stdint.h>

#include "core/assert.h"
#include "image/stat/norm_kernels.h"

namespace vek::portable {
namespace {

struct Image {
  static Vek32u at(const Vek8u* a, const Vek8u*, ptrdiff_t i) { return a[i]; }
};
struct Difference {
  static Vek32u at(const Vek8u* a, const Vek8u* b, ptrdiff_t i) {
    return a[i] > b[i] ? static_cast<Vek32u>(a[i] - b[i]) : static_cast<Vek32u>(b[i] - a[i]);
  }
};

struct Largest {
  template <class Total>
  static void take(Total& total, Total v) {
    total = v > total ? v : total;
  }
  static Vek32u of(Vek32u v) { return v; }
};
struct Sum {
  template <class Total>
  static void take(Total& total, Total v) {
    total += v;
  }
  static Vek32u of(Vek32u v) { return v; }
};
struct SumOfSquares : Sum {
  static Vek32u of(Vek32u v) { return v * v; }
};

/// Pixels whose squares a 32-bit sum holds: 65536 * 255 * 255 < 2^32.
constexpr ptrdiff_t runPixels = 65536;

template <class Measure, class Values, int channels>
void accumulateRun(const Vek8u* a, const Vek8u* b, ptrdiff_t n, uint64_t* totals) {
  Vek32u sums[channels] = {};
  for (ptrdiff_t i = 0; i < n; i += channels) {
    for (int c = 0; c < channels; ++c) {
      Measure::take(sums[c], Measure::of(Values::at(a, b, i + c)));
    }
  }
  for (int c = 0; c < channels; ++c) Measure::take(totals[c], uint64_t{sums[c]});
}

template <class Measure, class Values, int channels>
void accumulate(const NormRegion& region, uint64_t* totals) {
  VEK_ASSERT(region.rows >= 1 && region.rowBytes >= channels && region.rowBytes % channels == 0);
  for (ptrdiff_t y = 0; y < region.rows; ++y) {
    const Vek8u* a = region.a + y * region.aStep;
    const Vek8u* b = region.b + y * region.bStep;
    for (ptrdiff_t x = 0; x < region.rowBytes; x += runPixels * channels) {
      const ptrdiff_t rest = region.rowBytes - x;
      const ptrdiff_t n = rest < runPixels * channels ? rest : runPixels * channels;
      accumulateRun<Measure, Values, channels>(a + x, b + x, n, totals);
    }
  }
}

template <class Measure, class Values>
constexpr MeasureKernels kernelsOf() {
  return {.c1 = accumulate<Measure, Values, 1>, .c3 = accumulate<Measure, Values, 3>};
}

}  // namespace

constexpr NormKernels normKernels = {.inf = kernelsOf<Largest, Image>(),
                                     .diffInf = kernelsOf<Largest, Difference>(),
                                     .l1 = kernelsOf<Sum, Image>(),
                                     .diffL1 = kernelsOf<Sum, Difference>(),
                                     .l2 = kernelsOf<SumOfSquares, Image>(),
                                     .diffL2 = kernelsOf<SumOfSquares, Difference>()};

}  // namespace vek::portable
