// The arithmetic on single samples, as its definition reads.
#include "image/arith/arithmetic_body.h"
#include "image/arith/pointwise_portable.h"

namespace vek::portable {
namespace {

Vek8u clamped(Vek16u a) {
  return static_cast<Vek8u>(a < 255 ? a : 255);
}

// Sixteen bits hold every exact value, and compilers then fill vectors with twice as many lanes.

Vek16u exact(Sum, Vek8u a, Vek8u b) {
  return static_cast<Vek16u>(a + b);
}
Vek16u exact(Difference, Vek8u a, Vek8u b) {
  return static_cast<Vek16u>((a > b ? a : b) - b);
}
Vek16u exact(Product, Vek8u a, Vek8u b) {
  return static_cast<Vek16u>(a * b);
}

/// (e + 2^(shift - 1)) >> shift without its sum, which may be too long: the bits that are shifted
/// out first never carry. The mask tells the compiler that vectors of 16-bit lanes can shift so.
Vek8u scaled(ShiftRight, Vek16u e, int shift) {
  const Vek16u doubled = static_cast<Vek16u>(e >> ((shift - 1) & 15));
  return clamped(static_cast<Vek16u>((doubled + 1) >> 1));
}
/// Shifts by at most 8, so that 16 bits hold 255 shifted. Lanes of 16 bits can multiply.
Vek8u scaled(ShiftLeft, Vek16u e, int shift) {
  const Vek16u power = static_cast<Vek16u>(1 << shift);
  return clamped(static_cast<Vek16u>(clamped(e) * power));
}

// Without a scaling, bytes hold the sum and the difference, too.

Vek8u saturated(Sum, Vek8u a, Vek8u b) {
  const Vek8u room = static_cast<Vek8u>(255 - b);
  return static_cast<Vek8u>((a < room ? a : room) + b);
}
Vek8u saturated(Difference, Vek8u a, Vek8u b) {
  return static_cast<Vek8u>((a > b ? a : b) - b);
}
Vek8u saturated(Product, Vek8u a, Vek8u b) {
  return clamped(exact(Product{}, a, b));
}

struct ArithmeticLanes : PlainLanes {
  template <class Operation, class Scaling>
  static Sample scaled(Operation operation, Scaling scaling, Sample a, Sample b, int shift) {
    return portable::scaled(scaling, exact(operation, a, b), shift);
  }
  template <class Operation>
  static Sample scaled(Operation operation, Plain, Sample a, Sample b, int) {
    return saturated(operation, a, b);
  }

  static Sample mulScale(Sample a, Sample b) {
    const Vek16u p = exact(Product{}, a, b);
    return static_cast<Sample>(static_cast<Vek16u>(p + (p >> 8) + 1) >> 8);
  }
};

}  // namespace

constexpr ArithmeticKernels arithmeticKernels = arithmeticKernelsOf<ArithmeticLanes>();

}  // namespace vek::portable
