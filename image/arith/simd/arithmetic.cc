#include "image/arith/arithmetic_body.h"
#include "image/arith/simd/pointwise.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

// Scaling of sums and differences that were saturated to bytes. Rounding half up,
// (e + 2^(s - 1)) >> s = ((e >> (s - 1)) + 1) >> 1, and (x + 1) >> 1 is the rounded average with zero.
V8u shifted(Plain, V8u v, int) {
  return v;
}
V8u shifted(ShiftRight, V8u v, int shift) {
  return hn::AverageRound(shiftBytesRight(v, shift - 1), hn::Zero(u8));
}
V8u shifted(ShiftLeft, V8u v, int shift) {
  const V8u leastTooLarge = hn::Set(u8, static_cast<Vek8u>((255 >> shift) + 1));
  const V8u tooLarge = hn::VecFromMask(u8, hn::Eq(hn::Max(v, leastTooLarge), v));
  return hn::Or(shiftBytesLeft(v, shift), tooLarge);
}

// Scaling of products in 16-bit lanes. They are at most 65025.
V16u saturated(V16u v) {
  return hn::Min(v, hn::Set(u16, 255));
}
V16u shifted(Plain, V16u v, int) {
  return saturated(v);
}
V16u shifted(ShiftRight, V16u v, int shift) {
  const V16u doubled = hn::ShiftRightSame(v, shift - 1);
  return saturated(hn::ShiftRight<1>(hn::Add(doubled, hn::Set(u16, 1))));
}
V16u shifted(ShiftLeft, V16u v, int shift) {
  return saturated(hn::ShiftLeftSame(saturated(v), shift));
}

/// p + (p >> 8) + 1 of the product p, at most 65280.
V16u timesScale(V16u a, V16u b) {
  const V16u p = hn::Mul(a, b);
  return hn::Add(hn::Add(p, hn::ShiftRight<8>(p)), hn::Set(u16, 1));
}

struct ArithmeticLanes : VectorLanes {
  template <class Scaling>
  static V8u scaled(Sum, Scaling scaling, V8u a, V8u b, int shift) {
    return shifted(scaling, hn::SaturatedAdd(a, b), shift);
  }

  /// A sum has nine bits, so it is halved first. With a shift of 1 the rounded average is the result.
  /// With more the half is rounded down (the rounded average less what it rounded up), and the rest of
  /// the shift follows.
  static V8u scaled(Sum, ShiftRight scaling, V8u a, V8u b, int shift) {
    const V8u average = hn::AverageRound(a, b);
    if (shift == 1) return average;
    const V8u roundedUp = hn::And(hn::Xor(a, b), hn::Set(u8, 1));
    return shifted(scaling, hn::Sub(average, roundedUp), shift - 1);
  }

  template <class Scaling>
  static V8u scaled(Difference, Scaling scaling, V8u a, V8u b, int shift) {
    return shifted(scaling, hn::SaturatedSub(a, b), shift);
  }

  template <class Scaling>
  static V8u scaled(Product, Scaling scaling, V8u a, V8u b, int shift) {
    const V16u even = hn::Mul(evenBytes(u16, a), evenBytes(u16, b));
    const V16u odd = hn::Mul(oddBytes(u16, a), oddBytes(u16, b));
    return joinBytes(shifted(scaling, even, shift), shifted(scaling, odd, shift));
  }

  static V8u mulScale(V8u a, V8u b) {
    return joinHighBytes(timesScale(evenBytes(u16, a), evenBytes(u16, b)),
                         timesScale(oddBytes(u16, a), oddBytes(u16, b)));
  }
};

}  // namespace

constexpr ArithmeticKernels arithmeticKernels = arithmeticKernelsOf<ArithmeticLanes>();

}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();
