// The arithmetic on single samples, as its definition reads: the portable kernels, and the fallback
// of every level.
#pragma once

#include "image/arith/arith_ops.h"
#include "image/arith/pointwise_body.h"

namespace vek::VEK_LEVEL {
namespace {

inline Vek32u exact(Sum, Vek32u a, Vek32u b) {
  return a + b;
}
inline Vek32u exact(Difference, Vek32u a, Vek32u b) {
  return a > b ? a - b : 0;
}
inline Vek32u exact(Product, Vek32u a, Vek32u b) {
  return a * b;
}

// At most 255 * 255 comes in, and 2^24 goes out.
inline Vek32u shifted(ShiftRight, Vek32u e, int shift) {
  return (e + (1u << (shift - 1))) >> shift;
}
inline Vek32u shifted(Plain, Vek32u e, int) {
  return e;
}
inline Vek32u shifted(ShiftLeft, Vek32u e, int shift) {
  return e << shift;
}

template <class Operation, class Scaling>
Sample scaled(Operation operation, Scaling scaling, Sample a, Sample b, int shift) {
  const Vek32u value = shifted(scaling, exact(operation, a, b), shift);
  return static_cast<Sample>(value < 255 ? value : 255);
}

inline Sample mulScale(Sample a, Sample b) {
  const Vek32u p = exact(Product{}, a, b);
  return static_cast<Sample>((p + (p >> 8) + 1) >> 8);
}

}  // namespace
}  // namespace vek::VEK_LEVEL
