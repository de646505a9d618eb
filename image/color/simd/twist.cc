#include "core/kernel/blocks.h"
#include "image/color/dot_lanes.h"
#include "image/color/twist_kernels.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

template <int shift>
void gray(const Vek8u* src, Vek8u* dst, ptrdiff_t n, const Combination& c) {
  const CombinationLanes<shift> weights(c);
  const auto body = [&](Vek8u* out, const Vek8u* in) {
    hn::StoreU(inOrder(weights.packed(loadPairs(in))), u8, out);
  };
  copiedBlocks<vectorBytes>(n, body, Out<1>{dst}, In<3>{src});
}

void lumaRow(const Vek8u* src, Vek8u* dst, ptrdiff_t n) {
  gray<10>(src, dst, n, luma);
}

void twist(const Vek8u* src, Vek8u* dst, ptrdiff_t n, const Combination* channels) {
  const TwistLanes<10> matrix(channels);
  convertPixelPairs(src, dst, n, [&](const PixelPairs& p) { return matrix.of(p); });
}

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();

namespace vek::VEK_LEVEL {

constexpr TwistKernels twistKernels = {lumaRow, gray<14>, twist};

}  // namespace vek::VEK_LEVEL
