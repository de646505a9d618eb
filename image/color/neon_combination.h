// Linear combinations of bytes that are known when they are compiled, by NEON's products of bytes, whose
// sums have 16 bits. Empty elsewhere.
//
// A sum with 10 fractional bits takes 18 bits. Each weight is therefore split into 4 a + r: the sum of
// the a's has 8 fractional bits and fits 16 bits, and what the r's give is floored to a quarter of it,
// which halving additions of bytes do exactly: (2 c0 + c1 + c2) / 4 is floor((c0 + floor((c1 + c2) / 2))
// / 2).
//
// Example: Y = (306 R + 601 G + 117 B) >> 10 with 306 = 4 * 76 + 2, 601 = 4 * 150 + 1 and 117 = 4 * 29 +
// 1. For R = 200, G = 100 and B = 51, 76 R + 150 G + 29 B is 31679, and (2 R + G + B) / 4 is 137.75.
// (31679 + 137) >> 8 is 124, and (306 * 200 + 601 * 100 + 117 * 51) >> 10 is 127267 >> 10 = 124.
#pragma once

#include "core/kernel/interleave.h"
#include "core/kernel/lanes.h"
#include "core/kernel/neon_pixels.h"
#include "image/color/combination.h"

#if HWY_ARCH_ARM

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

/// The channels of eight pixels.
struct HalfChannels {
  uint8x8_t c0, c1, c2;
};

inline HalfChannels lowerHalf(const Channels& v) {
  return {vget_low_u8(v.c0.raw), vget_low_u8(v.c1.raw), vget_low_u8(v.c2.raw)};
}
inline HalfChannels upperHalf(const Channels& v) {
  return {vget_high_u8(v.c0.raw), vget_high_u8(v.c1.raw), vget_high_u8(v.c2.raw)};
}

// Bytes of whole and of half vectors.
inline uint8x16_t averageDown(uint8x16_t a, uint8x16_t b) {
  return vhaddq_u8(a, b);
}
inline uint8x8_t averageDown(uint8x8_t a, uint8x8_t b) {
  return vhadd_u8(a, b);
}
inline uint8x16_t averageUp(uint8x16_t a, uint8x16_t b) {
  return vrhaddq_u8(a, b);
}
inline uint8x8_t averageUp(uint8x8_t a, uint8x8_t b) {
  return vrhadd_u8(a, b);
}
inline uint8x16_t inverted(uint8x16_t v) {
  return vmvnq_u8(v);
}
inline uint8x8_t inverted(uint8x8_t v) {
  return vmvn_u8(v);
}
inline uint8x16_t halved(uint8x16_t v) {
  return vshrq_n_u8(v, 1);
}
inline uint8x8_t halved(uint8x8_t v) {
  return vshr_n_u8(v, 1);
}

/// (c0 w0 + c1 w1 + c2 w2 + offset) >> 10 of bytes, where that is 0 .. 255 for all of them.
template <const Combination& c>
class NeonCombination {
  static constexpr int rest(int i) { return static_cast<int>(c.weight[i] & 3); }
  /// Rests 2, 3, 3 would add up to more than a byte: they are counted as 2, -1, -1 then.
  static constexpr bool isMixed = rest(0) + rest(1) + rest(2) > 4;
  static constexpr Vek32s factor(int i) {
    return (c.weight[i] - rest(i)) / 4 + (isMixed && rest(i) == 3 ? 1 : 0);
  }
  static constexpr Vek32s least(Vek32s w) { return w < 0 ? 255 * w : 0; }
  static constexpr Vek32s most(Vek32s w) { return w > 0 ? 255 * w : 0; }
  static_assert(least(c.weight[0]) + least(c.weight[1]) + least(c.weight[2]) + c.offset >= 0);
  static_assert(most(c.weight[0]) + most(c.weight[1]) + most(c.weight[2]) + c.offset < 256 << 10);
  static_assert(c.offset % 4 == 0);

 public:
  static HalvesOfBytes of(const Channels& v) {
    const uint8x16_t q = quarters(v.c0.raw, v.c1.raw, v.c2.raw);
    return {sum(lowerHalf(v), vget_low_u8(q)), sum(upperHalf(v), vget_high_u8(q))};
  }
  static uint8x8_t of(const HalfChannels& v) { return sum(v, quarters(v.c0, v.c1, v.c2)); }

 private:
  /// The rests' part in quarters, floored, plus 128 if it is mixed.
  template <class V>
  static V quarters(V c0, V c1, V c2) {
    constexpr int a = rest(0), b = rest(1), d = rest(2);
    if constexpr (isMixed) {
      // (2 c0 - c1 - c2) / 4 + 128 is (2 c0 + (255 - c1) + (255 - c2) + 2) / 4.
      static_assert(a == 2 && b == 3 && d == 3);
      return averageUp(c0, inverted(averageUp(c1, c2)));
    } else if constexpr (a == 2 && b == 1 && d == 1) {
      return averageDown(c0, averageDown(c1, c2));
    } else if constexpr (a == 3 && b == 0 && d == 0) {
      return averageDown(c0, halved(c0));
    } else if constexpr (a == 1 && b == 0 && d == 2) {
      return averageDown(c2, halved(c0));
    } else {
      static_assert(a == 0 && b == 2 && d == 2);
      return averageDown(c1, c2);
    }
  }

  template <int i>
  static uint16x8_t plus(uint16x8_t sum, uint8x8_t v) {
    if constexpr (factor(i) < 0) return vmlsl_u8(sum, v, vdup_n_u8(static_cast<Vek8u>(-factor(i))));
    return vmlal_u8(sum, v, vdup_n_u8(static_cast<Vek8u>(factor(i))));
  }

  /// Modulo 2^16.
  static uint8x8_t sum(const HalfChannels& v, uint8x8_t quarters) {
    uint16x8_t sum;
    if constexpr (factor(0) > 0) {
      sum = plus<2>(plus<1>(vmull_u8(v.c0, vdup_n_u8(factor(0))), v.c1), v.c2);
    } else {
      sum = plus<1>(plus<0>(vmull_u8(v.c2, vdup_n_u8(factor(2))), v.c0), v.c1);
    }
    sum = vaddw_u8(sum, quarters);
    constexpr Vek32s start = c.offset / 4 - (isMixed ? 128 : 0);
    if constexpr (start == 0) return vshrn_n_u16(sum, 8);
    if constexpr (start == 128) return vrshrn_n_u16(sum, 8);
    return vaddhn_u16(sum, vdupq_n_u16(start));
  }
};

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();

#endif
