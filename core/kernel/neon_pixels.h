// Loads of three-channel pixels as in interleave.h that move their pointers on. Empty elsewhere.
#pragma once

#include "core/kernel/interleave.h"
#include "core/kernel/neon_memory.h"

#if HWY_ARCH_ARM

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

#if VEK_NEON_BY_NAME

/// A block of pixels of three channels.
inline Channels loadPixels(const Vek8u*& src) {
  VEK_NEON_REGISTER(uint8x16_t, q8);
  VEK_NEON_REGISTER(uint8x16_t, q9);
  VEK_NEON_REGISTER(uint8x16_t, q10);
  asm("vld3.8 {d16, d18, d20}, [%[src]]!\n\tvld3.8 {d17, d19, d21}, [%[src]]!"
      : [src] "+r"(src), "=w"(q8), "=w"(q9), "=w"(q10)
      : VEK_NEON_READS(48));
  return {V8u{q8}, V8u{q9}, V8u{q10}};
}

#else

inline Channels loadPixels(const Vek8u*& src) {
  src += 48;
  return loadChannels(src - 48);
}

#endif

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();

#endif
