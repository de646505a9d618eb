#include "vek/camera.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <vector>

#include "tests/camera/preview/resize_support.h"
#include "tests/campaign/definition.h"

namespace vek::test {
namespace {

/// The picture pixel by pixel, in source orientation and then turned: the definition, naively.
void resize(const Vek8u* const* src, const Resize& a, int format, uint8_t* dst, int dstStep) {
  const auto at = [&](int plane, int64_t row, int64_t column) {
    return int{src[plane][row * a.srcStep[plane] + column]};
  };
  const int width = a.dstWidth, height = a.dstHeight, bytes = pixelBytes(format - 4);
  const auto luma = [&](int x, int y) {
    int64_t row = int64_t{y} * a.yStep;
    const int64_t column = int64_t{x} * a.xStep;
    if (a.interpolation == 0) return at(0, (row + 32768) >> 16, (column + 32768) >> 16);
    if (y % 2 == 1 && row >= (int64_t{a.srcHeight} - 1) << 16) row -= a.yStep;
    return bilinear(src[0], a.srcStep[0], row, column, false);
  };
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      // Odd sizes repeat the last even column and row.
      const int fromX = std::min(x, (width & ~1) - 1), fromY = std::min(y, (height & ~1) - 1);
      const int64_t chromaRow = (int64_t{fromY & ~1} * a.yStep + 65536) >> 17;
      const int64_t chromaColumn = (32768 + int64_t{fromX / 2} * a.xStep) >> 16;
      const auto pixel = convert(luma(fromX, fromY), at(1, chromaRow, chromaColumn),
                                 at(2, chromaRow, chromaColumn), format - 4);
      const int rowOf[6] = {y, width - 1 - x, x, height - 1 - y, y, height - 1 - y};
      const int columnOf[6] = {x, y, height - 1 - y, width - 1 - x, width - 1 - x, x};
      std::copy(pixel.begin(), pixel.end(),
                dst + ptrdiff_t{rowOf[a.rotation]} * dstStep + columnOf[a.rotation] * bytes);
    }
  }
}

TEST(Ycc420Rgb, EqualsTheDefinition) {
  expectDefinition(
      VEK_NAMED(vekiYCbCr420RszCscRotRGB_8u_P3C3R),
      [](const Vek8u* const* src, const int* srcStep, int srcWidth, int srcHeight, Vek8u* dst,
         int dstStep, int dstWidth, int dstHeight, int format, int interpolation, int rotation,
         int xStep, int yStep) {
        resize(src,
               {srcWidth,
                srcHeight,
                {srcStep[0], srcStep[1], srcStep[2]},
                dstWidth,
                dstHeight,
                interpolation,
                rotation,
                xStep,
                yStep},
               format, dst, dstStep);
      },
      700);
}

TEST(Ycc420Rgb, KnownColours) {
  struct Case {
    int y, cb, cr, format;
    unsigned word;
  };
  const Case cases[] = {
      {16, 128, 128, 4, 0x0000},  {235, 128, 128, 4, 0xFFFF}, {235, 128, 128, 5, 0x7FFF},
      {235, 128, 128, 6, 0x0FFF}, {235, 128, 128, 7, 0xFEFE}, {81, 90, 240, 4, 0xF800},
      {255, 128, 255, 6, 0x0FAF}, {0, 0, 128, 5, 0x0060},
  };
  for (const Case& c : cases) {
    const std::vector<uint8_t> pixel = convert(c.y, c.cb, c.cr, c.format - 4);
    alignas(8) Vek8u luma[8] = {}, cb[4] = {}, cr[4] = {}, dst[32] = {};
    luma[0] = luma[1] = luma[4] = luma[5] = static_cast<Vek8u>(c.y);
    cb[0] = static_cast<Vek8u>(c.cb);
    cr[0] = static_cast<Vek8u>(c.cr);
    const Vek8u* const src[3] = {luma, cb, cr};
    const int steps[3] = {4, 2, 2};
    for (Level level : levels()) {
      const LevelScope scope(level);
      ASSERT_EQ(vekiYCbCr420RszCscRotRGB_8u_P3C3R(src, steps, 2, 2, dst, 16, 2, 2, c.format, 0, 0,
                                                  65536, 65536),
                0);
      EXPECT_EQ(dst[0] | dst[1] << 8, c.word)
          << c.y << ' ' << c.cb << ' ' << c.cr << ' ' << c.format;
    }
    EXPECT_EQ(pixel[0] | pixel[1] << 8, c.word);
  }
}

}  // namespace
}  // namespace vek::test
