#include "core/assert.h"
#include "image/color/combination_lanes.h"
#include "image/color/neon_combination.h"
#include "image/color/twist_kernels.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

template <int shift>
void gray(ptrdiff_t n, const Vek8u* src, Vek8u* dst, const Combination& c) {
  VEK_ASSERT(n >= 1);
  const CombinationLanes<shift> weights(c);
  const auto body = [&](Vek8u* out, const Vek8u* in) {
    hn::StoreU(inOrder(weights.packed(loadPairs(in))), u8, out);
  };
  copiedBlocks<vectorBytes>(n, body, Out<1>{dst}, In<3>{src});
}

#if HWY_ARCH_ARM

constexpr Combination roundedLuma = {
    {lumaWeights.weight[0], lumaWeights.weight[1], lumaWeights.weight[2]}, 512};

void luma(ptrdiff_t n, const Vek8u* src, Vek8u* dst) {
  VEK_ASSERT(n >= 1);
  const Advancing body{[](Vek8u*& out, const Vek8u*& in) {
    HalvesOfBytes y = NeonCombination<roundedLuma>::of(loadPixels(in));
    storeInOrder(y.lower, y.upper, out);
  }};
  copiedBlocks<vectorBytes>(n, body, Out<1>{dst}, In<3>{src});
}

#else

void luma(ptrdiff_t n, const Vek8u* src, Vek8u* dst) {
  gray<10>(n, src, dst, lumaWeights);
}

#endif

void twist(ptrdiff_t n, const Vek8u* src, Vek8u* dst, const Combination* channels) {
  VEK_ASSERT(n >= 1);
  const TwistLanes<10> matrix(channels);
  convertPixelPairs(n, src, dst, [&](const PixelPairs& p) { return matrix.of(p); });
}

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();

namespace vek::VEK_LEVEL {

constexpr TwistKernels twistKernels = {.luma = luma, .grayQ14 = gray<14>, .twistQ10 = twist};

}  // namespace vek::VEK_LEVEL
