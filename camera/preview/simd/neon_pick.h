// Samples at whole strides of up to four bytes by NEON's loads, which separate them. Empty elsewhere.
#pragma once

#include "core/assert.h"
#include "core/kernel/lanes.h"

#if HWY_ARCH_ARM

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

/// val[k] has bytes k, k + stride, k + 2 stride ... of as many vectors.
template <int stride>
auto loadSeparated(const Vek8u* src) {
  if constexpr (stride == 2) return vld2q_u8(src);
  if constexpr (stride == 3) return vld3q_u8(src);
  if constexpr (stride == 4) return vld4q_u8(src);
}

/// dst[i] = src[i * stride] for i < n, n > vectorBytes. No policy serves because the last vectors, too,
/// end with the last sample: they are loaded so that the samples are the last of their groups.
template <int stride>
void pickSeparated(const Vek8u* src, ptrdiff_t n, Vek8u* dst) {
  VEK_ASSERT(n > vectorBytes);
  Vek8u* const last = dst + (n - vectorBytes);
  const Vek8u* const lastSrc = src + (n - vectorBytes) * stride - (stride - 1);
  for (; dst < last; dst += vectorBytes, src += vectorBytes * stride) {
    vst1q_u8(dst, loadSeparated<stride>(src).val[0]);
  }
  vst1q_u8(last, loadSeparated<stride>(lastSrc).val[stride - 1]);
}

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();

#endif
