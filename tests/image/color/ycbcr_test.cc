#include "tests/footprint/ycbcr.h"

#include "vek/image.h"

#include <algorithm>
#include <array>
#include <climits>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/differential.h"

namespace vek::test {
namespace {

using footprint::Layout;
using Color = std::array<int, 3>;

// ---- The functions under test, called alike ----

/// The arguments for one side of a call, given as whatever type the function takes them.
struct Side {
  Vek8u* planes[3] = {};
  Vek8u* const* array = planes;
  int steps[3] = {};
  const int* stepArray = steps;

  Side() = default;
  Side(const Side&) = delete;

  operator Vek8u*() const { return planes[0]; }
  operator const Vek8u*() const { return planes[0]; }
  operator Vek16u*() const { return reinterpret_cast<Vek16u*>(planes[0]); }
  operator Vek8u* const*() const { return array; }
  operator const Vek8u* const*() const { return array; }
  operator int() const { return steps[0]; }
  operator const int*() const { return stepArray; }
};

struct Args {
  Side src, dst;
  VekiSize size = {};
};

using Call = std::function<VekStatus(const Args&)>;

template <class Src, class SrcStep, class Dst, class DstStep>
Call bind(VekStatus (*f)(Src, SrcStep, Dst, DstStep, VekiSize)) {
  return [f](const Args& a) {
    return f(static_cast<Src>(a.src), static_cast<SrcStep>(a.src), static_cast<Dst>(a.dst),
             static_cast<DstStep>(a.dst), a.size);
  };
}

template <class Src, class Dst>
Call bind(VekStatus (*f)(Src, Dst, VekiSize)) {
  return [f](const Args& a) { return f(static_cast<Src>(a.src), static_cast<Dst>(a.dst), a.size); };
}

struct Member : footprint::ColorNames {
  Call call;
  /// Faults in the order in which they are answered: P source pointers, Q array of steps, S source
  /// steps, D destination pointers, T destination steps, W size. A space separates the places.
  const char* checks;

