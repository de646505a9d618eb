// Division of vectors of sums by a divisor that all of them share.
#pragma once

#include "vek/vek.h"

#include <stdint.h>

#include "core/kernel/lanes.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

/// Quotients v / divisor, rounded to nearest, for divisors of 2 to 4096. Quotients of 0 .. 255 are
/// exact; of others it is certain only on which side of that range they lie, so the caller clamps
/// them. Halves go where integer arithmetic takes them: up for a divisor of 2^k, and otherwise as
/// in (v * factor + 2^31) >> 32 with a factor of 2^32 / divisor, rounded to nearest.
///
/// The sums that matter are below 2^20, which floats hold exactly, and v * (1 / divisor) is off by
/// less than 2^-15. A true quotient is either a half, such as 1.5, or at least 1 / (2 * divisor)
/// away from one, which is 2^-13 or more. So a quarter of 1 / divisor, added to the 0.5 that rounds
/// or subtracted from it, decides where halves go and changes nothing else. With a divisor of 6 it
/// is 0.04: the sum 9 gives 1.5 + 0.54 or 1.5 + 0.46, truncated 2 or 1, but 8 gives 1.33 + 0.54 and
/// 10 gives 1.67 + 0.46, which are truncated to 1 and 2 either way.
class Quotients {
 public:
  static constexpr int mostDivisor = 4096;

  /// Halves go up, or down.
  Quotients(int divisor, bool up)
      : ratio_(hn::Set(f32, 1 / static_cast<float>(divisor))),
        offset_(hn::Set(f32, 0.5f + (up ? 0.25f : -0.25f) / static_cast<float>(divisor))) {}

  /// Whether the integer formula takes halves up: its factor was rounded up or is exact.
  static bool roundsUp(Vek32u factor, int divisor) {
    return factor * static_cast<Vek32u>(divisor) < 0x80000000u;
  }

  V32s of(V32s v) const { return truncated(hn::MulAdd(hn::ConvertTo(f32, v), ratio_, offset_)); }

 private:
  V32f ratio_, offset_;
};

/// (v * factor + 2^31) >> 32 in each lane.
inline V32u mulHighRounded(V32u v, V32u factor) {
  const V64u half = hn::Set(u64, 0x80000000u);
  const V64u even = hn::ShiftRight<32>(hn::Add(hn::MulEven(v, factor), half));
  const V32u odds = hn::BitCast(u32, hn::ShiftRight<32>(hn::BitCast(u64, v)));
  const V64u odd = hn::Add(hn::MulEven(odds, factor), half);
  return hn::OddEven(hn::BitCast(u32, odd), hn::BitCast(u32, even));
}

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();
