// Known values of the preview functions, and what their definitions leave out.
#include "tests/definition/preview.h"

#include "vek/camera.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <numeric>
#include <vector>

#include "camera/preview/csc_kernels.h"
#include "tests/support/digest.h"
#include "tests/support/levels.h"

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

TEST(PlanarRgb, KnownColors) {
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

TEST(Ycc422Reduce, KnownColors) {
  const int table[5] = {1192, 1634, -833, -401, 2065};
  EXPECT_TRUE(std::equal(table, table + 5, _vekYCbCr_RGB));
  EXPECT_EQ(definition::rgbWord(255, 128, 128, 1), 0x7FFF);
  EXPECT_EQ(definition::rgbWord(81, 90, 240, 0), 0xF800);
}

/// Every luma with every Cb and 18 of all Cr: 16-bit arithmetic must not show.
TEST(CscKernels, LevelsEqualPortable) {
  const auto table = [](Level level) {
    return reinterpret_cast<const ConvertPlanes*>(&select(cscKernels, level));
  };
  Vek8u y[256], cb[256], cr[256];
  std::iota(y, y + 256, Vek8u{0});
  for (int chroma = 0; chroma < 256 * 18; ++chroma) {
    std::fill_n(cb, 256, static_cast<Vek8u>(chroma % 256));
    std::fill_n(cr, 256, static_cast<Vek8u>(chroma / 256 * 15));
    const YccPlanes samples = {{y, 256}, {cb, 256}, {cr, 256}, 0};
    for (size_t kernel = 0; kernel < sizeof(CscKernels) / sizeof(ConvertPlanes); ++kernel) {
      Vek8u expected[768] = {}, actual[768] = {};
      table(Level::portable)[kernel](samples, 256, 1, expected, 0);
      for (Level level : levels()) {
        table(level)[kernel](samples, 256, 1, actual, 0);
        ASSERT_TRUE(std::equal(expected, expected + 768, actual))
            << "kernel " << kernel << ", " << name(level) << ", chroma " << chroma;
      }
    }
  }
}

/// Both forms in all rotations, from noise of 64 x 48 pixels.
TEST(HalvedChroma, DigestsAtEveryLevel) {
  constexpr int width = 64, height = 48;
  std::vector<Vek8u> noise(2 * width * height);
  Noise source;
  for (Vek8u& byte : noise) byte = source.byte();
  const Vek8u* const y = noise.data();
  const Vek8u* const src[3] = {y, y + width * height, y + width * height * 3 / 2};
  const int srcStep[3] = {width, width / 2, width / 2};
  for (Level level : levels()) {
    const LevelScope scope(level);
    Digest planar, interleaved;
    for (int rotation = vekiRotNone; rotation <= vekiMirrorTopBottom; ++rotation) {
      const int across = rotation == vekiRot90Ccw || rotation == vekiRot90Cw ? height : width;
      const int dstStep[3] = {across, across / 2, across / 2};
      std::vector<Vek8u> out(width * height * 3 / 2);
      Vek8u* const dst[3] = {out.data(), out.data() + width * height,
                             out.data() + width * height * 5 / 4};
      EXPECT_EQ(0, vekiYCbCr422ToYCbCr420Rotate_8u_P3R(src, srcStep, dst, dstStep, width, height,
                                                       rotation));
      planar.add(out.data(), out.size());
      EXPECT_EQ(0, vekiYCbCr422ToYCbCr420Rotate_8u_C2P3R(y, 2 * width, dst, dstStep, width, height,
                                                         rotation));
      interleaved.add(out.data(), out.size());
    }
    EXPECT_EQ(planar.value(), 0x2ebd5979a9e37375u);
    EXPECT_EQ(interleaved.value(), 0xf3418073dfb10145u);
  }
}

}  // namespace
}  // namespace vek::test
