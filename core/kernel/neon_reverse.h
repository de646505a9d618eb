// Rows in reverse by NEON's loads and stores that separate bytes: what changes places does so by the order of
// the registers. Empty but for GCC on ARMv7.
#pragma once

#include "core/assert.h"
#include "core/kernel/neon_memory.h"

#if VEK_NEON_BY_NAME

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

/// Reverses 64 bytes of which `src` is at the last 32, and moves back. Byte 4 i + c is lane i of vector c,
/// which is reversed and becomes vector 3 - c, and its halves are stored in the other order. It takes
/// eight instructions, and twelve in plain vectors.
inline void reverse64(const Vek8u*& src, Vek8u*& dst) {
  asm("vld4.8 {d1, d3, d5, d7}, [%[src]], %[back]\n\t"
      "vld4.8 {d0, d2, d4, d6}, [%[src]], %[back]\n\t"
      "vrev64.8 q11, q0\n\t"
      "vrev64.8 q10, q1\n\t"
      "vrev64.8 q9, q2\n\t"
      "vrev64.8 q8, q3\n\t"
      "vst4.8 {d17, d19, d21, d23}, [%[dst]]!\n\t"
      "vst4.8 {d16, d18, d20, d22}, [%[dst]]!"
      : [src] "+r"(src), [dst] "+r"(dst), VEK_NEON_WRITES(64)
      : [back] "r"(-32), "m"(*reinterpret_cast<const Vek8u(*)[64]>(src - 32))
      : "q0", "q1", "q2", "q3", "q8", "q9", "q10", "q11");
}

/// dst[k] = src[31 - k].
inline void reverse32(const Vek8u* src, Vek8u* dst) {
  asm("vld2.8 {d0-d3}, [%[src]]\n\t"
      "vrev64.8 q3, q0\n\t"
      "vrev64.8 q2, q1\n\t"
      "vst2.8 {d5, d7}, [%[dst]]!\n\t"
      "vst2.8 {d4, d6}, [%[dst]]"
      : [dst] "+r"(dst), VEK_NEON_WRITES(32)
      : [src] "r"(src), VEK_NEON_READS(32)
      : "q0", "q1", "q2", "q3");
}

/// dst[k] = src[n - 1 - k] for k < n, n >= 32. This is the policy of overlapping blocks.
inline void reverseBytes(const Vek8u* src, ptrdiff_t n, Vek8u* dst) {
  VEK_ASSERT(n >= 32);
  Vek8u* const last = dst + (n - 32);
  const Vek8u* last32 = src + (n - 32);
  ptrdiff_t rest = n - 64;
  for (; rest >= 0; rest -= 64) reverse64(last32, dst);
  if (rest >= -32) reverse32(last32, dst);
  if (n % 32 != 0) reverse32(src, last);
}

/// dst[k] = src[15 - k] for pixels of three bytes; the destination moves back.
inline void reversePixels16(const Vek8u*& src, Vek8u*& dst) {
  asm("vld3.8 {d0, d2, d4}, [%[src]]!\n\t"
      "vld3.8 {d1, d3, d5}, [%[src]]!\n\t"
      "vrev64.8 q0, q0\n\t"
      "vrev64.8 q1, q1\n\t"
      "vrev64.8 q2, q2\n\t"
      "vst3.8 {d1, d3, d5}, [%[dst]]!\n\t"
      "vst3.8 {d0, d2, d4}, [%[dst]], %[back]"
      : [src] "+r"(src), [dst] "+r"(dst), VEK_NEON_WRITES(48)
      : [back] "r"(-48 - 24), VEK_NEON_READS(48)
      : "q0", "q1", "q2");
}

/// dst[k] = src[n - 1 - k] for pixels k < n of three bytes, n >= 16. This, too, is the policy of
/// overlapping blocks.
inline void reversePixels(const Vek8u* src, ptrdiff_t n, Vek8u* dst) {
  VEK_ASSERT(n >= 16);
  const Vek8u* last = src + 3 * (n - 16);
  Vek8u* to = dst + 3 * (n - 16);
  ptrdiff_t rest = n - 32;
  for (; rest >= 0; rest -= 32) {
    reversePixels16(src, to);
    reversePixels16(src, to);
  }
  if (rest >= -16) reversePixels16(src, to);
  if (n % 16 != 0) reversePixels16(last, dst);
}

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();

#endif
