// Raw frames and the windows in them, for the checks and walks of exposure and white balance.
#pragma once

#include "vek/vek.h"

#include <stddef.h>
#include <stdint.h>

#include "core/check.h"

namespace vek {

/// `alignment` is what the address and the step must be multiples of, in bytes.
inline bool isValidFrame(const Vek16u* pSrc, int srcStep, VekiSize roi, int alignment) {
  return pSrc != nullptr && !isMisaligned(pSrc, static_cast<uintptr_t>(alignment)) &&
         !isMisaligned(srcStep, alignment) && srcStep >= 2 * int64_t{roi.width} && !isEmpty(roi);
}

/// Whether a part of the window lies beyond the right or the bottom edge of the region.
inline bool leaves(const VekiRect& window, VekiSize roi) {
  return int64_t{window.x} + window.width > roi.width ||
         int64_t{window.y} + window.height > roi.height;
}

inline const Vek16u* windowStart(const Vek16u* pSrc, int srcStep, const VekiRect& window) {
  return pSrc + ptrdiff_t{window.y} * (srcStep / 2) + window.x;
}

}  // namespace vek
