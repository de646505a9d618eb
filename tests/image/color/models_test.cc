// Gray, colour twist, XYZ, YCC, LUV, HLS, HSV.
#include "vek/image.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "tests/support/differential.h"

namespace vek::test {
namespace {

using Convert = VekStatus (*)(const Vek8u*, int, Vek8u*, int, VekiSize);
using Pixel = std::array<int, 3>;

/// Every byte triple of a grid at each level, within the documented distance of double precision.
template <class Channel>
void compareInverse(Convert convert, Channel channel) {
  std::vector<Vek8u> src;
  for (int h = 0; h < 256; ++h) {
    for (int a = 0; a < 256; a += 5) {
      for (int b = 0; b < 256; b += 3) {
        for (int c : {h, a, b}) src.push_back(static_cast<Vek8u>(c));
      }
    }
  }
  const VekiSize roi = {static_cast<int>(src.size() / 3), 1};
  std::vector<Vek8u> dst(src.size()), first;
  for (Level level : levels()) {
    const LevelScope scope(level);
    ASSERT_EQ(convert(src.data(), 1, dst.data(), 1, roi), 0);
    if (first.empty()) first = dst;
    ASSERT_TRUE(sameBytes(first, dst, 3)) << name(level);
  }
  for (size_t i = 0; i < src.size(); ++i) {
    ASSERT_NEAR(dst[i], channel(&src[i / 3 * 3], static_cast<int>(i % 3)), 0.52) << i;
  }
}

TEST(ColorModels, HsvToRgbIsClose) {
  compareInverse(vekiHSVToRGB_8u_C3R, [](const Vek8u* p, int c) {
    const double shifts[3] = {5, 3, 1};
    const double k = std::fmod(shifts[c] + p[0] * 6 / 255.0, 6);
    return p[2] - p[2] * p[1] / 255.0 * std::max(0.0, std::min({k, 4 - k, 1.0}));
  });
}

TEST(ColorModels, HlsToRgbIsClose) {
  compareInverse(vekiHLSToRGB_8u_C3R, [](const Vek8u* p, int c) {
    const double shifts[3] = {0, 8, 4};
    const double k = std::fmod(shifts[c] + p[0] * 12 / 255.0, 12);
    const double reach = p[2] / 255.0 * std::min<int>(p[1], 255 - p[1]);
    return p[1] - reach * std::max(-1.0, std::min({k - 3, 9 - k, 1.0}));
  });
}

/// Every colour of a grid at each level, within the documented distance of double precision.
TEST(ColorModels, LuvIsClose) {
  std::vector<Vek8u> rgb;
  for (int r = 0; r < 256; r += 5) {
    for (int g = 0; g < 256; g += 5) {
      for (int b = 0; b < 256; b += 5) {
        for (int c : {r, g, b}) rgb.push_back(static_cast<Vek8u>(c));
      }
    }
  }
  const VekiSize roi = {static_cast<int>(rgb.size() / 3), 1};
  std::vector<Vek8u> luv(rgb.size()), back(rgb.size()), first, firstBack;
  for (Level level : levels()) {
    const LevelScope scope(level);
    ASSERT_EQ(vekiRGBToLUV_8u_C3R(rgb.data(), 1, luv.data(), 1, roi), 0);
    ASSERT_EQ(vekiLUVToRGB_8u_C3R(luv.data(), 1, back.data(), 1, roi), 0);
    if (first.empty()) first = luv, firstBack = back;
    ASSERT_TRUE(sameBytes(first, luv, 3)) << name(level);
    ASSERT_TRUE(sameBytes(firstBack, back, 3)) << name(level);
  }
  for (size_t i = 0; i < rgb.size(); i += 3) {
    const double r = rgb[i], g = rgb[i + 1], b = rgb[i + 2];
    const double x = 13515 * r + 11717 * g + 5912 * b, y = 6969 * r + 23434 * g + 2365 * b;
    const double d = x + 15 * y + 3 * (634 * r + 3906 * g + 31137 * b);
    const double luma = std::floor(y / 32768) / 255;
    const double light = luma > 0.008856 ? 116 * std::cbrt(luma) - 16 : 903.3 * luma;
    const double u = d == 0 ? 0 : 13 * light * (4 * x / d - 0.19784);
    const double v = d == 0 ? 0 : 13 * light * (9 * y / d - 0.46834);
    ASSERT_NEAR(luv[i], light * 2.55, 0.51);
    ASSERT_NEAR(luv[i + 1], (u + 134) * 255 / 354, 1.0) << r << ' ' << g << ' ' << b;
    ASSERT_NEAR(luv[i + 2], (v + 140) * 255 / 262, 1.3) << r << ' ' << g << ' ' << b;
    for (size_t c = i; c < i + 3; ++c) ASSERT_NEAR(back[c], rgb[c], 18);
  }
}

TEST(ColorModels, Tables) {
  const int lightness[] = {0, 9, 18, 26, 33, 39, 44, 48, 52, 56};
  for (int i = 0; i < 10; ++i) EXPECT_EQ(RGB_LUV_L_channel[i], lightness[i]);
  EXPECT_EQ(RGB_LUV_L_channel[255], 255);
  for (int i = 1; i < 256; ++i) {
    const double y = i / 255.0;
    const double star = y > 0.008856 ? 116 * std::cbrt(y) - 16 : 903.3 * y;
    EXPECT_EQ(RGB_LUV_L_channel[i], std::lround(star * 2.55)) << i;
  }
  EXPECT_EQ(RCP_Q14[0], 0);
  for (int i = 1; i < 512; ++i) EXPECT_EQ(RCP_Q14[i], std::lround(16384.0 / i)) << i;
}

TEST(ColorModels, KnownColors) {
  const auto convert = [](Convert f, Pixel p) {
    const Vek8u src[3] = {Vek8u(p[0]), Vek8u(p[1]), Vek8u(p[2])};
    Vek8u dst[3] = {};
    EXPECT_EQ(f(src, 3, dst, 3, {1, 1}), 0);
    return Pixel{dst[0], dst[1], dst[2]};
  };
  EXPECT_EQ(convert(vekiRGBToYCC_8u_C3R, {0, 0, 0}), (Pixel{0, 156, 137}));
  EXPECT_EQ(convert(vekiRGBToHSV_8u_C3R, {255, 0, 0}), (Pixel{0, 255, 255}));
  EXPECT_EQ(convert(vekiRGBToHSV_8u_C3R, {0, 200, 0}), (Pixel{85, 255, 200}));
  EXPECT_EQ(convert(vekiRGBToHLS_8u_C3R, {0, 0, 255}), (Pixel{170, 128, 255}));
  EXPECT_EQ(convert(vekiRGBToHLS_8u_C3R, {7, 7, 7}), (Pixel{0, 7, 0}));
  EXPECT_EQ(convert(vekiHSVToRGB_8u_C3R, {255, 255, 9}), (Pixel{9, 0, 0}));
  EXPECT_EQ(convert(vekiRGBToLUV_8u_C3R, {255, 255, 255}), (Pixel{255, 97, 136}));
  EXPECT_EQ(convert(vekiLUVToRGB_8u_C3R, {0, 97, 136}), (Pixel{0, 0, 0}));
}

}  // namespace
}  // namespace vek::test
