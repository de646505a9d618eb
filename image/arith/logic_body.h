// The logic kernels over any lanes: PlainLanes and VectorLanes spell the operators alike.
#pragma once

#include "vek/vek.h"

#include <stddef.h>

#include "core/assert.h"
#include "image/arith/logic_kernels.h"

namespace vek::VEK_LEVEL {
namespace {

/// `Second` is Lanes::Samples or Lanes::Repeated.
template <class Lanes, class Second>
struct LogicRows {
  using Sample = typename Lanes::Sample;

  static void bitAnd(const Vek8u* a, const Vek8u* b, ptrdiff_t n, Vek8u* dst) {
    map(a, b, n, dst, [](Sample x, Sample y) { return Sample(x & y); });
  }
  static void bitOr(const Vek8u* a, const Vek8u* b, ptrdiff_t n, Vek8u* dst) {
    map(a, b, n, dst, [](Sample x, Sample y) { return Sample(x | y); });
  }
  static void bitXor(const Vek8u* a, const Vek8u* b, ptrdiff_t n, Vek8u* dst) {
    map(a, b, n, dst, [](Sample x, Sample y) { return Sample(x ^ y); });
  }

 private:
  template <class Operator>
  static void map(const Vek8u* a, const Vek8u* b, ptrdiff_t n, Vek8u* dst, Operator op) {
    VEK_ASSERT(n >= 1);
    Lanes::mapRow(n, op, dst, typename Lanes::Samples{a}, Second{b});
  }
};

template <class Lanes>
constexpr LogicKernels logicKernelsOf() {
  using Images = LogicRows<Lanes, typename Lanes::Samples>;
  using Constants = LogicRows<Lanes, typename Lanes::Repeated>;
  return {.andImage = Images::bitAnd,
          .andC = Constants::bitAnd,
          .orImage = Images::bitOr,
          .orC = Constants::bitOr,
          .xorImage = Images::bitXor,
          .xorC = Constants::bitXor};
}

}  // namespace
}  // namespace vek::VEK_LEVEL
