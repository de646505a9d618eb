#include "image/color/twist_rows.h"

#include "core/kernel/vector.h"

#if VEK_HAVE_HIGHWAY

#include "image/color/dot_lanes.h"

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

template <int shift>
void gray(const Vek8u* src, Vek8u* dst, ptrdiff_t n, const Combination& c) {
  const CombinationLanes<shift> weights(c);
  const auto body = [&](Vek8u* out, const Vek8u* in) {
    hn::StoreU(inOrder(weights.packed(loadPairs(in))), byteLanes, out);
  };
  forEachBlock<pixelBlock>(n, body, Out<1>{dst}, In<3>{src});
}

void lumaRow(const Vek8u* src, Vek8u* dst, ptrdiff_t n) {
  gray<10>(src, dst, n, luma);
}

void twist(const Vek8u* src, Vek8u* dst, ptrdiff_t n, const Combination* channels) {
  const TwistLanes<10> matrix(channels);
  const auto body = [&](Vek8u* out, const Vek8u* in) { matrix.store(loadPairs(in), out); };
  forEachBlock<pixelBlock>(n, body, Out<3>{dst}, In<3>{src});
}

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();

namespace vek::VEK_LEVEL {

constexpr TwistRows twistRows = {lumaRow, gray<14>, twist};

}  // namespace vek::VEK_LEVEL

#else

#include "image/color/twist_body.h"

namespace vek::VEK_LEVEL {

constexpr TwistRows twistRows = {lumaRow, grayQ14<Vek32s>, twist<Vek32s>};

}  // namespace vek::VEK_LEVEL

#endif
