#include "camera/aaa/exposure_rows.h"

#include "camera/aaa/simd/quad_blocks.h"

#if VEK_HAVE_HIGHWAY

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

constexpr hn::ScalableTag<Vek8u> bytes;
constexpr hn::ScalableTag<Vek32u> halfQuads;  ///< two samples of a row: the second one is on top

Vek32u _vekiAEWnd_10RGGB(const Vek16u* pWin, int srcStep, int w, int h) {
  constexpr int block = static_cast<int>(hn::MaxLanes(halfQuads));
  const auto lowHalf = hn::Set(halfQuads, 0xFFFF);
  auto topGreen = hn::Zero(halfQuads);
  auto bottomGreen = hn::Zero(halfQuads);
  forEachQuadBlock<block>(pWin, srcStep, w, h, [&](const Vek8u* top, const Vek8u* bottom) {
    const auto redGreen = hn::BitCast(halfQuads, hn::LoadU(bytes, top));
    const auto greenBlue = hn::BitCast(halfQuads, hn::LoadU(bytes, bottom));
    topGreen = hn::Add(topGreen, hn::ShiftRight<16>(redGreen));
    bottomGreen = hn::Add(bottomGreen, hn::And(greenBlue, lowHalf));
  });
  return sumOfLanes(halfQuads, hn::Add(topGreen, bottomGreen));
}

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();

#else

#include "camera/aaa/exposure_body.h"

#endif

namespace vek::VEK_LEVEL {

constexpr ExposureRows exposureRows = {portable::_vekiAEHist_10RGGB, _vekiAEWnd_10RGGB};

}  // namespace vek::VEK_LEVEL
