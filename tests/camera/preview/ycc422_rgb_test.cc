#include "vek/camera.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <vector>

#include "tests/camera/preview/resize_support.h"
#include "tests/campaign/definition.h"

namespace vek::test {
namespace {

/// Write pointers of even and odd pixels, the distance between successive pixels, and what is added
/// after a row.
struct Walk {
  ptrdiff_t even, odd, distance, correction;
};

Walk walk16(int rotation, ptrdiff_t w, ptrdiff_t h, ptrdiff_t s) {
  const ptrdiff_t last = (h - 1) * s, right = 2 * w - 2;
  const Walk walks[6] = {{0, 2, 2, s - 2 * w},
                         {last, last - s, -s, h * s + 2},
                         {right, right + s, s, -h * s - 2},
                         {right + last, right + last - 2, -2, 2 * w - s},
                         {right, right - 2, -2, 2 * w + s},
                         {last, last + 2, 2, -(s + 2 * w)}};
  return walks[rotation];
}

/// 24-bit: each row of the walk is `n` pixels long and the next one begins beside it.
Walk walk24(int rotation, ptrdiff_t w, ptrdiff_t h, ptrdiff_t s) {
  const ptrdiff_t starts[6] = {0,         (h - 1) * s, 3 * w - 3, 3 * w - 3 + (h - 1) * s,
                               3 * w - 3, (h - 1) * s};
  const ptrdiff_t distances[6] = {3, -s, s, -3, -3, 3};
  const ptrdiff_t rows[6] = {s, 3, -3, -s, s, -s};
  const ptrdiff_t n = rotation == 1 || rotation == 2 ? h : w;
  const ptrdiff_t d = distances[rotation];
  return {starts[rotation], starts[rotation] + d, d, rows[rotation] - n * d};
}

/// The picture by the definition; all pointers and phases advance as the walk does.
void resize(const Vek8u* const src[3], const Resize& a, int format, uint8_t* dst, int dstStep) {
  const bool blended = a.interpolation == 1, swapped = format == 3 && a.turned();
  const int width = swapped ? a.dstHeight : a.dstWidth;
  const int height = swapped ? a.dstWidth : a.dstHeight;
  const Walk way = (format == 3 ? walk24 : walk16)(a.rotation, a.dstWidth, a.dstHeight, dstStep);
  const int64_t right = int64_t{a.srcWidth - blended} << 16;
  const int64_t bottom = int64_t{a.srcHeight - blended} << 16;
  const auto hold = [](int64_t& phase, int64_t limit) {
    if (phase >= limit) phase = std::max<int64_t>(limit - 1, 0);
  };
  int64_t rowPhase = 0;
  uint8_t* even = dst + way.even;
  uint8_t* odd = dst + way.odd;
  for (int y = 0; y < height; ++y) {
    const ptrdiff_t row = rowPhase >> 16;
    int64_t q0 = blended ? 0 : 32768, q1 = q0 + a.xStep, chroma = 32768;
    for (int x = 0; x < width; ++x) {
      if (x % 2 == 0) hold(q1, right), hold(chroma, right >> 1);
      const int64_t q = x % 2 == 0 ? q0 : q1;
      const ptrdiff_t at = row * (a.srcStep[0] / 2) + (chroma >> 16);
      const int luma = blended ? bilinear(src[0], a.srcStep[0], rowPhase, q, false)
                               : src[0][row * a.srcStep[0] + (q >> 16)];
      const auto pixel = convert(luma, src[1][at], src[2][at], format);
      std::copy(pixel.begin(), pixel.end(), x % 2 == 0 ? even : odd);
      if (x % 2 == 0) {
        even += 2 * way.distance;
      } else {
        odd += 2 * way.distance;
        q0 += 2 * int64_t{a.xStep}, q1 += 2 * int64_t{a.xStep}, chroma += a.xStep;
      }
    }
    if (width % 2 != 0) even -= way.distance, odd += way.distance;
    even += way.correction, odd += way.correction;
    rowPhase += a.yStep;
    hold(rowPhase, bottom);
  }
}

/// Planes of random samples, as far as a call reads them.
struct Source {
  std::vector<std::unique_ptr<Buffer>> planes;
  const Vek8u* data[3];

