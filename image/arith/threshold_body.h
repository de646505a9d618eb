// The threshold kernels over any lanes. `Lanes` is a PlainLanes or VectorLanes that also has
// lesser(a, b), greater(a, b) and ifAbove(v, limit, yes, no).
#pragma once

#include "vek/vek.h"

#include <stddef.h>

#include "core/assert.h"
#include "image/arith/threshold_kernels.h"

namespace vek::VEK_LEVEL {
namespace {

template <class Lanes>
struct ThresholdRows {
  using Sample = typename Lanes::Sample;
  using Samples = typename Lanes::Samples;
  using Repeated = typename Lanes::Repeated;

  static void gt(const Vek8u* src, const Pattern* constants, ptrdiff_t n, Vek8u* dst) {
    const auto op = [](Sample v, Sample t) { return Lanes::lesser(v, t); };
    map(n, op, dst, src, Repeated{constants[0].bytes});
  }
  static void lt(const Vek8u* src, const Pattern* constants, ptrdiff_t n, Vek8u* dst) {
    const auto op = [](Sample v, Sample t) { return Lanes::greater(v, t); };
    map(n, op, dst, src, Repeated{constants[0].bytes});
  }
  static void gtVal(const Vek8u* src, const Pattern* constants, ptrdiff_t n, Vek8u* dst) {
    const auto op = [](Sample v, Sample t, Sample value) { return Lanes::ifAbove(v, t, value, v); };
    map(n, op, dst, src, Repeated{constants[0].bytes}, Repeated{constants[1].bytes});
  }
  static void ltVal(const Vek8u* src, const Pattern* constants, ptrdiff_t n, Vek8u* dst) {
    const auto op = [](Sample v, Sample t, Sample value) { return Lanes::ifAbove(t, v, value, v); };
    map(n, op, dst, src, Repeated{constants[0].bytes}, Repeated{constants[1].bytes});
  }
  static void ltValGtVal(const Vek8u* src, const Pattern* constants, ptrdiff_t n, Vek8u* dst) {
    const auto op = [](Sample v, Sample low, Sample valueLow, Sample high, Sample valueHigh) {
      return Lanes::ifAbove(low, v, valueLow, Lanes::ifAbove(v, high, valueHigh, v));
    };
    map(n, op, dst, src, Repeated{constants[0].bytes}, Repeated{constants[1].bytes},
        Repeated{constants[2].bytes}, Repeated{constants[3].bytes});
  }

 private:
  template <class Operator, class... Constants>
  static void map(ptrdiff_t n, Operator op, Vek8u* dst, const Vek8u* src, Constants... constants) {
    VEK_ASSERT(n >= 1);
    Lanes::mapRow(n, op, dst, Samples{src}, constants...);
  }
};

template <class Lanes>
constexpr ThresholdKernels thresholdKernelsOf() {
  using Rows = ThresholdRows<Lanes>;
  return {.gt = Rows::gt,
          .lt = Rows::lt,
          .gtVal = Rows::gtVal,
          .ltVal = Rows::ltVal,
          .ltValGtVal = Rows::ltValGtVal};
}

}  // namespace
}  // namespace vek::VEK_LEVEL
