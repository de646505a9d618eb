// 16.16 sampling phases shared by the resize functions.
#pragma once

#include "vek/vek.h"

namespace vek {

inline constexpr Vek32u oneSample = 65536;   ///< one source sample in 16.16
inline constexpr Vek32u halfSample = 32768;  ///< where nearest sampling starts

/// Whether `step` would carry the last sample of `dstSize` past the end of `srcSize`. The limit is
/// ((srcSize & ~1) - 1) * 65536 / ((dstSize & ~1) - 1), the product taken modulo 2^32 and read as
/// signed; sizes below 2 have no second sample and always fail.
inline bool stepTooLarge(int step, int srcSize, int dstSize) {
  if (srcSize < 2 || dstSize < 2) return true;
  const Vek32u last = static_cast<Vek32u>((srcSize & ~1) - 1);
  return step > static_cast<Vek32s>(last << 16) / ((dstSize & ~1) - 1);
}

}  // namespace vek
