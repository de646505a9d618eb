#include "vek/camera.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <vector>

#include "tests/camera/raw/pipeline.h"
#include "tests/footprint/raw.h"
#include "tests/support/differential.h"

namespace vek::test {
namespace {

using Rgb = std::array<int, 3>;
using Planes = std::array<std::vector<uint8_t>, 3>;

const int rgbToYcc[3][3] = {{77, 143, 29}, {-30, -85, 128}, {128, -107, -21}};

/// The definition, pixel by pixel, on gamma-mapped samples at (row, column) of the region.
struct Definition {
  const Vek16u* src;
  VekiRggbGeometry g;
  const Vek8u* gamma;
  const Vek16s* correction;

  int at(int row, int column) const { return gamma[src[row * (g.srcStep / 2) + column] & 1023]; }

  static int mean(std::initializer_list<int> values) {
    const int n = static_cast<int>(values.size());
    int sum = n / 2;
    for (int v : values) sum += v;
    return sum / n;
  }

  Rgb quad(int redRow, int redColumn, int blueRow, int blueColumn) const {
    return {at(redRow, redColumn), mean({at(redRow, blueColumn), at(blueRow, redColumn)}),
            at(blueRow, blueColumn)};
  }

  /// The pixel (x, y) of the unturned result.
  Rgb pixel(int x, int y) const {
    const int scale = g.filterMode == 2
                          ? 1
                          : std::max(g.srcWidth, g.srcHeight) / std::max(g.dstWidth, g.dstHeight);
    if (scale == 2) return quad(2 * y, 2 * x, 2 * y + 1, 2 * x + 1);
    if (scale == 4) return quad(4 * y + 2, 4 * x + 2, 4 * y + 1, 4 * x + 1);
    const int r = y & ~1, c = x & ~1;
    const bool edge = r == 0 || c == 0 || r == g.srcHeight - 2 || c == g.srcWidth - 2;
    if (g.srcBorderValid == 0 && edge) return quad(r, c, r + 1, c + 1);
    const int beside = mean({at(y, x - 1), at(y, x + 1)});
    const int above = mean({at(y - 1, x), at(y + 1, x)});
    if (x % 2 != y % 2) {
      return y % 2 == 0 ? Rgb{beside, at(y, x), above} : Rgb{above, at(y, x), beside};
    }
    const int cross = mean({at(y - 1, x), at(y + 1, x), at(y, x - 1), at(y, x + 1)});
    const int corners =
        mean({at(y - 1, x - 1), at(y - 1, x + 1), at(y + 1, x - 1), at(y + 1, x + 1)});
    return y % 2 == 0 ? Rgb{at(y, x), cross, corners} : Rgb{corners, cross, at(y, x)};
  }

  /// The pixel at a row and column of the destination.
  Rgb turned(int row, int column) const {
    const int w = g.dstWidth - 1, h = g.dstHeight - 1;
    switch (g.rotation) {
      case 1:
        return pixel(h - row, column);
      case 2:
        return pixel(row, w - column);
      case 3:
        return pixel(w - column, h - row);
      default:
        return pixel(column, row);
    }
  }

  uint8_t component(int i, const Rgb& p) const {
    int sum = i == 0 ? 0 : 32768;
    for (int j = 0; j < 3; ++j) {
      int c = 128;
      for (int k = 0; k < 3; ++k) c += rgbToYcc[i][k] * correction[3 * k + j];
      sum += static_cast<int16_t>(c >> 8) * p[j];
    }
    return static_cast<uint8_t>(std::clamp(sum >> 8, 0, 255));
  }

