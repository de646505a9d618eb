#include "tests/footprint/ycbcr.h"

#include "vek/image.h"

#include <array>

#include "tests/campaign/definition.h"

namespace vek::test {
namespace {

using footprint::Layout;
using Color = std::array<int, 3>;

/// What a function does follows from its name.
struct Names : footprint::ColorNames {
  bool yuv = has("YUV"), bgr = has("BGR");
  int format = has("565") ? 565 : has("555") ? 555 : 444;
};

/// All records but those of the other colour models.
std::vector<Record> conversions() {
  std::vector<Record> records = recordsOf("color");
  std::erase_if(records, [](const Record& r) {
    return r.name.find("YCbCr") == std::string::npos && r.name.find("YUV") == std::string::npos;
  });
  return records;
}

int sat8(int v) {
  return std::clamp(v, 0, 255);
}

Color fromRgb(const Names& f, Color rgb) {
  const auto [r, g, b] = rgb;
  if (!f.yuv) {
    return {(263 * r + 516 * g + 100 * b + 16896) >> 10,
            (-152 * r - 298 * g + 450 * b + 131584) >> 10,
            (450 * r - 377 * g - 73 * b + 131584) >> 10};
  }
  const int y = (306 * r + 601 * g + 117 * b) >> 10;
  if (f.shared) return {y, sat8(128 + (504 * (b - y) >> 10)), sat8(128 + (898 * (r - y) >> 10))};
  return {y, sat8(128 + ((-151 * r - 296 * g + 446 * b) >> 10)),
          sat8(128 + ((630 * r - 527 * g - 102 * b) >> 10))};
}

Color toRgb(const Names& f, Color yuv) {
  const auto [y, u, v] = yuv;
  if (f.yuv) {
    if (f.shared) {
      return {sat8(y + (1167 * (v - 128) >> 10)),
              sat8(y + ((-403 * (u - 128) - 595 * (v - 128)) >> 10)),
              sat8(y + (2081 * (u - 128) >> 10))};
    }
    return {sat8((1024 * y + 1167 * v - 148910) >> 10),
            sat8((1024 * y - 403 * u - 595 * v + 128307) >> 10),
            sat8((1024 * y + 2081 * u - 265826) >> 10)};
  }
  if (!f.shared && !f.packed) {
    return {sat8((1192 * y + 1634 * v - 227749) >> 10),
            sat8((1192 * y - 401 * u - 833 * v + 139383) >> 10),
            sat8((1192 * y + 2065 * u - 282930) >> 10)};
  }
  const int luma = 1192 * (y - 16);
  return {sat8((luma + 1634 * (v - 128)) >> 10),
          sat8((luma - 833 * (v - 128) - 401 * (u - 128)) >> 10),
          sat8((luma + 2065 * (u - 128)) >> 10)};
}

int packedWord(const Names& f, Color rgb) {
  if (f.bgr) std::swap(rgb[0], rgb[2]);
  const auto [high, g, low] = rgb;
  if (f.format == 565) return high >> 3 << 11 | g >> 2 << 5 | low >> 3;
  if (f.format == 555) return high >> 3 << 10 | g >> 3 << 5 | low >> 3;
  return high >> 4 << 8 | g >> 4 << 4 | low >> 4;
}

/// Where component c of pixel (x, y) lies.
struct Picture {
  Layout layout;
  uint8_t* data[3];
  ptrdiff_t step[3];

  uint8_t& at(int c, int x, int y) const {
    switch (layout) {
      case Layout::triples:
        return data[0][y * step[0] + 3 * x + c];
      case Layout::pairs422:
        return data[0][y * step[0] + (c == 0 ? 2 * x : 4 * (x / 2) + 2 * c - 1)];
      case Layout::words:
        return data[0][y * step[0] + 2 * x + c];
      default:
        if (c > 0 && layout == Layout::planes420) y /= 2;
        if (c > 0 && layout != Layout::planes444) x /= 2;
        return data[c][y * step[c] + x];
    }
  }
  Color color(int x, int y) const { return {at(0, x, y), at(1, x, y), at(2, x, y)}; }
};

/// The rounded average of the block's pixels that the image has.
Color average(const Picture& rgb, VekiSize size, int x0, int y0, int rows) {
  Color sum = {};
  int count = 0;
  for (int y = y0; y < std::min(y0 + rows, size.height); ++y) {
    for (int x = x0; x < std::min(x0 + 2, size.width); ++x, ++count) {
      for (int c = 0; c < 3; ++c) sum[c] += rgb.at(c, x, y);
    }
  }
  for (int& s : sum) s = (s + count / 2) / count;
  return sum;
}

void define(const Names& f, const Picture& src, const Picture& dst, VekiSize size) {
  const int blockRows = f.rows2 ? 2 : 1;
  for (int y = 0; y < size.height; ++y) {
    for (int x = 0; x < size.width; ++x) {
      if (f.packed) {
        const int word = packedWord(f, toRgb(f, src.color(x, y)));
        dst.at(0, x, y) = static_cast<uint8_t>(word & 255);
        dst.at(1, x, y) = static_cast<uint8_t>(word >> 8);
        continue;
      }
      Color out = f.forward ? fromRgb(f, src.color(x, y)) : toRgb(f, src.color(x, y));
      if (f.forward && f.shared) {
        const int y0 = y / blockRows * blockRows;
        const Color chroma = fromRgb(f, average(src, size, x & ~1, y0, blockRows));
        out = {out[0], chroma[1], chroma[2]};
      }
      for (int c = 0; c < 3; ++c) dst.at(c, x, y) = static_cast<uint8_t>(out[c]);
      if (dst.layout == Layout::pairs422 && x + 1 == size.width && x % 2 == 0) {
        dst.at(0, x + 1, y) = static_cast<uint8_t>(out[0]);
      }
    }
  }
}

/// The image that the arguments from v on describe; moves v behind them.
Picture pictureOf(const Names& f, Layout layout, const Value*& v, VekiSize size) {
  const int planes = footprint::planeCount(layout);
  Picture picture = {layout, {}, {}};
  for (int p = 0; p < planes; ++p) {
    picture.data[p] = planes == 1 ? as<uint8_t*>(v[0]) : as<uint8_t* const*>(v[0])[p];
    picture.step[p] = f.tight                    ? footprint::colorPlane(layout, p, size, 0).bytes
                      : planes == 1 || f.oneStep ? as<int>(v[1])
                                                 : as<const int*>(v[1])[p];
  }
  v += f.tight ? 1 : 2;
  return picture;
}

TEST(Ycbcr, EqualsTheDefinition) {
  for (const Record& record : conversions()) {
    const Names f = {{record.name}};
    const auto defined = [&](const Value* v) {
      const auto size = as<VekiSize>(v[f.tight ? 2 : 4]);
      const Picture src = pictureOf(f, f.src, v, size);
      define(f, src, pictureOf(f, f.dst, v, size), size);
      return vekStsNoErr;
    };
    expectDefinition(record.name, defined, 300);
  }
}

TEST(Ycbcr, KnownColours) {
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

TEST(Colour, AnswersFaultsInOrder) {
  expectOrder("color", {{"420To.*16u", "01234"},  // source by source, then the destination
                        {"GrayQ14", "010132"},
                        {"16u|Gray|LUV", "01012"},  // steps before the size
                        {"YUV42._8u_C3P3R", "12340"},
                        {"YUV42.ToRGB_8u_P3C3R", "12120"},
                        {"YUVToRGB_8u_P3C3R", "12340"},
                        {"P3$|P3C3$", "001"},
                        {"Twist", "0.0.10"},
                        {"", "02021"}});
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
