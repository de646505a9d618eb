// The arithmetic on single samples, as its definition reads.
#include "image/arith/arithmetic_body.h"
#include "image/arith/pointwise_portable.h"

namespace vek::portable {
namespace {

Vek32u exact(Sum, Vek32u a, Vek32u b) {
  return a + b;
}
Vek32u exact(Difference, Vek32u a, Vek32u b) {
  return a > b ? a - b : 0;
}
Vek32u exact(Product, Vek32u a, Vek32u b) {
  return a * b;
}

// At most 255 * 255 comes in, and less than 2^24 goes out.
Vek32u shifted(ShiftRight, Vek32u e, int shift) {
  return (e + (1u << (shift - 1))) >> shift;
}
Vek32u shifted(Plain, Vek32u e, int) {
  return e;
}
Vek32u shifted(ShiftLeft, Vek32u e, int shift) {
  return e << shift;
}

struct ArithmeticLanes : PlainLanes {
  template <class Operation, class Scaling>
  static Sample scaled(Operation operation, Scaling scaling, Sample a, Sample b, int shift) {
    const Vek32u value = shifted(scaling, exact(operation, a, b), shift);
    return static_cast<Sample>(value < 255 ? value : 255);
  }

  static Sample mulScale(Sample a, Sample b) {
    const Vek32u p = exact(Product{}, a, b);
    return static_cast<Sample>((p + (p >> 8) + 1) >> 8);
  }
};

}  // namespace

constexpr ArithmeticKernels arithmeticKernels = arithmeticKernelsOf<ArithmeticLanes>();

}  // namespace vek::portable
