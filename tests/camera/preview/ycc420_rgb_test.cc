#include "vek/camera.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <vector>

#include "tests/camera/preview/resize_support.h"
#include "tests/support/differential.h"

namespace vek::test {
namespace {

struct Source {
  Buffer& y;
  Buffer& cb;
  Buffer& cr;
};

/// The picture pixel by pixel, in source orientation and then turned: the definition, naively.
std::vector<uint8_t> expected(const Source& src, const Resize& a, int format) {
  const auto at = [&](Buffer& plane, int step, int64_t row, int64_t column) {
    return int{plane.data()[row * step + column]};
  };
  const int width = a.dstWidth, height = a.dstHeight, bytes = pixelBytes(format - 4);
  const auto luma = [&](int x, int y) {
    int64_t row = int64_t{y} * a.yStep;
    const int64_t column = int64_t{x} * a.xStep;
    if (a.interpolation == 0)
      return at(src.y, a.srcStep[0], (row + 32768) >> 16, (column + 32768) >> 16);
    if (y % 2 == 1 && row >= (int64_t{a.srcHeight} - 1) << 16) row -= a.yStep;
    return bilinear(src.y.data(), a.srcStep[0], row, column, false);
  };
  const ptrdiff_t across = a.turned() ? height : width;
  std::vector<uint8_t> out(static_cast<size_t>(width) * height * bytes);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      // Odd sizes repeat the last even column and row.
      const int fromX = std::min(x, (width & ~1) - 1), fromY = std::min(y, (height & ~1) - 1);
      const int64_t chromaRow = (int64_t{fromY & ~1} * a.yStep + 65536) >> 17;
      const int64_t chromaColumn = (32768 + int64_t{fromX / 2} * a.xStep) >> 16;
      const auto pixel =
          convert(luma(fromX, fromY), at(src.cb, a.srcStep[1], chromaRow, chromaColumn),
                  at(src.cr, a.srcStep[2], chromaRow, chromaColumn), format - 4);
      const int rowOf[6] = {y, width - 1 - x, x, height - 1 - y, y, height - 1 - y};
      const int columnOf[6] = {x, y, height - 1 - y, width - 1 - x, width - 1 - x, x};
      std::copy(pixel.begin(), pixel.end(),
                out.begin() + (rowOf[a.rotation] * across + columnOf[a.rotation]) * bytes);
    }
  }
  return out;
}

void compare(const Resize& a, int format, int dstStep, Random& random) {
  SCOPED_TRACE(testing::Message() << a << " format " << format);
  const auto print = footprint::ycc420Rgb(a, dstStep, pixelBytes(format - 4));
  Buffer y(print.src[0], 4), cb(print.src[1], 2), cr(print.src[2], 2);
  const Pattern pattern = allPatterns[random.in(0, 5)];
  y.fill(random, random.chance(50) ? Pattern::noise : pattern);
  cb.fill(random, pattern);
  cr.fill(random, random.chance(50) ? Pattern::noise : pattern);
  const Vek8u* const src[3] = {y.data(), cb.data(), cr.data()};
  runAtEveryLevel({{print.dst[0], 8, 0, expected({y, cb, cr}, a, format)}}, [&](auto dst) {
    EXPECT_EQ(vekiYCbCr420RszCscRotRGB_8u_P3C3R(src, a.srcStep, a.srcWidth, a.srcHeight, dst[0],
                                                dstStep, a.dstWidth, a.dstHeight, format,
                                                a.interpolation, a.rotation, a.xStep, a.yStep),
              0);
  });
}

TEST(Ycc420Rgb, EqualsTheDefinition) {
  Random random(baseSeed());
  for (int round = 0; round < 400 && !testing::Test::HasFailure(); ++round) {
    const Resize a = randomResize(random, 1, 1, 4, 2);
    const int format = random.in(4, 7);
    const int across = a.turned() ? a.dstHeight : a.dstWidth;
    const int unit = format == 7 ? 2 : 8;
    const int dstStep = roundUp(across * pixelBytes(format - 4), unit) + unit * random.in(0, 2);
    compare(a, format, dstStep, random);
  }
}

/// Longer than a strip, and both rows and columns longer than a turned tile.
TEST(Ycc420Rgb, SpansStripsAndTiles) {
  Random random(baseSeed() + 1);
  for (int rotation : {0, 1, 4}) {
    for (int format : {4, 7}) {
      compare({1032, 70, {1032, 518, 516}, 1031, 69, 1, rotation, 65536, 65536}, format, 3136,
              random);
    }
  }
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

TEST(Ycc420Rgb, RefusesBadArguments) {
  alignas(8) Vek8u y[64] = {}, cb[64] = {}, cr[64] = {}, dst[256] = {};
  struct Args {
    const Vek8u* src[3];
    int srcStep[3], srcWidth, srcHeight;
    Vek8u* dst;
    int dstStep, dstWidth, dstHeight, format, interpolation, rotation, xStep, yStep;
  };
  const Args good = {{y, cb, cr}, {8, 4, 4}, 8, 8, dst, 24, 8, 8, 7, 0, 0, 65536, 65536};
  const auto call = [](const Args& a, bool nullSrc = false, bool nullStep = false) {
    return vekiYCbCr420RszCscRotRGB_8u_P3C3R(
        nullSrc ? nullptr : a.src, nullStep ? nullptr : a.srcStep, a.srcWidth, a.srcHeight, a.dst,
        a.dstStep, a.dstWidth, a.dstHeight, a.format, a.interpolation, a.rotation, a.xStep,
        a.yStep);
  };
  EXPECT_EQ(call(good), vekStsNoErr);
  EXPECT_EQ(call(good, true, false), vekStsBadArgErr);
  EXPECT_EQ(call(good, false, true), vekStsBadArgErr);
  const auto fails = [&](const char* what, auto change) {
    Args a = good;
    change(a);
    EXPECT_EQ(call(a), vekStsBadArgErr) << what;
  };
  fails("null Cr", [&](Args& a) { a.src[2] = nullptr; });
  fails("null dst", [&](Args& a) { a.dst = nullptr; });
  fails("dst alignment", [&](Args& a) { a.dst = dst + 4; });
  fails("Y alignment", [&](Args& a) { a.src[0] = y + 2; });
  fails("Cb alignment", [&](Args& a) { a.src[1] = cb + 1; });
  fails("width 0", [&](Args& a) { a.srcWidth = 0; });
  fails("1 to 1", [&](Args& a) { a.srcWidth = a.dstWidth = 1; });
  fails("step above its limit", [&](Args& a) { a.xStep = 65537; });
  fails("step 0", [&](Args& a) { a.yStep = 0; });
  fails("negative row step", [&](Args& a) { a.srcStep[0] = -8; });
  fails("short row step", [&](Args& a) { a.srcStep[1] = 2; });
  fails("odd chroma step", [&](Args& a) { a.srcStep[2] = 5; });
  fails("format 3", [&](Args& a) { a.format = 3; });
  fails("interpolation -1", [&](Args& a) { a.interpolation = -1; });
  fails("rotation 6", [&](Args& a) { a.rotation = 6; });
  fails("odd 24-bit step", [&](Args& a) { a.dstStep = 25; });
  fails("short 24-bit step", [&](Args& a) { a.dstStep = 22; });
  fails("16-bit step", [&](Args& a) { a.format = 4, a.dstStep = 20; });
  fails("turned row too short", [&](Args& a) { a.dstHeight = 10, a.yStep = 1, a.rotation = 1; });
}

}  // namespace
}  // namespace vek::test
