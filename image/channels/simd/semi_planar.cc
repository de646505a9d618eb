#include "core/kernel/blocks.h"
#include "core/kernel/neon_memory.h"
#include "image/channels/semi_planar_kernels.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

#if HWY_ARCH_ARM

void joinVectors(const Vek8u*& a, const Vek8u*& b, Vek8u*& to) {
  const uint8x16_t first = loadSixteen(a);
  storeAlternately(first, loadSixteen(b), to);
}

void splitVectors(const Vek8u*& from, Vek8u*& a, Vek8u*& b) {
  VectorsOfBytes v = loadSixteenPairs(from);
  storeSixteen(v.first, a);
  storeSixteen(v.second, b);
}

#else

void joinVectors(const Vek8u* a, const Vek8u* b, Vek8u* to) {
  hn::StoreInterleaved2(hn::LoadU(u8, a), hn::LoadU(u8, b), u8, to);
}

void splitVectors(const Vek8u* from, Vek8u* a, Vek8u* b) {
  V8u even, odd;
  hn::LoadInterleaved2(u8, from, even, odd);
  hn::StoreU(even, u8, a);
  hn::StoreU(odd, u8, b);
}

#endif

void join(const Vek8u* first, const Vek8u* second, ptrdiff_t n, Vek8u* pairs) {
  VEK_ASSERT(n >= 1);
  const Advancing body{[](const Vek8u*& a, const Vek8u*& b, Vek8u*& to) { joinVectors(a, b, to); }};
  copiedBlocks<vectorBytes>(n, body, In<1>{first}, In<1>{second}, Out<2>{pairs});
}

void split(const Vek8u* pairs, ptrdiff_t n, Vek8u* first, Vek8u* second) {
  VEK_ASSERT(n >= 1);
  const Advancing body{[](const Vek8u*& from, Vek8u*& a, Vek8u*& b) { splitVectors(from, a, b); }};
  copiedBlocks<vectorBytes>(n, body, In<2>{pairs}, Out<1>{first}, Out<1>{second});
}

}  // namespace

constexpr SemiPlanarKernels semiPlanarKernels = {.join = join, .split = split};

}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();
