// What the halving of chroma does to a block, by NEON's loads and stores that separate and join bytes. Empty
// elsewhere.
#pragma once

#include "core/kernel/neon_memory.h"

#if HWY_ARCH_ARM

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

inline void averageVectors(const Vek8u*& a, const Vek8u*& b, Vek8u*& to) {
  const uint8x16_t first = loadSixteen(a);
  storeSixteen(vrhaddq_u8(first, loadSixteen(b)), to);
}

/// As many groups as a vector has bytes.
inline void splitGroups(const Vek8u*& top, const Vek8u*& bottom, Vek8u*& topLuma,
                        Vek8u*& bottomLuma, Vek8u*& cb, Vek8u*& cr) {
  uint8x16x4_t upper = loadSixteenFours(top), lower = loadSixteenFours(bottom);  // Cb, Y0, Cr, Y1
  storeAlternately(upper.val[1], upper.val[3], topLuma);
  storeAlternately(lower.val[1], lower.val[3], bottomLuma);
  storeSixteen(vrhaddq_u8(upper.val[0], lower.val[0]), cb);
  storeSixteen(vrhaddq_u8(upper.val[2], lower.val[2]), cr);
}

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();

#endif
