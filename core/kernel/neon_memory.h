// NEON's loads and stores of several registers, which move their pointers on. Empty elsewhere.
//
// On ARMv7 these are instructions by name. GCC 12 has no loads and stores of 32 bytes in order. It adds to
// pointers by instructions of their own, and it moves registers that are to be stored together to places
// that follow each other; where these are named from the beginning, it calculates there. That is a fifth
// of short loops. Clang needs none of it.
//
// Around them, local structures of vectors are not const: GCC 12 keeps const ones in memory.
#pragma once

#include "core/kernel/lanes.h"

#if HWY_ARCH_ARM

#if HWY_ARCH_ARM_V7 && !defined(__clang__)
#define VEK_NEON_BY_NAME 1
#else
#define VEK_NEON_BY_NAME 0
#endif

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

/// A vector of bytes as two halves, which GCC 12 only puts side by side by moving them.
struct HalvesOfBytes {
  uint8x8_t lower, upper;
};

/// Two vectors that one load separates.
struct VectorsOfBytes {
  uint8x16_t first, second;
};

/// The bytes at each fourth place.
inline uint8x16x4_t loadSixteenFours(const Vek8u*& src) {
  src += 64;
  return vld4q_u8(src - 64);
}

#if VEK_NEON_BY_NAME

// The variables are the registers that the instructions name.
#define VEK_NEON_REGISTER(type, name) register type name asm(#name)

// The memory that an instruction touches.
#define VEK_NEON_READS(count) "m"(*reinterpret_cast<const Vek8u(*)[count]>(src))
#define VEK_NEON_WRITES(count) "=m"(*reinterpret_cast<Vek8u(*)[count]>(dst))

inline uint8x8_t loadEight(const Vek8u*& src) {
  uint8x8_t v;
  asm("vld1.8 {%P[v]}, [%[src]]!" : [v] "=w"(v), [src] "+r"(src) : VEK_NEON_READS(8));
  return v;
}

inline uint8x16_t loadSixteen(const Vek8u*& src) {
  uint8x16_t v;
  asm("vld1.8 {%e[v], %f[v]}, [%[src]]!" : [v] "=w"(v), [src] "+r"(src) : VEK_NEON_READS(16));
  return v;
}

/// The bytes at even places, then those at odd ones.
inline VectorsOfBytes loadSixteenPairs(const Vek8u*& src) {
  VEK_NEON_REGISTER(uint8x16_t, q8);
  VEK_NEON_REGISTER(uint8x16_t, q9);
  asm("vld2.8 {d16-d19}, [%[src]]!" : [src] "+r"(src), "=w"(q8), "=w"(q9) : VEK_NEON_READS(32));
  return {q8, q9};
}

/// The same of half as many.
inline HalvesOfBytes loadEightPairs(const Vek8u*& src) {
  uint8x16_t v;
  asm("vld2.8 {%e[v], %f[v]}, [%[src]]!" : [v] "=w"(v), [src] "+r"(src) : VEK_NEON_READS(16));
  return {vget_low_u8(v), vget_high_u8(v)};
}

inline void storeEight(uint8x8_t v, Vek8u*& dst) {
  asm("vst1.8 {%P[v]}, [%[dst]]!" : [dst] "+r"(dst), VEK_NEON_WRITES(8) : [v] "w"(v));
}

inline void storeSixteen(uint8x16_t v, Vek8u*& dst) {
  asm("vst1.8 {%e[v], %f[v]}, [%[dst]]!" : [dst] "+r"(dst), VEK_NEON_WRITES(16) : [v] "w"(v));
}

/// Eight bytes, then those of the second vector.
inline void storeInOrder(uint8x8_t first, uint8x8_t second, Vek8u*& dst) {
  VEK_NEON_REGISTER(uint8x8_t, d6) = first;
  VEK_NEON_REGISTER(uint8x8_t, d7) = second;
  asm("vst1.8 {d6, d7}, [%[dst]]!" : [dst] "+r"(dst), VEK_NEON_WRITES(16) : "w"(d6), "w"(d7));
}

/// Sixteen bytes, then those of the second vector.
inline void storeInOrder(uint8x16_t first, uint8x16_t second, Vek8u*& dst) {
  VEK_NEON_REGISTER(uint8x16_t, q2) = first;
  VEK_NEON_REGISTER(uint8x16_t, q3) = second;
  asm("vst1.8 {d4-d7}, [%[dst]]!" : [dst] "+r"(dst), VEK_NEON_WRITES(32) : "w"(q2), "w"(q3));
}

/// The bytes of both vectors alternately.
inline void storeAlternately(uint8x16_t even, uint8x16_t odd, Vek8u*& dst) {
  VEK_NEON_REGISTER(uint8x16_t, q2) = even;
  VEK_NEON_REGISTER(uint8x16_t, q3) = odd;
  asm("vst2.8 {d4-d7}, [%[dst]]!" : [dst] "+r"(dst), VEK_NEON_WRITES(32) : "w"(q2), "w"(q3));
}

