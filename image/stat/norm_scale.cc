#include "image/stat/norm_scale.h"

namespace vek {
namespace {

int clamp(int v, int low, int high) {
  return v < low ? low : v > high ? high : v;
}

int bitLength(uint64_t v) {
  int bits = 0;
  for (; v != 0; v >>= 1) ++bits;
  return bits;
}

/// floor(sqrt(v)), two bits of v a step from the top.
uint64_t squareRoot(uint64_t v) {
  uint64_t root = 0;
  uint64_t bit = uint64_t{1} << 62;
  while (bit > v) bit >>= 2;
  for (; bit != 0; bit >>= 2) {
    const bool set = v >= root + bit;
    if (set) v -= root + bit;
    root = (root >> 1) + (set ? bit : 0);
  }
  return root;
}

struct Quotient {
  uint64_t value;
  bool fits;
};

/// floor(n / d * 2^shift), a bit at a time beyond the integer part.
Quotient shiftedQuotient(uint64_t n, uint64_t d, int shift) {
  uint64_t quotient = n / d;
  if (shift < 0) return {shift > -64 ? quotient >> -shift : 0, true};
  uint64_t remainder = n % d;
  for (; shift > 0; --shift) {
    if (quotient >> 63 != 0) return {0, false};
    const bool carry = remainder >= d - remainder;  // 2 * remainder >= d
    remainder = carry ? remainder - (d - remainder) : 2 * remainder;
    quotient = 2 * quotient + carry;
  }
  return {quotient, true};
}

/// sqrt(n / d) * 2^-scaleFactor to the nearest, halves up: with y for that, floor(y + 1/2) =
/// (floor(2 y) + 1) >> 1, and floor(2 y) is the root of floor(n / d * 2^(2 - 2 scaleFactor)). When
/// the latter leaves 64 bits, 2 y is 2^32 or more. Returns whether the result fits.
bool roundedRoot(uint64_t n, uint64_t d, int scaleFactor, Vek32s* result) {
  *result = maxNorm;
  // Roots are below 2^32 and, unless 0, above 2^-32: outside of these all results are alike.
  const int shift = 2 - 2 * clamp(scaleFactor, -64, 34);
  const Quotient q = shiftedQuotient(n, d, shift);
  if (!q.fits) return false;
  const uint64_t rounded = (squareRoot(q.value) + 1) >> 1;
  if (rounded > maxNorm) return false;
  *result = static_cast<Vek32s>(rounded);
  return true;
}

}  // namespace

Vek32s scaleNorm(Vek32u v, int scaleFactor) {
  const Vek32u factor = static_cast<Vek32u>(scaleFactor);
  if (scaleFactor >= 0) {
    const Vek32u amount = factor & 255;
    return static_cast<Vek32s>(v >> (amount < 32 ? amount : 31));
  }
  const Vek32u amount = (0 - factor) & 255;
  return static_cast<Vek32s>(amount < 32 ? v << amount : 0);
}

bool scaleRoot(uint64_t squares, int scaleFactor, Vek32s* result) {
  return roundedRoot(squares, 1, scaleFactor, result);
}

VekStatus relativeInf(uint64_t d, uint64_t r, int scaleFactor, Vek32s* result) {
  if (scaleFactor >= 0) {
    // @quirk Rounds at scale factor 0, whatever it is; q is at most 255 * 256 + 128.
    const uint64_t q = d * 256 / r + 128;
    *result = static_cast<Vek32s>(scaleFactor < 24 ? q >> (scaleFactor + 8) : 0);
    return vekStsNoErr;
  }
  // d / r is at least 1 / 255: shifted by more than 40 it cannot fit, by 40 nothing overflows.
  const uint64_t q = scaleFactor < -40 ? UINT64_MAX : (d << (1 - scaleFactor)) / r;
  const uint64_t rounded = (q >> 1) + (q & 1);
  *result = rounded > maxNorm ? static_cast<Vek32s>(maxNorm) : static_cast<Vek32s>(rounded);
  return vekStsNoErr;
}

VekStatus relativeL1(uint64_t d, uint64_t r, int scaleFactor, Vek32s* result) {
  // The numerator has up to 63 bits. What d cannot be shifted left by, r is shifted right by.
  const int64_t bits = bitLength(d);
  const int64_t wanted = int64_t{1} - scaleFactor;
  const int64_t excess = bits + wanted - 63;
  if (excess > 0) {
    r = excess < 32 ? r >> excess : 0;
    d <<= 63 - bits;
  } else if (wanted >= 0) {
    d <<= wanted;
  } else {
    d = wanted > -32 ? d >> -wanted : 0;
  }
  *result = static_cast<Vek32s>(r == 0 ? maxNorm : static_cast<Vek32u>((d / r + 1) >> 1));
  return vekStsNoErr;
}

VekStatus relativeL2(uint64_t d, uint64_t r, int scaleFactor, Vek32s* result) {
  return roundedRoot(d, r, scaleFactor, result) ? vekStsNoErr : vekStsSqrtWrn;
}

}  // namespace vek
