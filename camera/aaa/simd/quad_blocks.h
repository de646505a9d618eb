// The walk over a window's quads in blocks of a vector or two, and the sum of what its bodies add up.
// Half a quad, the two samples that it has in one row, is a 32-bit lane with the second one on top.
#pragma once

#include "core/kernel/blocks.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

/// Calls body(top, bottom) for every `quads` quads of a w x h window, with the addresses of their
/// samples in both rows. The last, shorter block of a row pair comes as copies that end in zeros,
/// so a body must not count a quad of zeros.
///
/// This is copiedBlocks() for two source rows, except that it is inlined: the bodies add to sums that
/// live in registers from the first row to the last, which a call for every row pair would store.
template <int quads, class Body>
void forEachQuadBlock(const Vek16u* pWin, int srcStep, int w, int h, Body body) {
  VEK_ASSERT(srcStep % 2 == 0);
  constexpr ptrdiff_t halfQuad = 2 * sizeof(Vek16u);
  constexpr ptrdiff_t block = quads * halfQuad;
  const ptrdiff_t rowBytes = w / 2 * halfQuad;
  const Vek8u* top = reinterpret_cast<const Vek8u*>(pWin);
  for (int pairs = h / 2; pairs > 0; --pairs, top += 2 * ptrdiff_t{srcStep}) {
    const Vek8u* bottom = top + srcStep;
    ptrdiff_t x = 0;
    for (; x + block <= rowBytes; x += block) body(top + x, bottom + x);
    if (x < rowBytes) {
      body(PaddedBlock<block>(top + x, rowBytes - x).data,
           PaddedBlock<block>(bottom + x, rowBytes - x).data);
    }
  }
}

/// acc + the products of lanes, added up in any order.
inline V32s plusProducts(V32s acc, V16s a, V16s b) {
#if HWY_ARCH_X86
  return plusDot(acc, a, b);
#else
  V32s upper = hn::Zero(s32);
  acc = hn::ReorderWidenMulAccumulate(s32, a, b, acc, upper);
  return hn::Add(acc, upper);
#endif
}

/// The sum of all lanes modulo 2^32. Highway's own sum may add signed numbers, which must not
/// overflow.
template <class D>
Vek32u sumOfLanes(D d, hn::Vec<D> v) {
  alignas(64) hn::TFromD<D> lanes[hn::MaxLanes(D())];
  hn::Store(v, d, lanes);
  Vek32u sum = 0;
  for (hn::TFromD<D> lane : lanes) sum += static_cast<Vek32u>(lane);
  return sum;
}

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();
