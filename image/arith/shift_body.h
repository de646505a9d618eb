// The shift kernels over any lanes. `Lanes` is a PlainLanes or VectorLanes that also has
// right(v, amount) and left(v, amount), by one amount for all samples, and scaledRight(v, factors) and
// scaledLeft(v, factors).
#pragma once

#include "vek/vek.h"

#include <stddef.h>

#include "core/assert.h"
#include "image/arith/shift_kernels.h"

namespace vek::VEK_LEVEL {
namespace {

template <class Lanes>
struct ShiftRows {
  using Sample = typename Lanes::Sample;
  using Samples = typename Lanes::Samples;
  using Repeated = typename Lanes::Repeated;

  static void right(const Vek8u* src, ptrdiff_t n, int amount, Vek8u* dst) {
    VEK_ASSERT(n >= 1 && amount >= 0 && amount <= 7);
    const auto op = [amount](Sample v) { return Lanes::right(v, amount); };
    Lanes::mapRow(n, op, dst, Samples{src});
  }
  static void left(const Vek8u* src, ptrdiff_t n, int amount, Vek8u* dst) {
    VEK_ASSERT(n >= 1 && amount >= 0 && amount <= 7);
    const auto op = [amount](Sample v) { return Lanes::left(v, amount); };
    Lanes::mapRow(n, op, dst, Samples{src});
  }
  static void rightC3(const Vek8u* src, const Vek8u* factors, ptrdiff_t n, Vek8u* dst) {
    VEK_ASSERT(n >= 1);
    const auto op = [](Sample v, Sample factor) { return Lanes::scaledRight(v, factor); };
    Lanes::mapRow(n, op, dst, Samples{src}, Repeated{factors});
  }
  static void leftC3(const Vek8u* src, const Vek8u* factors, ptrdiff_t n, Vek8u* dst) {
    VEK_ASSERT(n >= 1);
    const auto op = [](Sample v, Sample factor) { return Lanes::scaledLeft(v, factor); };
    Lanes::mapRow(n, op, dst, Samples{src}, Repeated{factors});
  }
};

template <class Lanes>
constexpr ShiftKernels shiftKernelsOf() {
  using Rows = ShiftRows<Lanes>;
  return {
      .right = Rows::right, .left = Rows::left, .rightC3 = Rows::rightC3, .leftC3 = Rows::leftC3};
}

}  // namespace
}  // namespace vek::VEK_LEVEL