/// The same of two pairs of half vectors.
inline void storeAlternately(const HalvesOfBytes& even, const HalvesOfBytes& odd, Vek8u*& dst) {
  VEK_NEON_REGISTER(uint8x8_t, d4) = even.lower;
  VEK_NEON_REGISTER(uint8x8_t, d5) = even.upper;
  VEK_NEON_REGISTER(uint8x8_t, d6) = odd.lower;
  VEK_NEON_REGISTER(uint8x8_t, d7) = odd.upper;
  asm("vst2.8 {d4-d7}, [%[dst]]!"
      : [dst] "+r"(dst), VEK_NEON_WRITES(32)
      : "w"(d4), "w"(d5), "w"(d6), "w"(d7));
}

/// The lanes of both vectors alternately.
inline void storeAlternately(uint16x8_t even, uint16x8_t odd, Vek8u*& dst) {
  VEK_NEON_REGISTER(uint16x8_t, q2) = even;
  VEK_NEON_REGISTER(uint16x8_t, q3) = odd;
  asm("vst2.16 {d4-d7}, [%[dst]]!" : [dst] "+r"(dst), VEK_NEON_WRITES(32) : "w"(q2), "w"(q3));
}

/// Pixels of three channels.
inline void storePixels(uint8x8_t c0, uint8x8_t c1, uint8x8_t c2, Vek8u*& dst) {
  VEK_NEON_REGISTER(uint8x8_t, d4) = c0;
  VEK_NEON_REGISTER(uint8x8_t, d5) = c1;
  VEK_NEON_REGISTER(uint8x8_t, d6) = c2;
  asm("vst3.8 {d4-d6}, [%[dst]]!"
      : [dst] "+r"(dst), VEK_NEON_WRITES(24)
      : "w"(d4), "w"(d5), "w"(d6));
}

inline void storePixels(uint8x16_t c0, uint8x16_t c1, uint8x16_t c2, Vek8u*& dst) {
  VEK_NEON_REGISTER(uint8x16_t, q1) = c0;
  VEK_NEON_REGISTER(uint8x16_t, q2) = c1;
  VEK_NEON_REGISTER(uint8x16_t, q3) = c2;
  asm("vst3.8 {d2, d4, d6}, [%[dst]]!\n\tvst3.8 {d3, d5, d7}, [%[dst]]!"
      : [dst] "+r"(dst), VEK_NEON_WRITES(48)
      : "w"(q1), "w"(q2), "w"(q3));
}

#else

inline uint8x8_t loadEight(const Vek8u*& src) {
  src += 8;
  return vld1_u8(src - 8);
}

inline uint8x16_t loadSixteen(const Vek8u*& src) {
  src += 16;
  return vld1q_u8(src - 16);
}

inline VectorsOfBytes loadSixteenPairs(const Vek8u*& src) {
  const uint8x16x2_t v = vld2q_u8(src);
  src += 32;
  return {v.val[0], v.val[1]};
}

inline HalvesOfBytes loadEightPairs(const Vek8u*& src) {
  const uint8x8x2_t v = vld2_u8(src);
  src += 16;
  return {v.val[0], v.val[1]};
}

inline void storeEight(uint8x8_t v, Vek8u*& dst) {
  vst1_u8(dst, v);
  dst += 8;
}

inline void storeSixteen(uint8x16_t v, Vek8u*& dst) {
  vst1q_u8(dst, v);
  dst += 16;
}

inline void storeInOrder(uint8x16_t first, uint8x16_t second, Vek8u*& dst) {
  vst1q_u8(dst, first);
  vst1q_u8(dst + 16, second);
  dst += 32;
}

inline void storeInOrder(uint8x8_t first, uint8x8_t second, Vek8u*& dst) {
  storeSixteen(vcombine_u8(first, second), dst);
}

inline void storeAlternately(uint8x16_t even, uint8x16_t odd, Vek8u*& dst) {
  const uint8x16x2_t both = {{even, odd}};
  vst2q_u8(dst, both);
  dst += 32;
}

inline void storeAlternately(const HalvesOfBytes& even, const HalvesOfBytes& odd, Vek8u*& dst) {
  storeAlternately(vcombine_u8(even.lower, even.upper), vcombine_u8(odd.lower, odd.upper), dst);
}

inline void storeAlternately(uint16x8_t even, uint16x8_t odd, Vek8u*& dst) {
  const uint16x8x2_t both = {{even, odd}};
  vst2q_u16(reinterpret_cast<Vek16u*>(dst), both);
  dst += 32;
}

inline void storePixels(uint8x8_t c0, uint8x8_t c1, uint8x8_t c2, Vek8u*& dst) {
  const uint8x8x3_t all = {{c0, c1, c2}};
  vst3_u8(dst, all);
  dst += 24;
}

inline void storePixels(uint8x16_t c0, uint8x16_t c1, uint8x16_t c2, Vek8u*& dst) {
  const uint8x16x3_t all = {{c0, c1, c2}};
  vst3q_u8(dst, all);
  dst += 48;
}

#endif

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();

#endif
