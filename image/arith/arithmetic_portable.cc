// The arithmetic on single samples, as its definition reads.
#include "core/kernel/words.h"
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

/// e >> (shift - 1) is the upper half of e times `power`, or of e times 2^16 for a shift of 1: then it
/// is e & unshifted.
struct RightShift {
  Vek16u power, unshifted;
};
struct RightShifts {
  RightShift by[17];
};
constexpr RightShifts rightShifts = [] {
  RightShifts shifts = {};
  shifts.by[1] = {0, 0xFFFF};
  for (int i = 2; i <= 16; ++i) shifts.by[i] = {static_cast<Vek16u>(1 << (17 - i)), 0};
  return shifts;
}();

/// (e + 2^(shift - 1)) >> shift without its sum, which may be too long: the bits that are shifted
/// out first never carry. Compilers shift lanes by a variable in 32 bits alone; they see that factors
/// have 16 bits if they come from a table.
Vek8u scaled(ShiftRight, Vek16u e, int shift) {
  Vek16u doubled;
  if constexpr (hasWords) {
    const RightShift by = rightShifts.by[shift];
    const Vek16u shifted = static_cast<Vek16u>((Vek32u{e} * by.power) >> 16);
    doubled = static_cast<Vek16u>(shifted | (e & by.unshifted));
  } else {
    doubled = static_cast<Vek16u>(e >> (shift - 1));
  }
  const Vek16s rounded = static_cast<Vek16s>((doubled + 1) >> 1);
  return static_cast<Vek8u>(rounded < 255 ? rounded : 255);
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
