// Blends and look-ups of samples in NEON's own instructions. Empty elsewhere.
#pragma once

#include "core/kernel/neon_memory.h"

#if HWY_ARCH_ARM

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

/// As in resample.cc. The high product is half of what NEON's doubling product has, rounded down, and is
/// shifted as it is added.
inline V16s blend(V16s a, V16s b, V16s fraction) {
  const V16s difference = hn::Sub(b, a);
  const V16s missing = hn::And(difference, hn::BroadcastSignBit(fraction));
  return V16s{vsraq_n_s16(hn::Add(a, missing).raw, vqdmulhq_s16(difference.raw, fraction.raw), 1)};
}

/// The bytes of `count` that `order` names, 0 for others: 16 or 32.
template <int count>
V8u lookUpWindow(const Vek8u* src, V8u order) {
  static_assert(count == 16 || count == 32);
#if HWY_ARCH_ARM_A64
  if constexpr (count == 16) return V8u{vqtbl1q_u8(vld1q_u8(src), order.raw)};
  const uint8x16x2_t table = {{vld1q_u8(src), vld1q_u8(src + 16)}};
  return V8u{vqtbl2q_u8(table, order.raw)};
#elif VEK_NEON_BY_NAME
  uint8x16_t v;
  if constexpr (count == 16) {
    asm("vld1.8 {d0, d1}, [%[src]]\n\t"
        "vtbl.8 %e[v], {d0, d1}, %e[order]\n\t"
        "vtbl.8 %f[v], {d0, d1}, %f[order]"
        : [v] "=&w"(v)
        : [src] "r"(src), [order] "w"(order.raw), VEK_NEON_READS(16)
        : "q0");
  } else {
    asm("vld1.8 {d0-d3}, [%[src]]\n\t"
        "vtbl.8 %e[v], {d0-d3}, %e[order]\n\t"
        "vtbl.8 %f[v], {d0-d3}, %f[order]"
        : [v] "=&w"(v)
        : [src] "r"(src), [order] "w"(order.raw), VEK_NEON_READS(32)
        : "q0", "q1");
  }
  return V8u{v};
#else
  if constexpr (count == 16) {
    const uint8x8x2_t table = {{vld1_u8(src), vld1_u8(src + 8)}};
    return V8u{vcombine_u8(vtbl2_u8(table, vget_low_u8(order.raw)),
                           vtbl2_u8(table, vget_high_u8(order.raw)))};
  }
  const uint8x8x4_t table = {
      {vld1_u8(src), vld1_u8(src + 8), vld1_u8(src + 16), vld1_u8(src + 24)}};
  return V8u{vcombine_u8(vtbl4_u8(table, vget_low_u8(order.raw)),
                         vtbl4_u8(table, vget_high_u8(order.raw)))};
#endif
}

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();

#endif
