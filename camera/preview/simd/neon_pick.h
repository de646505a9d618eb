// Samples at whole strides of up to four bytes by NEON's loads, which separate them. Empty elsewhere.
#pragma once

#include "core/assert.h"
#include "core/kernel/lanes.h"
#include "core/kernel/neon_memory.h"

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

/// A vector of samples; both pointers move on.
template <int stride>
void pickVector(const Vek8u*& src, Vek8u*& dst) {
#if VEK_NEON_BY_NAME
  constexpr int count = stride * vectorBytes;
  if constexpr (stride == 2) {
    asm("vld2.8 {d0-d3}, [%[src]]!\n\tvst1.8 {d0, d1}, [%[dst]]!"
        : [src] "+r"(src), [dst] "+r"(dst), VEK_NEON_WRITES(16)
        : VEK_NEON_READS(count)
        : "q0", "q1");
  } else if constexpr (stride == 3) {
    asm("vld3.8 {d0, d2, d4}, [%[src]]!\n\tvld3.8 {d1, d3, d5}, [%[src]]!\n\t"
        "vst1.8 {d0, d1}, [%[dst]]!"
        : [src] "+r"(src), [dst] "+r"(dst), VEK_NEON_WRITES(16)
        : VEK_NEON_READS(count)
        : "q0", "q1", "q2");
  } else {
    asm("vld4.8 {d0, d2, d4, d6}, [%[src]]!\n\tvld4.8 {d1, d3, d5, d7}, [%[src]]!\n\t"
        "vst1.8 {d0, d1}, [%[dst]]!"
        : [src] "+r"(src), [dst] "+r"(dst), VEK_NEON_WRITES(16)
        : VEK_NEON_READS(count)
        : "q0", "q1", "q2", "q3");
  }
#else
  vst1q_u8(dst, loadSeparated<stride>(src).val[0]);
  src += stride * vectorBytes;
  dst += vectorBytes;
#endif
}

/// dst[i] = src[i * stride] for i < n, n > vectorBytes. No policy serves because the last vectors, too,
/// end with the last sample: they are loaded so that the samples are the last of their groups.
template <int stride>
void pickSeparated(const Vek8u* src, ptrdiff_t n, Vek8u* dst) {
  VEK_ASSERT(n > vectorBytes);
  Vek8u* const last = dst + (n - vectorBytes);
  const Vek8u* const lastSrc = src + (n - vectorBytes) * stride - (stride - 1);
  while (dst < last) pickVector<stride>(src, dst);
  vst1q_u8(last, loadSeparated<stride>(lastSrc).val[stride - 1]);
}

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();

#endif
