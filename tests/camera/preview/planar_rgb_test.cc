// Planar YCbCr to packed RGB, from 4:2:0 and from 4:2:2.
#include "vek/camera.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <vector>

namespace vek::test {
namespace {

TEST(PlanarRgb, KnownColours) {
  const int cases[][5] = {
      {16, 128, 128, vekiCsc420RGB565, 0x0000},  {235, 128, 128, vekiCsc420RGB565, 0xFFFF},
      {235, 128, 128, vekiCsc420BGR24, 0xFEFE},  {81, 90, 240, vekiCsc420RGB565, 0xF800},
      {255, 128, 255, vekiCsc420RGB444, 0x0FAF}, {0, 0, 128, vekiCsc420RGB555, 0x0060}};
  for (const auto& [y, cb, cr, format, word] : cases) {
    alignas(8) Vek8u planes[3][8], dst[32];
    const int values[3] = {y, cb, cr}, steps[3] = {4, 2, 2};
    for (int i = 0; i < 3; ++i) std::fill_n(planes[i], 8, static_cast<Vek8u>(values[i]));
    const Vek8u* const src[3] = {planes[0], planes[1], planes[2]};
    vekiYCbCr420RszCscRotRGB_8u_P3C3R(src, steps, 2, 2, dst, 16, 2, 2, format,
                                      vekiInterpolateNearest, vekiRotNone, 65536, 65536);
    EXPECT_EQ(dst[0] | dst[1] << 8, word) << y << ' ' << cb << ' ' << cr << ' ' << format;
  }
}

/// 4:2:2 refuses no size, and does nothing if one is below 1.
TEST(PlanarRgb, AcceptsAnySize) {
  const Vek8u plane[64] = {}, *const src[3] = {plane, plane, plane};
  const int srcStep[3] = {8, 4, 4};
  for (int which = 0; which < 4; ++which) {
    for (int size : {0, -1, INT32_MIN}) {
      int s[4] = {8, 8, 8, 8};
      s[which] = size, s[which ^ 1] = which == 2 ? INT32_MAX : 8;
      Vek8u dst[256] = {};
      EXPECT_EQ(vekiYCbCr422RszCscRotRGB_8u_P3C3R(src, srcStep, s[0], s[1], dst, 33, s[2], s[3],
                                                  vekiCsc422BGR24, vekiInterpolateNearest, which,
                                                  65536, 65536),
                0);
      EXPECT_EQ(std::count(dst, dst + 256, 0), 256);
    }
  }
}

}  // namespace
}  // namespace vek::test
