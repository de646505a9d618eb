// Planar YCbCr to planar YCbCr, 4:2:0 and 4:2:2.
#include "vek/camera.h"

#include <gtest/gtest.h>

namespace vek::test {
namespace {

/// 12 x 8 to 6 x 4: the rounding constant 4 lets 255 wrap to 0.
TEST(PlanarResize, ReductionRoundsByFour) {
  const int cases[][5] = {{255, 255, 255, 255, 0}, {1, 1, 1, 2, 2}, {0, 0, 0, 0, 1}};
  for (const auto& c : cases) {
    alignas(8) Vek8u y[8 * 16] = {}, chroma[4 * 8] = {}, out[4 * 8], cb[2 * 4], cr[2 * 4];
    for (int i = 0; i < 4; ++i) y[i / 2 * 16 + i % 2] = static_cast<Vek8u>(c[i]);
    const Vek8u* const src[3] = {y, chroma, chroma};
    Vek8u* const dst[3] = {out, cb, cr};
    const int srcStep[3] = {16, 8, 8}, dstStep[3] = {8, 4, 4};
    vekiYCbCr420RszRot_8u_P3R(src, srcStep, 12, 8, dst, dstStep, 6, 4, vekiInterpolateLinear,
                              vekiRotNone, 131072, 131072);
    EXPECT_EQ(out[0], c[4]);
  }
}

}  // namespace
}  // namespace vek::test
