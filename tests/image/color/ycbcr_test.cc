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
    expectDefinition(record.name, defined, 80);
  }
}

/// An image without padding.
struct Image {
  Layout layout;
  int steps[3] = {};
  std::vector<uint8_t> bytes[3] = {};
  uint8_t* planes[3] = {};

  Image(Layout l, VekiSize size) : layout(l) {
    for (int p = 0; p < footprint::planeCount(l); ++p) {
      const Area area = footprint::colorPlane(l, p, size, 0);
      steps[p] = static_cast<int>(area.bytes);
      bytes[p].resize(static_cast<size_t>(area.bytes * area.rows));
      planes[p] = bytes[p].data();
    }
  }

  Picture picture() const {
    return {layout, {planes[0], planes[1], planes[2]}, {steps[0], steps[1], steps[2]}};
  }
  void addTo(std::vector<Value>& arguments, const Names& f) {
    const bool planar = footprint::planeCount(layout) == 3;
    arguments.push_back({planar ? static_cast<void*>(planes) : planes[0]});
    if (!f.tight) arguments.push_back({steps, {steps[0]}});
  }
};

void convert(const Record& record, const Names& f, Image& src, Image& dst, VekiSize size) {
  std::vector<Value> arguments;
  src.addTo(arguments, f);
  dst.addTo(arguments, f);
  arguments.push_back({nullptr, {size.width, size.height}});
  EXPECT_EQ(record.call(arguments.data()), vekStsNoErr);
}

/// Every combination of 52 values of each component, extremes included; the two pixels of a pair
/// differ in the first.
TEST(Ycbcr, CoversTheColourCube) {
  const VekiSize size = {104, 104 * 26};
  for (const Record& record : conversions()) {
    const Names f = {{record.name}};
    Image src(f.src, size), dst(f.dst, size), expected(f.dst, size);
    const Picture source = src.picture();
    for (int y = 0; y < size.height; ++y) {
      for (int x = 0; x < size.width; ++x) {
        const int first = 5 * (y / 104 * 2 + y % 2);
        source.at(0, x, y) = static_cast<uint8_t>(x % 2 == 0 ? first : 255 - first);
        source.at(1, x, y) = static_cast<uint8_t>(5 * (x / 2));
        source.at(2, x, y) = static_cast<uint8_t>(5 * (y / 2 % 52));
      }
    }
    define(f, source, expected.picture(), size);
    for (Level level : levels()) {
      const LevelScope scope(level);
      convert(record, f, src, dst, size);
      for (int p = 0; p < 3; ++p) {
        ASSERT_TRUE(sameBytes(expected.bytes[p], dst.bytes[p], dst.steps[p]))
            << f.name << ", plane " << p << " at level " << name(level);
      }
    }
  }
}

TEST(Ycbcr, KnownColours) {
  struct Case {
    const char* function;
    Color from, to;  ///< of 16-bit pixels the bytes
  };
  const Case cases[] = {
      {"vekiRGBToYCbCr_8u_C3R", {200, 200, 200}, {188, 128, 128}},
      {"vekiRGBToYCbCr_8u_C3R", {255, 0, 0}, {81, 90, 240}},
      {"vekiYCbCrToRGB_8u_C3R", {16, 128, 128}, {0, 0, 0}},
      {"vekiYCbCrToRGB_8u_C3R", {235, 128, 128}, {255, 255, 255}},
      {"vekiYCbCr422ToRGB_8u_C2C3R", {235, 128, 128}, {254, 254, 254}},
      {"vekiRGBToYUV_8u_C3R", {77, 77, 77}, {77, 127, 128}},
      {"vekiRGBToYUV_8u_C3R", {255, 0, 0}, {76, 90, 255}},
      {"vekiRGBToYUV422_8u_C3C2R", {0, 0, 255}, {29, 239, 102}},
      {"vekiYUVToRGB_8u_C3R", {77, 128, 128}, {77, 77, 77}},
      {"vekiYUV420ToRGB_8u_P3C3", {77, 127, 129}, {78, 76, 74}},
      {"vekiYCbCrToRGB565_8u16u_C3R", {255, 128, 128}, {0xFF, 0xFF}},
      {"vekiYCbCrToRGB555_8u16u_P3C3R", {235, 128, 128}, {0xFF, 0x7F}},
      {"vekiYUV420ToRGB444_8u16u_P3C3R", {255, 128, 128}, {0xFF, 0x0F}},
      {"vekiYCbCr420ToRGB565_8u16u_P3C3R", {81, 90, 240}, {0x00, 0xF8}},
      {"vekiYCbCr422ToBGR565_8u16u_C2C3R", {81, 90, 240}, {0x1F, 0x00}},
  };
  const std::vector<Record> records = conversions();
  for (const Case& c : cases) {
    const auto record = std::find_if(records.begin(), records.end(),
                                     [&](const Record& r) { return r.name == c.function; });
    ASSERT_NE(record, records.end()) << c.function;
    const Names f = {{c.function}};
    Image src(f.src, {1, 1}), dst(f.dst, {1, 1});
    for (int i = 0; i < 3; ++i) src.picture().at(i, 0, 0) = static_cast<Vek8u>(c.from[i]);
    convert(*record, f, src, dst, {1, 1});
    for (int i = 0; i < (f.packed ? 2 : 3); ++i) {
      EXPECT_EQ(dst.picture().at(i, 0, 0), c.to[i]) << c.function;
    }
  }
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
