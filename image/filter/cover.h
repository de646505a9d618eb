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
