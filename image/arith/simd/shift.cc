#include "image/arith/shift_kernels.h"
#include "image/arith/simd/pointwise.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

// Bytes have no shift by an amount of their own: they are multiplied by a power of two in 16-bit
// lanes, and the result is the low or the high byte of the product.

/// Each amount, 0..8, replaced by its table entry.
Sample lookUp(const Vek8u (&table)[16], Sample amounts) {
  return hn::TableLookupBytes(hn::LoadDup128(bytes, table), amounts);
}

/// v * 2^(8 - amount) >> 8. The table holds 2^(8 - amount) - 1, since 256 is no byte.
Sample shiftRight(Sample v, Sample amounts) {
  alignas(16) static constexpr Vek8u table[16] = {255, 127, 63, 31, 15, 7, 3, 1};
  const Sample factors = lookUp(table, amounts);
  const Words one = hn::Set(words, 1);
  const Words even = hn::Mul(evenSamples(v), hn::Add(evenSamples(factors), one));
  const Words odd = hn::Mul(oddSamples(v), hn::Add(oddSamples(factors), one));
  return hn::BitCast(bytes, hn::Or(hn::ShiftRight<8>(even), hn::And(odd, hn::Set(words, 0xFF00))));
}

/// v * 2^amount modulo 256; the low byte of a product depends on the low bytes alone.
Sample shiftLeft(Sample v, Sample amounts) {
  alignas(16) static constexpr Vek8u table[16] = {1, 2, 4, 8, 16, 32, 64, 128};
  const Sample factors = lookUp(table, amounts);
  const Words even = hn::Mul(hn::BitCast(words, v), hn::BitCast(words, factors));
  const Words odd = hn::Mul(oddSamples(v), oddSamples(factors));
  return joinSamples(hn::And(even, hn::Set(words, 0xFF)), odd);
}

}  // namespace
}  // namespace vek::VEK_LEVEL

#include "image/arith/shift_table.h"

HWY_AFTER_NAMESPACE();
