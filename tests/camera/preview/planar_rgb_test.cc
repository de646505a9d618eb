// Planar YCbCr to packed RGB, from 4:2:0 and from 4:2:2.
#include "vek/camera.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <vector>

#include "tests/camera/preview/luma.h"
#include "tests/campaign/definition.h"

namespace vek::test {
namespace {

using footprint::pixelBytes;
using footprint::Resize;

/// One converted pixel in memory; formats are counted from 0.
void put(int y, int cb, int cr, int format, Vek8u* to) {
  const int bits[4][3] = {{5, 6, 5}, {5, 5, 5}, {4, 4, 4}, {8, 8, 8}};
  const int luma = (y - 16) * 298;
  const int raw[3] = {luma + 409 * (cr - 128), luma - 100 * (cb - 128) - 208 * (cr - 128),
                      luma + 516 * (cb - 128)};
  int pixel = 0;  // red uppermost
  for (int i = 0; i < 3; ++i) {
    const int n = bits[format][i];
    pixel = pixel << n | std::clamp(raw[i] >> (16 - n), 0, (1 << n) - 1);
  }
  for (int i = 0; i < pixelBytes(format); ++i) to[i] = static_cast<Vek8u>(pixel >> 8 * i);
}

template <bool is420>
void resize(const Vek8u* const* src, const int* s, int srcWidth, int srcHeight, Vek8u* dst,
            int dstStep, int w, int h, int format, int interpolation, int rotation, int xStep,
            int yStep) {
  const int chroma = s[0] / 2;
  const Resize a = {srcWidth, srcHeight, {s[0], is420 ? s[1] : chroma, is420 ? s[2] : chroma},
                    w,        h,         interpolation,
                    rotation, xStep,     yStep};
  format -= is420 ? 4 : 0;
  if (!is420 && format == 3 && a.turned()) std::swap(w, h);
  for (int y = 0; y < h; ++y) {
    for (int x = 0; x < w; ++x) {
      const auto p = (is420 ? footprint::ycc420RgbPhases : footprint::ycc422RgbPhases)(a, x, y);
      const auto to = is420 ? footprint::turn(rotation, x, y, w, h)
                            : footprint::turn422Rgb(a, pixelBytes(format), x, y);
      const auto at = [&](int i) {
        return src[i][(p.chromaRow >> 16) * a.srcStep[i] + (p.chromaColumn >> 16)];
      };
      put(lumaAt(src[0], a, p.row, p.column), at(1), at(2), format,
          dst + ptrdiff_t{to.row} * dstStep + to.column * pixelBytes(format));
    }
  }
}

TEST(PlanarRgb, EqualsTheDefinition) {
  expectDefinition(VEK_NAMED(vekiYCbCr420RszCscRotRGB_8u_P3C3R), resize<true>, 700);
  expectDefinition(VEK_NAMED(vekiYCbCr422RszCscRotRGB_8u_P3C3R), resize<false>, 600);
}

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