  Planes planes() const {
    Planes out;
    const int down = g.chromaFormat == 8 ? 1 : 2;
    for (int y = 0; y < g.dstHeight; ++y) {
      for (int x = 0; x < g.dstWidth; ++x) out[0].push_back(component(0, turned(y, x)));
    }
    for (int y = 0; y < g.dstHeight; y += down) {
      for (int x = 0; x < g.dstWidth; x += 2) {
        const Rgb a = turned(y, x), b = turned(y, x + 1);
        const Rgb c = turned(y + down - 1, x), d = turned(y + down - 1, x + 1);
        Rgb p;
        for (int j = 0; j < 3; ++j) {
          p[j] = down == 1 ? mean({a[j], b[j]}) : mean({a[j], b[j], c[j], d[j]});
        }
        out[1].push_back(component(1, p));
        out[2].push_back(component(2, p));
      }
    }
    return out;
  }
};

struct GammaTable {
  Vek8u entries[1024];
};

/// Runs the pipeline at every level on a random frame and compares with the definition.
void compare(const VekiRggbGeometry& g, Random& random) {
  SCOPED_TRACE(testing::Message() << g.srcWidth << 'x' << g.srcHeight << " to " << g.dstWidth << 'x'
                                  << g.dstHeight << " rotation " << g.rotation << " format "
                                  << g.chromaFormat << " border " << g.srcBorderValid
                                  << " source step " << g.srcStep);
  const auto print = footprint::rawFrame(g);
  Buffer src(print.src, 2, random.chance(50) ? Buffer::Guard::after : Buffer::Guard::before);
  src.fill(random, allPatterns[random.chance(60) ? 0 : random.in(0, 5)]);

  // Noise in the table makes every mapped value independent of its neighbours.
  GammaTable gamma;
  const bool extreme = random.chance(30);
  for (Vek8u& entry : gamma.entries) {
    entry = static_cast<Vek8u>(extreme ? random.in(0, 1) * 255 : random.in(0, 255));
  }
  Vek16s matrix[9];
  const int range = std::array{300, 1500, 32768}[random.in(0, 2)];
  for (int i = 0; i < 9; ++i) {
    const int v = random.chance(20) ? range * random.in(-1, 1) : random.in(-range, range);
    matrix[i] = static_cast<Vek16s>(std::min(32767, v + (range == 300) * identityMatrix[i]));
  }
  VekiRggbColorParam color = rawColor();
  color.gammaMode = 1;
  color.gammaTable[0] = gamma.entries;
  color.colorMatrix = matrix;
  const RawState state = makeState(color, g);
  ASSERT_NE(state, nullptr);

  const Planes expected = Definition{src.as<Vek16u>(), g, gamma.entries, matrix}.planes();
  const size_t unit = g.filterMode == 2 ? 8 : 4;
  const bool inset = g.filterMode == 2 && g.srcBorderValid == 0;
  runAtEveryLevel({{print.dst[0], unit, inset ? 6u : 0u, expected[0]},
                   {print.dst[1], unit / 2, inset ? 3u : 0u, expected[1]},
                   {print.dst[2], unit / 2, inset ? 3u : 0u, expected[2]}},
                  [&](const auto& dst) {
                    EXPECT_EQ(
                        veki10RGGBtoYCbCr_RotRsz_8u_P3R(src.as<Vek16u>(), dst.data(), state.get()),
                        vekStsNoErr);
                  });
}

TEST(RawFrame, EqualsTheDefinition) {
  Random random(baseSeed());
  for (int round = 0; round < 600 && !HasFailure(); ++round) {
    const int scale = 1 << random.in(0, 2), rotation = random.in(0, 3);
    const bool turned = rotation == 1 || rotation == 2;
    // Reduced destinations are multiples of four pixels wide.
    const int width = 2 * scale * random.size(90), height = 2 * scale * random.size(60);
    const int across = turned ? height : width;
    const int wider = scale == 1 ? 0 : (4 * scale - across % (4 * scale)) % (4 * scale);
    VekiRggbGeometry g =
        rawGeometry(width + (turned ? 0 : wider), height + (turned ? wider : 0), scale, rotation,
                    random.in(8, 9), random.chance(50) ? random.in(-1, 1) : 0);
    g.srcStep += 2 * random.in(0, 3);
    if (random.chance(15)) g.srcStep = -g.srcStep;
    for (int& step : g.dstStep) step += 8 * random.in(0, 2);
    compare(g, random);
  }
}

/// Wider than a strip and, turned, larger than a tile in both directions.
TEST(RawFrame, SpansStripsAndTiles) {
  Random random(baseSeed() + 1);
  for (int border : {0, 1}) {
    for (int format : {8, 9}) {
      for (int rotation : {0, 3})
        compare(rawGeometry(4102, 6, 1, rotation, format, border), random);
      for (int rotation : {1, 2})
        compare(rawGeometry(518, 70, 1, rotation, format, border), random);
    }
  }
  for (int rotation : {0, 1, 2, 3}) {
    const bool turned = rotation == 1 || rotation == 2;
    compare(rawGeometry(turned ? 1036 : 4120, turned ? 296 : 8, 2, rotation, 8), random);
  }
}

/// One quad of a uniform region: (R, G, B) = (8, 9, 200) mapped, by hand.
TEST(RawFrame, KnownValues) {
  Vek16u src[4][4];
  for (int y = 0; y < 4; ++y) {
    for (int x = 0; x < 4; ++x) src[y][x] = y % 2 == 0 ? 32 : x % 2 == 0 ? 36 : 800;
  }
  const RawState state = makeState(rawColor(), rawGeometry(4, 4));
  for (Level level : levels()) {
    const LevelScope scope(level);
    alignas(8) Vek8u luma[48] = {}, cb[16] = {}, cr[16] = {};
    Vek8u* const dst[3] = {luma + 6, cb + 3, cr + 3};
    ASSERT_EQ(veki10RGGBtoYCbCr_RotRsz_8u_P3R(src[0], dst, state.get()), vekStsNoErr);
    // (77 * 8 + 143 * 9 + 29 * 200) >> 8; 128 + (-30 * 8 - 85 * 9 + 128 * 200) / 256 and so on,
    // rounded down.
    for (int y = 0; y < 4; ++y) {
      for (int x = 0; x < 4; ++x) EXPECT_EQ(luma[6 + 8 * y + x], 30);
    }
    EXPECT_EQ(cb[3], 224);
    EXPECT_EQ(cb[8], 224);
    EXPECT_EQ(cr[4], 111);
  }
}

TEST(RawFrame, ReplacesDeadPixelsInListOrder) {
  const int width = 16, height = 8;
  const VekiDeadPixel list[] = {{5, 0},  {5, 1}, {1, 1}, {0, 7},   {4, 9},
                                {4, 11}, {3, 8}, {3, 6}, {-1, 20}, {7, 16}};
  const auto value = [](int row, int column) { return static_cast<Vek16u>(row * 20 + column); };
  for (int offset : {0, 3}) {
    std::vector<VekiDeadPixel> sensor(list, list + std::size(list));
    if (offset != 0) {
      for (VekiDeadPixel& pixel : sensor) pixel.row += offset;
      sensor.insert(sensor.begin() + 1, {{offset - 1, 5}, {INT32_MIN, 7}});
    }
    VekiRggbColorParam color = rawColor();
    color.deadPixels = sensor.data();
    color.numDeadPixels = static_cast<int>(sensor.size());
    color.rowOffset = offset;
    const RawState state = makeState(color, rawGeometry(width, height));
    // What is copied no longer depends on the caller's list.
    if (offset != 0) std::fill(sensor.begin(), sensor.end(), VekiDeadPixel{2, 2});

    std::vector<Vek16u> frame, expected;
    for (int i = 0; i < width * (height + 1); ++i) frame.push_back(value(i / width, i % width));
    expected = frame;
    const auto pixel = [&](int row, int column) -> Vek16u& {
      return expected[static_cast<size_t>(row * width + column)];
    };
    pixel(5, 0) = value(3, 0);
    pixel(5, 1) = value(3, 1);
    pixel(0, 7) = value(0, 5);
    pixel(4, 9) = pixel(4, 11) = value(4, 7);
    pixel(3, 8) = value(3, 6);
    pixel(3, 6) = value(3, 4);
    // Addresses are linear: column 20 above the region is column 4 of row 0 (dropped as it lies
    // above an offset region), column 16 of the last row is the sample behind it.
    if (offset == 0) pixel(0, 4) = value(0, 2);
    pixel(8, 0) = value(7, 14);

    alignas(8) Vek8u luma[16 * 8 + 8], cb[8 * 4 + 8], cr[8 * 4 + 8];
    Vek8u* const dst[3] = {luma + 6, cb + 3, cr + 3};
    Vek8u* const misaligned[3] = {luma, cb + 3, cr + 3};
    const std::vector<Vek16u> before = frame;
    EXPECT_EQ(veki10RGGBtoYCbCr_RotRsz_8u_P3R(frame.data(), misaligned, state.get()),
              vekStsBadArgErr);
    EXPECT_EQ(frame, before);
    EXPECT_EQ(veki10RGGBtoYCbCr_RotRsz_8u_P3R(frame.data(), dst, state.get()), vekStsNoErr);
    EXPECT_EQ(frame, expected) << "offset " << offset;
  }
}

TEST(RawFrame, RefusesNullAndMisalignedPointers) {
  alignas(8) Vek8u planes[3][64 * 64];
  std::vector<Vek16u> frame(20 * 20);
  Vek16u* const src = frame.data() + 21;
  struct Case {
    int scale, border;
    size_t offset[3];
    VekStatus status;
  };
  const Case cases[] = {{1, 1, {0, 0, 0}, vekStsNoErr},     {1, 1, {4, 0, 0}, vekStsBadArgErr},
                        {1, 1, {0, 2, 0}, vekStsBadArgErr}, {1, 1, {8, 0, 2}, vekStsBadArgErr},
                        {1, 0, {6, 3, 3}, vekStsNoErr},     {1, 0, {0, 3, 3}, vekStsBadArgErr},
                        {1, 0, {6, 0, 3}, vekStsBadArgErr}, {1, 0, {6, 3, 1}, vekStsBadArgErr},
                        {2, 0, {4, 2, 2}, vekStsNoErr},     {2, 0, {6, 2, 2}, vekStsBadArgErr},
                        {4, 1, {4, 3, 2}, vekStsBadArgErr}, {4, 0, {4, 2, 1}, vekStsBadArgErr}};
  for (const Case& c : cases) {
    const RawState state = makeState(rawColor(), rawGeometry(16, 16, c.scale, 0, 9, c.border));
    Vek8u* const dst[3] = {planes[0] + c.offset[0], planes[1] + c.offset[1],
                           planes[2] + c.offset[2]};
    EXPECT_EQ(veki10RGGBtoYCbCr_RotRsz_8u_P3R(src, dst, state.get()), c.status)
        << c.scale << ' ' << c.border << ' ' << c.offset[0] << ' ' << c.offset[1];
    if (c.status != vekStsNoErr) continue;
    EXPECT_EQ(veki10RGGBtoYCbCr_RotRsz_8u_P3R(nullptr, dst, state.get()), vekStsBadArgErr);
    EXPECT_EQ(veki10RGGBtoYCbCr_RotRsz_8u_P3R(src, nullptr, state.get()), vekStsBadArgErr);
    EXPECT_EQ(veki10RGGBtoYCbCr_RotRsz_8u_P3R(src, dst, nullptr), vekStsBadArgErr);
    for (int i = 0; i < 3; ++i) {
      Vek8u* some[3] = {dst[0], dst[1], dst[2]};
      some[i] = nullptr;
      EXPECT_EQ(veki10RGGBtoYCbCr_RotRsz_8u_P3R(src, some, state.get()), vekStsBadArgErr);
    }
  }
}

}  // namespace
}  // namespace vek::test
