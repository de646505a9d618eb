#include "vek/camera.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <vector>

#include "tests/camera/raw/pipeline.h"

namespace vek::test {
namespace {

/// A uniform region with (R, G, B) = (8, 9, 200) mapped. By hand: (77 * 8 + 143 * 9 + 29 * 200) >>
/// 8, 128 + (-30 * 8 - 85 * 9 + 128 * 200) / 256 and so on, rounded down.
TEST(RawFrame, KnownValues) {
  const Vek16u r = 32, gr = 32, gb = 36, b = 800;
  Vek16u src[] = {r, gr, r, gr, gb, b, gb, b, r, gr, r, gr, gb, b, gb, b};
  const RawState state = makeState(rawColor(), rawGeometry(4, 4));
  alignas(8) Vek8u planes[3][48] = {};
  Vek8u* const dst[3] = {planes[0] + 6, planes[1] + 3, planes[2] + 3};
  ASSERT_EQ(veki10RGGBtoYCbCr_RotRsz_8u_P3R(src, dst, state.get()), vekStsNoErr);
  for (int i = 0; i < 16; ++i) EXPECT_EQ(dst[0][i / 4 * 8 + i % 4], 30);
  for (int i : {0, 1, 4, 5}) EXPECT_EQ(dst[1][i], 224);
  for (int i : {0, 1, 4, 5}) EXPECT_EQ(dst[2][i], 111);
}

}  // namespace
}  // namespace vek::test
