// Sums of two byte products in 16-bit lanes, and the way back to bytes. Both keep to their 128 bits
// of a vector, as interleaving does: what InterleaveLower and InterleaveUpper of two byte vectors
// put in two vectors, packClamped brings back in the order of the original.
#pragma once

#include "core/kernel/vector.h"

#if VEK_HAVE_HIGHWAY

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

using PairBytes = hn::ScalableTag<Vek8u>;
using PairWords = hn::ScalableTag<Vek16s>;

/// Each even byte times its coefficient (a signed byte) plus the odd byte after it times its own.
/// The sums must stay within 16 bits.
inline hn::Vec<PairWords> sumOfPairs(hn::Vec<PairBytes> v, hn::Vec<PairBytes> coefficients) {
#if defined(__AVX512BW__)
  return hn::Vec<PairWords>{_mm512_maddubs_epi16(v.raw, coefficients.raw)};
#elif defined(__AVX2__)
  return hn::Vec<PairWords>{_mm256_maddubs_epi16(v.raw, coefficients.raw)};
#else
  constexpr PairWords words;
  constexpr hn::RebindToUnsigned<PairWords> uwords;
  const auto bytePairs = hn::BitCast(uwords, v);
  const auto signedPairs = hn::BitCast(words, coefficients);
  const auto even = hn::BitCast(words, hn::And(bytePairs, hn::Set(uwords, 255)));
  const auto odd = hn::BitCast(words, hn::ShiftRight<8>(bytePairs));
  return hn::Add(hn::Mul(even, hn::ShiftRight<8>(hn::ShiftLeft<8>(signedPairs))),
                 hn::Mul(odd, hn::ShiftRight<8>(signedPairs)));
#endif
}

/// Clamped to 0 .. 255.
inline hn::Vec<PairBytes> packClamped(hn::Vec<PairWords> lower, hn::Vec<PairWords> upper) {
#if defined(__AVX512BW__)
  return hn::Vec<PairBytes>{_mm512_packus_epi16(lower.raw, upper.raw)};
#elif defined(__AVX2__)
  return hn::Vec<PairBytes>{_mm256_packus_epi16(lower.raw, upper.raw)};
#else
  static_assert(hn::MaxLanes(PairBytes()) == 16);
  constexpr hn::Half<PairBytes> half;
  return hn::Combine(PairBytes(), hn::DemoteTo(half, upper), hn::DemoteTo(half, lower));
#endif
}

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();

#endif
