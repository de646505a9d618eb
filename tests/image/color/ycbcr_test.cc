#include "vek/image.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>

namespace vek::test {
namespace {

using Color = std::array<int, 3>;

TEST(Ycbcr, KnownColors) {
  const auto color = [](auto f, Color c) {
    const Vek8u src[3] = {Vek8u(c[0]), Vek8u(c[1]), Vek8u(c[2])};
    Vek8u dst[3] = {};
    EXPECT_EQ(f(src, 3, dst, 3, {1, 1}), vekStsNoErr);
    return Color{dst[0], dst[1], dst[2]};
  };
  EXPECT_EQ(color(vekiRGBToYCbCr_8u_C3R, {200, 200, 200}), (Color{188, 128, 128}));
  EXPECT_EQ(color(vekiRGBToYCbCr_8u_C3R, {255, 0, 0}), (Color{81, 90, 240}));
  EXPECT_EQ(color(vekiYCbCrToRGB_8u_C3R, {16, 128, 128}), (Color{0, 0, 0}));
  EXPECT_EQ(color(vekiYCbCrToRGB_8u_C3R, {235, 128, 128}), (Color{255, 255, 255}));
  EXPECT_EQ(color(vekiRGBToYUV_8u_C3R, {77, 77, 77}), (Color{77, 127, 128}));
  EXPECT_EQ(color(vekiRGBToYUV_8u_C3R, {255, 0, 0}), (Color{76, 90, 255}));
  EXPECT_EQ(color(vekiYUVToRGB_8u_C3R, {77, 128, 128}), (Color{77, 77, 77}));
  const Vek8u blue[6] = {0, 0, 255, 0, 0, 255}, light[4] = {235, 128, 235, 128};
  Vek8u dst[6];
  EXPECT_EQ(vekiRGBToYUV422_8u_C3C2R(blue, 6, dst, 4, {2, 1}), vekStsNoErr);
  EXPECT_EQ((Color{dst[0], dst[1], dst[3]}), (Color{29, 239, 102}));
  EXPECT_EQ(vekiYCbCr422ToRGB_8u_C2C3R(light, 4, dst, 6, {2, 1}), vekStsNoErr);
  EXPECT_EQ((Color{dst[3], dst[4], dst[5]}), (Color{254, 254, 254}));  // truncated
  const auto word = [](auto f, Color c) {
    const Vek8u samples[3] = {Vek8u(c[0]), Vek8u(c[1]), Vek8u(c[2])};
    const Vek8u* const planes[3] = {samples, samples + 1, samples + 2};
    const int steps[3] = {1, 1, 1};
    Vek16u pixel = 0;
    EXPECT_EQ(f(planes, steps, &pixel, 2, {1, 1}), vekStsNoErr);
    const auto* bytes = reinterpret_cast<const Vek8u*>(&pixel);
    return bytes[0] | bytes[1] << 8;
  };
  EXPECT_EQ(word(vekiYCbCr420ToRGB565_8u16u_P3C3R, {255, 128, 128}), 0xFFFF);
  EXPECT_EQ(word(vekiYCbCr420ToRGB555_8u16u_P3C3R, {235, 128, 128}), 0x7FFF);
  EXPECT_EQ(word(vekiYUV420ToRGB444_8u16u_P3C3R, {255, 128, 128}), 0x0FFF);
  EXPECT_EQ(word(vekiYCbCr420ToRGB565_8u16u_P3C3R, {81, 90, 240}), 0xF800);
  EXPECT_EQ(word(vekiYCbCr420ToBGR565_8u16u_P3C3R, {81, 90, 240}), 0x001F);
}

TEST(Ycbcr, ExportsItsTables) {
  EXPECT_EQ(RGB_YCbCr_Q10[2] + RGB_YCbCr_Q10[8], 100 - 73);
  EXPECT_EQ(RGB_YCbCr[6], -24117);
  EXPECT_EQ(RGB_YCbCr[10], 0x01010000);
  EXPECT_EQ(YCbCr_RGB_Q10[4], 2065);
  EXPECT_EQ(YUV_RGB_Q10[3], 2081);
  // The Q16 forms are the Q10 factors with more digits.
  for (int i = 0; i < 5; ++i) {
    EXPECT_NEAR(YCbCr_RGB[i] / 64.0, YCbCr_RGB_Q10[i], 0.6) << i;
    EXPECT_NEAR(RGB_YUV[i] / 64.0, RGB_YUV_Q10[i], 0.6) << i;
    const int last = std::min(i, 3);
    EXPECT_NEAR(YUV_RGB[last] / 64.0, YUV_RGB_Q10[last], 0.6) << last;
  }
  struct Clamp {
    const Vek8u* table;
    int first, last, top;
  };
  const Clamp clamps[] = {{SAT16_DK, -24, 47, 15},
                          {SAT32_DK, -48, 95, 31},
                          {SAT64_DK, -96, 191, 63},
                          {SAT_DK, -376, 751, 255}};
  const Vek8u* end = clamps[0].table + clamps[0].first;
  for (const Clamp& c : clamps) {
    EXPECT_EQ(c.table + c.first, end) << "back to back, " << c.top;
    for (int i = c.first; i <= c.last; ++i) {
      ASSERT_EQ(c.table[i], std::clamp(i, 0, c.top)) << i << " to " << c.top;
    }
    end = c.table + c.last + 1;
  }
}

}  // namespace
}  // namespace vek::test
