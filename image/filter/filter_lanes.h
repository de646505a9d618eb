// What the hand-written filter kernels share: bytes further along a row, and scaling sums.
#pragma once

#include "core/kernel/lanes.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

/// The bytes `distance` places further in the row of which these are neighbouring vectors.
template <int distance>
hn::Vec<hn::ScalableTag<Vek8u>> further(hn::Vec<hn::ScalableTag<Vek8u>> v,
                                        hn::Vec<hn::ScalableTag<Vek8u>> next) {
#if defined(__AVX512BW__)
  return hn::Vec<hn::ScalableTag<Vek8u>>{
      _mm512_alignr_epi8(_mm512_alignr_epi64(next.raw, v.raw, 2), v.raw, distance)};
#elif defined(__AVX2__)
  return hn::Vec<hn::ScalableTag<Vek8u>>{
      _mm256_alignr_epi8(_mm256_permute2x128_si256(v.raw, next.raw, 0x21), v.raw, distance)};
#else
  return hn::CombineShiftRightBytes<distance>(hn::ScalableTag<Vek8u>(), next, v);
#endif
}

/// Quotients by a divisor of 2 to 4096, rounded, as (v * factor + 2^31) >> 32 with a factor of
/// 2^32 / divisor, rounded, or as a shift gives them. The sums that matter are exact as floats, and
/// quotients are in error by less than 2^-15, while they are halves or at least 1 / (2 divisor)
/// away from halves: a quarter of 1 / divisor decides halves and nothing else.
class Quotients {
 public:
  static constexpr int mostDivisor = 4096;
  static constexpr hn::ScalableTag<Vek32s> dwords = {};
  static constexpr hn::ScalableTag<float> floats = {};
  using Dwords = hn::Vec<hn::ScalableTag<Vek32s>>;

  /// Halves round up, or down.
  Quotients(int divisor, bool up)
      : ratio_(hn::Set(floats, 1 / static_cast<float>(divisor))),
        offset_(hn::Set(floats, 0.5f + (up ? 0.25f : -0.25f) / static_cast<float>(divisor))) {}

  /// Whether the rounded factor is not below 2^32 / divisor.
  static bool roundsUp(Vek32u factor, int divisor) {
    return factor * static_cast<Vek32u>(divisor) < 0x80000000u;
  }

  Dwords of(Dwords v) const {
    return truncated(hn::MulAdd(hn::ConvertTo(floats, v), ratio_, offset_));
  }

 private:
  hn::Vec<hn::ScalableTag<float>> ratio_, offset_;
};

/// (v * factor + 2^31) >> 32 in each lane.
template <class D, class V = hn::Vec<D>>
V mulHighRounded(D d32, V v, V factor) {
  const hn::Repartition<uint64_t, D> d64;
  const auto half = hn::Set(d64, 0x80000000u);
  const auto even = hn::ShiftRight<32>(hn::Add(hn::MulEven(v, factor), half));
  const V odds = hn::BitCast(d32, hn::ShiftRight<32>(hn::BitCast(d64, v)));
  const auto odd = hn::Add(hn::MulEven(odds, factor), half);
  return hn::OddEven(hn::BitCast(d32, odd), hn::BitCast(d32, even));
}

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();