  bool yuv = has("YUV"), bgr = has("BGR");
  int format = has("565") ? 565 : has("555") ? 555 : 444;
};

Member member(const char* name, Call call, const char* checks) {
  return {{name}, std::move(call), checks};
}

#define MEMBER(f, checks) member(#f, bind(f), checks)
#define FORMATS(prefix, suffix, checks)                                               \
  MEMBER(prefix##RGB565##suffix, checks), MEMBER(prefix##RGB555##suffix, checks),     \
      MEMBER(prefix##RGB444##suffix, checks), MEMBER(prefix##BGR565##suffix, checks), \
      MEMBER(prefix##BGR555##suffix, checks), MEMBER(prefix##BGR444##suffix, checks)

const std::vector<Member>& members() {
  static const std::vector<Member> all = {
      FORMATS(vekiYCbCr420To, _8u16u_P3C3R, "PQ S D T W"),
      FORMATS(vekiYUV420To, _8u16u_P3C3R, "PQ S D T W"),
      FORMATS(vekiYCbCrTo, _8u16u_P3C3R, "DP ST W"),
      FORMATS(vekiYCbCr422To, _8u16u_C2C3R, "DP ST W"),
      FORMATS(vekiYCbCrTo, _8u16u_C3R, "DP ST W"),
      MEMBER(vekiRGBToYCbCr_8u_C3R, "DP W ST"),
      MEMBER(vekiYCbCrToRGB_8u_C3R, "DP W ST"),
      MEMBER(vekiRGBToYCbCr422_8u_C3C2R, "DP W ST"),
      MEMBER(vekiYCbCr422ToRGB_8u_C2C3R, "DP W ST"),
      MEMBER(vekiRGBToYUV_8u_C3R, "DP W ST"),
      MEMBER(vekiYUVToRGB_8u_C3R, "DP W ST"),
      MEMBER(vekiRGBToYUV422_8u_C3C2R, "DP W ST"),
      MEMBER(vekiYUV422ToRGB_8u_C2C3R, "DP W ST"),
      MEMBER(vekiRGBToYUV420_8u_C3P3R, "W P S DQ T"),
      MEMBER(vekiRGBToYUV422_8u_C3P3R, "W P S DQ T"),
      MEMBER(vekiYUV420ToRGB_8u_P3C3R, "W QPD ST"),
      MEMBER(vekiYUV422ToRGB_8u_P3C3R, "W QPD ST"),
      MEMBER(vekiRGBToYUV_8u_C3P3R, "DP W ST"),
      MEMBER(vekiYUVToRGB_8u_P3C3R, "W P S D T"),
      MEMBER(vekiRGBToYUV420_8u_C3P3, "PD W"),
      MEMBER(vekiRGBToYUV422_8u_C3P3, "PD W"),
      MEMBER(vekiYUV420ToRGB_8u_P3C3, "PD W"),
      MEMBER(vekiYUV422ToRGB_8u_P3C3, "PD W"),
  };
  return all;
}

// ---- The definitions ----

int sat8(int v) {
  return std::clamp(v, 0, 255);
}

Color fromRgb(const Member& f, Color rgb) {
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

Color toRgb(const Member& f, Color yuv) {
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

int packedWord(const Member& f, Color rgb) {
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

void define(const Member& f, const Picture& src, const Picture& dst, VekiSize size) {
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

// ---- Comparisons ----

/// Source and destination of a call, with the steps that the function can express.
struct Images {
  int srcSteps[3], dstSteps[3];
  std::vector<std::unique_ptr<Buffer>> src;
  std::vector<Destination> dst;

  /// Rows are padded by up to `padding` bytes where the function takes steps.
  Images(const Member& f, VekiSize size, int padding, Random& random) {
    const auto steps = [&](Layout layout, int* out) {
      for (int p = 0; p < 3; ++p) {
        const auto bytes = footprint::colorPlane(layout, p, size, 0).bytes;
        out[p] = static_cast<int>(bytes) + (f.tight ? 0 : random.in(0, padding));
        if (f.oneStep) out[p] = out[0];
      }
    };
    steps(f.src, srcSteps);
    steps(f.dst, dstSteps);
    for (int p = 0; p < footprint::planeCount(f.src); ++p) {
      const Area area = footprint::colorPlane(f.src, p, size, srcSteps[p]);
      src.push_back(std::make_unique<Buffer>(area, 1, Buffer::Guard::after));
    }
    for (int p = 0; p < footprint::planeCount(f.dst); ++p) {
      const size_t offset = static_cast<size_t>(random.in(0, 63));
      dst.push_back({footprint::colorPlane(f.dst, p, size, dstSteps[p]), 64, offset});
    }
  }

  Picture source(const Member& f) const {
    Picture picture = {f.src, {}, {srcSteps[0], srcSteps[1], srcSteps[2]}};
    for (size_t p = 0; p < src.size(); ++p) picture.data[p] = src[p]->data();
    return picture;
  }
};

void compare(const Member& f, VekiSize size, Images& images) {
  SCOPED_TRACE(testing::Message() << f.name << ' ' << size.width << 'x' << size.height);
  Picture expected = {f.dst, {}, {}};
  for (size_t p = 0; p < images.dst.size(); ++p) {
    Destination& d = images.dst[p];
    d.expected.resize(static_cast<size_t>(d.area.bytes * d.area.rows));
    expected.data[p] = d.expected.data();
    expected.step[p] = d.area.bytes;
  }
  define(f, images.source(f), expected, size);
  runAtEveryLevel(images.dst, [&](const std::vector<uint8_t*>& pointers) {
    Args a;
    for (size_t p = 0; p < images.src.size(); ++p) a.src.planes[p] = images.src[p]->data();
    std::copy(pointers.begin(), pointers.end(), a.dst.planes);
    std::copy(images.srcSteps, images.srcSteps + 3, a.src.steps);
    std::copy(images.dstSteps, images.dstSteps + 3, a.dst.steps);
    a.size = size;
    EXPECT_EQ(f.call(a), vekStsNoErr);
  });
}

TEST(Ycbcr, EqualsTheDefinition) {
  Random random(baseSeed());
  for (const Member& f : members()) {
    for (int round = 0; round < 40 && !HasFailure(); ++round) {
      const VekiSize size = {round == 0 ? 1 : random.size(200), round == 0 ? 1 : random.in(1, 5)};
      Images images(f, size, random.in(0, 1) * 40, random);
      const Pattern pattern = allPatterns[random.in(0, 5)];
      for (auto& p : images.src) p->fill(random, random.chance(50) ? pattern : Pattern::noise);
      compare(f, size, images);
    }
  }
}

/// Every combination of 52 values of each component, extremes included; the two pixels of a pair
/// differ in the first.
TEST(Ycbcr, CoversTheColourCube) {
  Random random(baseSeed() + 1);
  const VekiSize size = {104, 104 * 26};
  for (const Member& f : members()) {
    Images images(f, size, 0, random);
    const Picture source = images.source(f);
    for (int y = 0; y < size.height; ++y) {
      for (int x = 0; x < size.width; ++x) {
        const int first = 5 * (y / 104 * 2 + y % 2);
        source.at(0, x, y) = static_cast<uint8_t>(x % 2 == 0 ? first : 255 - first);
        source.at(1, x, y) = static_cast<uint8_t>(5 * (x / 2));
        source.at(2, x, y) = static_cast<uint8_t>(5 * (y / 2 % 52));
      }
    }
    compare(f, size, images);
    if (HasFailure()) return;
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
  for (const Case& c : cases) {
    const auto f = std::find_if(members().begin(), members().end(),
                                [&](const Member& m) { return m.name == c.function; });
    ASSERT_NE(f, members().end()) << c.function;
    for (Level level : levels()) {
      const LevelScope scope(level);
      Vek8u src[3][4] = {}, dst[3][4] = {};
      Args a;
      for (int i = 0; i < 3; ++i) {
        a.src.planes[i] = src[i], a.dst.planes[i] = dst[i];
        a.src.steps[i] = a.dst.steps[i] = 4;
        Picture{f->src, {src[0], src[1], src[2]}, {}}.at(i, 0, 0) = static_cast<Vek8u>(c.from[i]);
      }
      a.size = {1, 1};
      EXPECT_EQ(f->call(a), vekStsNoErr);
      for (int i = 0; i < (f->packed ? 2 : 3); ++i) {
        EXPECT_EQ((Picture{f->dst, {dst[0], dst[1], dst[2]}, {}}.at(i, 0, 0)), c.to[i])
            << c.function;
      }
    }
  }
}

// ---- Arguments ----

using Fault = std::function<void(Args&)>;

/// All faults of a kind that f's arguments can show.
std::vector<Fault> faults(const Member& f, char kind) {
  if (kind == 'W') {
    return {[](Args& a) { a.size.width = 0; }, [](Args& a) { a.size.height = INT_MIN; }};
  }
  const bool source = kind == 'P' || kind == 'S' || (kind == 'Q' && !f.forward);
  const auto side = [source](Args& a) -> Side& { return source ? a.src : a.dst; };
  if (kind == 'Q') return {[side](Args& a) { side(a).stepArray = nullptr; }};
  const bool pointers = kind == 'P' || kind == 'D';
  const int planes = footprint::planeCount(source ? f.src : f.dst);
  std::vector<Fault> list;
  for (int p = 0; p < (pointers || !f.oneStep ? planes : 1); ++p) {
    list.push_back([=](Args& a) {
      if (pointers) side(a).planes[p] = nullptr;
      if (!pointers) side(a).steps[p] = p == 1 ? INT_MIN : -p;
    });
  }
  if (pointers && planes == 3) list.push_back([side](Args& a) { side(a).array = nullptr; });
  return list;
}

VekStatus statusOf(char kind) {
  return kind == 'W'                  ? vekStsSizeErr
         : kind == 'S' || kind == 'T' ? vekStsStepErr
                                      : vekStsNullPtrErr;
}

/// Each fault alone, and together with each fault that is answered later.
TEST(Ycbcr, AnswersFaultsInOrder) {
  for (const Member& f : members()) {
    const std::string checks = f.checks;
    for (size_t i = 0; i < checks.size(); ++i) {
      for (size_t j = i; j < checks.size(); ++j) {
        if (checks[i] == ' ' || checks[j] == ' ') continue;
        for (const Fault& earlier : faults(f, checks[i])) {
          for (const Fault& later : faults(f, checks[j])) {
            Vek8u src[3][64] = {}, dst[3][64] = {};
            Args a;
            for (int p = 0; p < 3; ++p) {
              a.src.planes[p] = src[p], a.dst.planes[p] = dst[p];
              a.src.steps[p] = a.dst.steps[p] = 8;
            }
            a.size = {2, 2};
            later(a);
            earlier(a);
            EXPECT_EQ(f.call(a), statusOf(checks[i])) << f.name << ' ' << checks[i] << checks[j];
          }
        }
      }
    }
  }
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
