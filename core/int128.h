// Signed integers of 128 bits, since not every compiler has them for 32-bit processors.
#pragma once

#include <stdint.h>

#include "core/assert.h"

namespace vek {

/// In two's complement, low + 2^64 high. Results count modulo 2^128.
struct Int128 {
  uint64_t low;
  uint64_t high;

  Int128() = default;
  constexpr Int128(uint64_t lowWord, uint64_t highWord) : low(lowWord), high(highWord) {}
  constexpr Int128(int64_t v) : low(static_cast<uint64_t>(v)), high(v < 0 ? ~uint64_t{0} : 0) {}

  constexpr bool isNegative() const { return high >> 63 != 0; }
};

constexpr Int128 operator+(Int128 a, Int128 b) {
  const uint64_t low = a.low + b.low;
  return {low, a.high + b.high + (low < a.low ? 1 : 0)};
}

constexpr Int128 operator-(Int128 a) {
  return {~a.low + 1, ~a.high + (a.low == 0 ? 1 : 0)};
}

/// The product of two unsigned numbers, from those of their halves.
constexpr Int128 product(uint64_t a, uint64_t b) {
  const uint64_t half = 0xFFFFFFFF;
  const uint64_t lowLow = (a & half) * (b & half), highHigh = (a >> 32) * (b >> 32);
  const uint64_t lowHigh = (a & half) * (b >> 32), highLow = (a >> 32) * (b & half);
  // At most 3 (2^32 - 1): the bits 32 .. 63 of the product, and what they carry.
  const uint64_t middle = (lowLow >> 32) + (lowHigh & half) + (highLow & half);
  return {middle << 32 | (lowLow & half),
          highHigh + (lowHigh >> 32) + (highLow >> 32) + (middle >> 32)};
}

constexpr Int128 operator*(Int128 a, int64_t b) {
  Int128 result = product(a.low, static_cast<uint64_t>(b));
  // As an unsigned number, a negative b is 2^64 too high.
  result.high += a.high * static_cast<uint64_t>(b) - (b < 0 ? a.low : 0);
  return result;
}

/// The nearest double, halves to even. abs(v) is below 2^127.
inline double toDouble(Int128 v) {
  const Int128 positive = v.isNegative() ? -v : v;
  VEK_ASSERT(!positive.isNegative());
  double result = static_cast<double>(positive.low);
  if (positive.high != 0) {
    // The highest 64 bits, of which the last one also tells whether bits below it are set: they are
    // rounded to 53 bits as the whole number would be.
    const int zeros = __builtin_clzll(positive.high);
    const uint64_t rest = positive.low << zeros;
    const uint64_t top = positive.high << zeros | positive.low >> (64 - zeros);
    result = static_cast<double>(top | (rest != 0 ? 1 : 0)) *
             static_cast<double>(uint64_t{1} << (64 - zeros));
  }
  return v.isNegative() ? -result : result;
}

}  // namespace vek
