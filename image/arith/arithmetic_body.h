// The arithmetic kernels over any lanes. `Lanes` is a PlainLanes or VectorLanes that also has
// scaled(operation, scaling, a, b, shift) and mulScale(a, b).
#pragma once

#include "vek/vek.h"

#include <stddef.h>

#include "core/assert.h"
#include "image/arith/arithmetic_kernels.h"

namespace vek::VEK_LEVEL {
namespace {

// The exact value.
struct Sum {};
struct Difference {};
struct Product {};

// How it is scaled.
struct ShiftRight {};
struct Plain {};
struct ShiftLeft {};

/// `Second` is Lanes::Samples or Lanes::Repeated.
template <class Lanes, class Second, class Operation, class Scaling>
void scaledRow(const Vek8u* a, const Vek8u* b, ptrdiff_t n, int shift, Vek8u* dst) {
  VEK_ASSERT(n >= 1);
  using Sample = typename Lanes::Sample;
  const auto op = [shift](Sample x, Sample y) {
    return Lanes::scaled(Operation{}, Scaling{}, x, y, shift);
  };
  Lanes::mapRow(n, op, dst, typename Lanes::Samples{a}, Second{b});
}

template <class Lanes, class Second>
void mulScaleRow(const Vek8u* a, const Vek8u* b, ptrdiff_t n, Vek8u* dst) {
  VEK_ASSERT(n >= 1);
  using Sample = typename Lanes::Sample;
  const auto op = [](Sample x, Sample y) { return Lanes::mulScale(x, y); };
  Lanes::mapRow(n, op, dst, typename Lanes::Samples{a}, Second{b});
}

template <class Lanes, class Second, class Operation>
constexpr ScaledKernels scaledKernels() {
  return {.shiftRight = scaledRow<Lanes, Second, Operation, ShiftRight>,
          .plain = scaledRow<Lanes, Second, Operation, Plain>,
          .shiftLeft = scaledRow<Lanes, Second, Operation, ShiftLeft>};
}

template <class Lanes>
constexpr ArithmeticKernels arithmeticKernelsOf() {
  using Image = typename Lanes::Samples;
  using Constants = typename Lanes::Repeated;
  return {.add = scaledKernels<Lanes, Image, Sum>(),
          .addC = scaledKernels<Lanes, Constants, Sum>(),
          .sub = scaledKernels<Lanes, Image, Difference>(),
          .subC = scaledKernels<Lanes, Constants, Difference>(),
          .mul = scaledKernels<Lanes, Image, Product>(),
          .mulC = scaledKernels<Lanes, Constants, Product>(),
          .mulScale = mulScaleRow<Lanes, Image>,
          .mulScaleC = mulScaleRow<Lanes, Constants>};
}

}  // namespace
}  // namespace vek::VEK_LEVEL
