#include "image/arith/shift_body.h"
#include "image/arith/simd/pointwise.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

struct ShiftLanes : VectorLanes {
  static V8u right(V8u v, int amount) { return shiftBytesRight(v, amount); }
  static V8u left(V8u v, int amount) { return shiftBytesLeft(v, amount); }

  /// With the factors doubled the result is the product's high byte. Doubled rather than the
  /// products, since factors that repeat stay in registers.
  static V8u scaledRight(V8u v, V8u factors) {
    const auto doubled = [](V16u f) { return hn::Add(f, f); };
    const V16u even = hn::Mul(evenBytes(u16, v), doubled(evenBytes(u16, factors)));
    const V16u odd = hn::Mul(oddBytes(u16, v), doubled(oddBytes(u16, factors)));
    return joinHighBytes(even, odd);
  }

  /// The low byte of a product depends on the low bytes alone.
  static V8u scaledLeft(V8u v, V8u factors) {
    const V16u even = hn::Mul(hn::BitCast(u16, v), hn::BitCast(u16, factors));
    const V16u odd = hn::Mul(oddBytes(u16, v), oddBytes(u16, factors));
    return joinBytes(hn::And(even, hn::Set(u16, 0xFF)), odd);
  }
};

}  // namespace

constexpr ShiftKernels shiftKernels = shiftKernelsOf<ShiftLanes>();

}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();
