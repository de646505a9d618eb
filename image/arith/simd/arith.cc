#include "image/arith/arith_kernels.h"
#include "image/arith/arith_ops.h"
#include "image/arith/simd/pointwise.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

Sample one() {
  return hn::Set(bytes, 1);
}

// Scaling of saturated bytes. Rounding half up: (e + 2^(s - 1)) >> s = ((e >> (s - 1)) + 1) >> 1,
// and (x + 1) >> 1 is the rounded average with zero.
Sample shifted(Plain, Sample v, int) {
  return v;
}
Sample shifted(ShiftRight, Sample v, int shift) {
  return hn::AverageRound(shiftRight(v, shift - 1), hn::Zero(bytes));
}
Sample shifted(ShiftLeft, Sample v, int shift) {
  const Sample leastTooLarge = hn::Set(bytes, static_cast<Vek8u>((255 >> shift) + 1));
  const Sample tooLarge = hn::VecFromMask(bytes, hn::Eq(hn::Max(v, leastTooLarge), v));
  return hn::Or(shiftLeft(v, shift), tooLarge);
}

// Scaling of products, in 16-bit lanes: 65025 comes in at most.
Words saturated(Words v) {
  return hn::Min(v, hn::Set(words, 255));
}
Words shifted(Plain, Words v, int) {
  return saturated(v);
}
Words shifted(ShiftRight, Words v, int shift) {
  const Words doubled = hn::ShiftRightSame(v, shift - 1);
  return saturated(hn::ShiftRight<1>(hn::Add(doubled, hn::Set(words, 1))));
}
Words shifted(ShiftLeft, Words v, int shift) {
  return saturated(hn::ShiftLeftSame(saturated(v), shift));
}

template <class Scaling>
Sample scaled(Sum, Scaling scaling, Sample a, Sample b, int shift) {
  return shifted(scaling, hn::SaturatedAdd(a, b), shift);
}

/// A sum has nine bits. Halving it once fits a byte: rounded when that is all, else downwards (the
/// rounded average less what it rounded up), with the rest of the shift to follow.
Sample scaled(Sum, ShiftRight scaling, Sample a, Sample b, int shift) {
  const Sample average = hn::AverageRound(a, b);
  if (shift == 1) return average;
  return shifted(scaling, hn::Sub(average, hn::And(hn::Xor(a, b), one())), shift - 1);
}

template <class Scaling>
Sample scaled(Difference, Scaling scaling, Sample a, Sample b, int shift) {
  return shifted(scaling, hn::SaturatedSub(a, b), shift);
}

template <class Scaling>
Sample scaled(Product, Scaling scaling, Sample a, Sample b, int shift) {
  const Words even = hn::Mul(evenSamples(a), evenSamples(b));
  const Words odd = hn::Mul(oddSamples(a), oddSamples(b));
  return joinSamples(shifted(scaling, even, shift), shifted(scaling, odd, shift));
}

/// p + (p >> 8) + 1 is at most 65280.
Words timesScale(Words a, Words b) {
  const Words p = hn::Mul(a, b);
  return hn::Add(hn::Add(p, hn::ShiftRight<8>(p)), hn::Set(words, 1));
}

Sample mulScale(Sample a, Sample b) {
  const Words even = timesScale(evenSamples(a), evenSamples(b));
  const Words odd = timesScale(oddSamples(a), oddSamples(b));
  return hn::BitCast(bytes, hn::Or(hn::ShiftRight<8>(even), hn::And(odd, hn::Set(words, 0xFF00))));
}

}  // namespace
}  // namespace vek::VEK_LEVEL

#include "image/arith/arith_table.h"

HWY_AFTER_NAMESPACE();
