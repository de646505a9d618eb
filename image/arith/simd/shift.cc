#include "image/arith/shift_body.h"
#include "image/arith/simd/pointwise.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

/// Each amount, 0..8, replaced by its table entry.
V8u lookUp(const Vek8u (&table)[16], V8u amounts) {
  return hn::TableLookupBytes(hn::LoadDup128(u8, table), amounts);
}

// Vectors have no shift of each byte by an amount of its own. The bytes are multiplied by a power of
// two in 16-bit lanes instead, and the result is the low or the high byte of the product.
struct ShiftLanes : VectorLanes {
  static V8u right(V8u v, int amount) { return shiftBytesRight(v, amount); }
  static V8u left(V8u v, int amount) { return shiftBytesLeft(v, amount); }

  /// v * 2^(8 - amount) >> 8. The table holds 2^(8 - amount) - 1, since 256 does not fit a byte.
  static V8u right(V8u v, V8u amounts) {
    alignas(16) static constexpr Vek8u table[16] = {255, 127, 63, 31, 15, 7, 3, 1};
    const V8u factors = lookUp(table, amounts);
    const V16u one = hn::Set(u16, 1);
    const V16u even = hn::Mul(evenBytes(u16, v), hn::Add(evenBytes(u16, factors), one));
    const V16u odd = hn::Mul(oddBytes(u16, v), hn::Add(oddBytes(u16, factors), one));
    return joinHighBytes(even, odd);
  }

  /// v * 2^amount modulo 256. The low byte of a product depends on the low bytes alone.
  static V8u left(V8u v, V8u amounts) {
    alignas(16) static constexpr Vek8u table[16] = {1, 2, 4, 8, 16, 32, 64, 128};
    const V8u factors = lookUp(table, amounts);
    const V16u even = hn::Mul(hn::BitCast(u16, v), hn::BitCast(u16, factors));
    const V16u odd = hn::Mul(oddBytes(u16, v), oddBytes(u16, factors));
    return joinBytes(hn::And(even, hn::Set(u16, 0xFF)), odd);
  }
};

}  // namespace

constexpr ShiftKernels shiftKernels = shiftKernelsOf<ShiftLanes>();

}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();