  Source(const footprint::Planes& print, Random& random) {
    for (int i = 0; i < 3; ++i) {
      planes.push_back(std::make_unique<Buffer>(print.src[i]));
      planes[i]->fill(random, allPatterns[random.in(0, 5)]);
      data[i] = planes[i]->data();
    }
  }
};

int call(const Source& src, const Resize& a, int format, uint8_t* dst, int dstStep) {
  return vekiYCbCr422RszCscRotRGB_8u_P3C3R(src.data, a.srcStep, a.srcWidth, a.srcHeight, dst,
                                           dstStep, a.dstWidth, a.dstHeight, format,
                                           a.interpolation, a.rotation, a.xStep, a.yStep);
}

TEST(Ycc422Rgb, EqualsTheDefinition) {
  expectDefinition(
      VEK_NAMED(vekiYCbCr422RszCscRotRGB_8u_P3C3R),
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
      600);
}

/// 16-bit quarter turns with unequal sizes write where their walk leads them, and nowhere else.
TEST(Ycc422Rgb, UnequalTurnsScatter) {
  Random random(baseSeed() + 2);
  constexpr int step = 48;
  for (int rotation : {1, 2}) {
    for (const auto& [width, height] : {std::pair{20, 14}, std::pair{7, 11}, std::pair{130, 70}}) {
      const Resize a = {width, height, {132, 66, 66}, width, height, 0, rotation, 65536, 65536};
      const Source src(footprint::ycc422Rgb(a, step, 2), random);
      const size_t reach = static_cast<size_t>(step * width * height);
      std::vector<uint8_t> expected(2 * reach, 0xA5);
      resize(src.data, a, 0, expected.data() + reach, step);
      for (Level level : levels()) {
        const LevelScope scope(level);
        std::vector<uint8_t> dst(2 * reach, 0xA5);
        ASSERT_EQ(call(src, a, 0, dst.data() + reach, step), 0);
        EXPECT_TRUE(sameBytes(expected, dst, step)) << a << " at level " << name(level);
      }
    }
  }
}

TEST(Ycc422Rgb, AcceptsAnySizeAndExtremeSteps) {
  alignas(8) Vek8u y[64], cb[64], cr[64], dst[256] = {};
  struct Args {
    const Vek8u* src[3];
    int srcStep[3], srcWidth, srcHeight;
    Vek8u* dst;
    int dstStep, dstWidth, dstHeight, format, interpolation, rotation, xStep, yStep;
  };
  std::fill_n(y, 64, Vek8u{235}), std::fill_n(cb, 64, Vek8u{128}), std::fill_n(cr, 64, Vek8u{128});
  const Args good = {{y, cb, cr}, {8, 4, 4}, 8, 8, dst, 24, 8, 8, 3, 0, 0, 65536, 65536};
  const auto status = [&](auto change) {
    Args a = good;
    change(a);
    return vekiYCbCr422RszCscRotRGB_8u_P3C3R(a.src, a.srcStep, a.srcWidth, a.srcHeight, a.dst,
                                             a.dstStep, a.dstWidth, a.dstHeight, a.format,
                                             a.interpolation, a.rotation, a.xStep, a.yStep);
  };
  // Sizes below 1 are no fault, and nothing happens.
  for (int size : {0, -1, INT32_MIN}) {
    EXPECT_EQ(status([&](Args& a) { a.srcWidth = size; }), 0);
    EXPECT_EQ(status([&](Args& a) { a.srcHeight = size; }), 0);
    EXPECT_EQ(status([&](Args& a) { a.dstWidth = size, a.dstHeight = INT32_MAX; }), 0);
    EXPECT_EQ(status([&](Args& a) { a.dstHeight = size, a.rotation = 2; }), 0);
  }
  EXPECT_TRUE(std::all_of(dst, dst + 256, [](Vek8u b) { return b == 0; }));
  EXPECT_EQ(status([](Args&) {}), 0);
  EXPECT_EQ(dst[0], 254);
  EXPECT_EQ(status([&](Args& a) { a.dstStep = 33; }), 0);
  // Extreme steps stay inside where the phases are held.
  EXPECT_EQ(status([&](Args& a) { a.yStep = INT32_MAX; }), 0);
  EXPECT_EQ(status([&](Args& a) { a.xStep = INT32_MAX, a.dstWidth = 2; }), 0);
}

}  // namespace
}  // namespace vek::test
