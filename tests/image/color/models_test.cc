// Gray, colour twist, XYZ, YCC, LUV, HLS, HSV.
#include "vek/image.h"

#include <array>
#include <cmath>

#include "tests/campaign/definition.h"

namespace vek::test {
namespace {

using Convert = VekStatus (*)(const Vek8u*, int, Vek8u*, int, VekiSize);
using Pixel = std::array<int, 3>;

int clampByte(int64_t v) {
  return static_cast<int>(std::clamp<int64_t>(v, 0, 255));
}
int nearest(double v) {
  return clampByte(static_cast<int64_t>(std::floor(v + 0.5 + 1e-9)));
}

/// Compares a conversion with `model`, which gets a pixel and what follows the region.
template <class Model, class... More>
void expectPixels(const char* name,
                  VekStatus (*f)(const Vek8u*, int, Vek8u*, int, VekiSize, More...), Model model) {
  const ptrdiff_t channels = std::string(name).find("C1R") != std::string::npos ? 1 : 3;
  const auto define = [=](const Vek8u* src, ptrdiff_t srcStep, Vek8u* dst, ptrdiff_t dstStep,
                          VekiSize roi, More... more) {
    for (int y = 0; y < roi.height; ++y) {
      for (int x = 0; x < roi.width; ++x) {
        const Vek8u* p = src + y * srcStep + 3 * x;
        const Pixel result = model({p[0], p[1], p[2]}, more...);
        std::copy_n(result.begin(), channels, dst + y * dstStep + channels * x);
      }
    }
  };
  expectDefinition(name, f, define, 150);
}

Pixel twisted(Pixel p, const Vek32s (*m)[4]) {
  Pixel out;
  for (int k = 0; k < 3; ++k) {
    int64_t sum = (m[k][3] >> 4) + 512;
    for (int c = 0; c < 3; ++c) sum += int64_t{m[k][c] >> 4} * p[c];
    out[k] = clampByte(sum >> 10);
  }
  return out;
}

TEST(ColourModels, Gray) {
  expectPixels(VEK_NAMED(vekiRGBToGray_8u_C3C1R),
               [](Pixel p) { return Pixel{(306 * p[0] + 601 * p[1] + 117 * p[2] + 512) >> 10}; });
  expectPixels(VEK_NAMED(vekiColorToGrayQ14_8u_C3C1R), [](Pixel p, const Vek32s* w) {
    const int64_t sum = int64_t{w[0]} * p[0] + int64_t{w[1]} * p[1] + int64_t{w[2]} * p[2];
    return Pixel{clampByte((sum + 8192) >> 14)};
  });
}

TEST(ColourModels, Twist) {
  expectPixels(VEK_NAMED(vekiColorTwistQ14_8u_C3R), twisted);
  const auto by = [](const Vek32s(&m)[3][4]) { return [&m](Pixel p) { return twisted(p, m); }; };
  const Vek32s xyz[3][4] = {{6758, 5859, 2956, 0}, {3484, 11717, 1182, 0}, {317, 1953, 15569, 0}};
  const Vek32s fromXyz[3][4] = {
      {53092, -25185, -8168, 0}, {-15880, 30736, 681, 0}, {912, -3343, 17323, 0}};
  const Vek32s ycc[3][4] = {
      {3494, 6860, 1332, 0}, {-2140, -4201, 6342, 2555904}, {6109, -5116, -994, 2244608}};
  const Vek32s fromYcc[3][4] = {
      {22256, 0, 29843, -4088553}, {22256, -7050, -15190, 3180809}, {22256, 36338, 0, -5668739}};
  expectPixels(VEK_NAMED(vekiRGBToXYZ_8u_C3R), by(xyz));
  expectPixels(VEK_NAMED(vekiXYZToRGB_8u_C3R), by(fromXyz));
  expectPixels(VEK_NAMED(vekiRGBToYCC_8u_C3R), by(ycc));
  expectPixels(VEK_NAMED(vekiYCCToRGB_8u_C3R), by(fromYcc));
}

double hueOf(double r, double g, double b) {
  const double most = std::max({r, g, b}), range = most - std::min({r, g, b});
  if (range == 0) return 0;
  const double sixths = most == r   ? (g - b) / range
                        : most == g ? 2 + (b - r) / range
                                    : 4 + (r - g) / range;
  return (sixths < 0 ? sixths + 6 : sixths) * 255 / 6;
}

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

TEST(ColourModels, Hsv) {
  expectPixels(VEK_NAMED(vekiRGBToHSV_8u_C3R), [](Pixel p) {
    const int most = *std::max_element(p.begin(), p.end());
    const int least = *std::min_element(p.begin(), p.end());
    return Pixel{nearest(hueOf(p[0], p[1], p[2])),
                 most == 0 ? 0 : nearest(255.0 * (most - least) / most), most};
  });
  compareInverse(vekiHSVToRGB_8u_C3R, [](const Vek8u* p, int c) {
    const double shifts[3] = {5, 3, 1};
    const double k = std::fmod(shifts[c] + p[0] * 6 / 255.0, 6);
    return p[2] - p[2] * p[1] / 255.0 * std::max(0.0, std::min({k, 4 - k, 1.0}));
  });
}

TEST(ColourModels, Hls) {
  expectPixels(VEK_NAMED(vekiRGBToHLS_8u_C3R), [](Pixel p) {
    const int most = *std::max_element(p.begin(), p.end());
    const int least = *std::min_element(p.begin(), p.end());
    const int sum = most + least;
    return Pixel{nearest(hueOf(p[0], p[1], p[2])), nearest(sum / 2.0),
                 most == least ? 0 : nearest(255.0 * (most - least) / std::min(sum, 510 - sum))};
  });
  compareInverse(vekiHLSToRGB_8u_C3R, [](const Vek8u* p, int c) {
    const double shifts[3] = {0, 8, 4};
    const double k = std::fmod(shifts[c] + p[0] * 12 / 255.0, 12);
    const double reach = p[2] / 255.0 * std::min<int>(p[1], 255 - p[1]);
    return p[1] - reach * std::max(-1.0, std::min({k - 3, 9 - k, 1.0}));
  });
}

/// Every colour of a grid at each level, within the documented distance of double precision.
TEST(ColourModels, LuvIsClose) {
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

TEST(ColourModels, Tables) {
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

TEST(ColourModels, KnownColours) {
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
