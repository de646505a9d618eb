// What the hand-written filter kernels share: covering a row with blocks, and scaling sums.
#pragma once

#include "core/kernel/vector.h"

#if VEK_HAVE_HIGHWAY

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

/// Calls body(x) for blocks of `block` bytes that cover 0 .. n - 1, where n >= block; the last one
/// overlaps its neighbour. For kernels whose destination is not their source: what is written twice
/// is the same both times.
template <class Body>
void coverRow(ptrdiff_t n, ptrdiff_t block, Body body) {
  for (ptrdiff_t x = 0; x + block <= n; x += block) body(x);
  if (n % block != 0) body(n - block);
}

/// Signed words saturated to bytes, the two vectors' 128-bit blocks by turns: undoes InterleaveLower
/// and InterleaveUpper.
template <class V>
hn::Vec<hn::ScalableTag<Vek8u>> packWords(V low, V high) {
#if HWY_TARGET <= HWY_AVX3 && HWY_ARCH_X86
  return hn::Vec<hn::ScalableTag<Vek8u>>{_mm512_packus_epi16(low.raw, high.raw)};
#elif HWY_TARGET <= HWY_AVX2 && HWY_ARCH_X86
  return hn::Vec<hn::ScalableTag<Vek8u>>{_mm256_packus_epi16(low.raw, high.raw)};
#else
  constexpr hn::ScalableTag<Vek8u> bytes;
  constexpr hn::Half<decltype(bytes)> half;
  return hn::Combine(bytes, hn::DemoteTo(half, high), hn::DemoteTo(half, low));
#endif
}

/// (v * factor + 2^31) >> 32 in each lane.
template <class D, class V = hn::Vec<D>>
V mulHighRounded(D d32, V v, V factor) {
  const hn::Repartition<uint64_t, D> d64;
  const auto half = hn::Set(d64, 0x80000000u);
  const auto even = hn::ShiftRight<32>(hn::Add(hn::MulEven(v, factor), half));
  const V odds = hn::BitCast(d32, hn::ShiftRight<32>(hn::BitCast(d64, v)));
  const auto odd = hn::Add(hn::MulEven(odds, factor), half);
  return hn::OddEven(hn::BitCast(d32, odd), hn::BitCast(d32, even));
}

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();

#endif
