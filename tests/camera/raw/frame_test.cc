#include "vek/camera.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <vector>

#include "camera/raw/state.h"
#include "tests/camera/raw/pipeline.h"
#include "tests/campaign/definition.h"

namespace vek::test {
namespace {

using Rgb = std::array<int, 3>;

/// The definition, pixel by pixel, on gamma-mapped samples at (row, column) of the region.
struct Definition {
  const Vek16u* src;
  const VekiRggbToYCbCrState& g;

  int at(int row, int column) const {
    return g.gammaTable[0][src[row * (g.srcStep / 2) + column] & 1023];
  }

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
    if (g.scale == 2) return quad(2 * y, 2 * x, 2 * y + 1, 2 * x + 1);
    if (g.scale == 4) return quad(4 * y + 2, 4 * x + 2, 4 * y + 1, 4 * x + 1);
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
    const int x[] = {column, h - row, row, w - column}, y[] = {row, column, w - column, h - row};
    return pixel(x[g.rotation], y[g.rotation]);
  }

  uint8_t component(int i, const Rgb& p) const {
    int sum = i == 0 ? 0 : 32768;
    for (int j = 0; j < 3; ++j) sum += g.yccMatrix[3 * i + j] * p[j];
    return static_cast<uint8_t>(std::clamp(sum >> 8, 0, 255));
  }

  void write(Vek8u* const* dst) const {
    for (int y = 0; y < g.dstHeight; ++y) {
      for (int x = 0; x < g.dstWidth; ++x) {
        dst[0][y * g.dstStep[0] + x] = component(0, turned(y, x));
      }
    }
    const int down = g.chromaFormat == 8 ? 1 : 2;
    for (int y = 0; y < g.dstHeight; y += down) {
      for (int x = 0; x < g.dstWidth; x += 2) {
        const Rgb a = turned(y, x), b = turned(y, x + 1);
        // In 4:2:2 these are a and b again, which rounds as their average does.
        const Rgb c = turned(y + down - 1, x), d = turned(y + down - 1, x + 1);
        Rgb p;
        for (int j = 0; j < 3; ++j) p[j] = mean({a[j], b[j], c[j], d[j]});
        for (int i : {1, 2}) dst[i][y / down * g.dstStep[i] + x / 2] = component(i, p);
      }
    }
  }
};

TEST(RawFrame, EqualsTheDefinition) {
  const auto define = [](Vek16u* src, Vek8u* const* dst, const VekiRggbToYCbCrState* state) {
    for (int i = 0; state->deadPixels != nullptr && i < state->numDeadPixels; ++i) {
      const auto [row, column] = state->deadPixels[i];
      Vek16u* const pixel = src + row * (state->srcStep / 2) + column;
      if (column > 1) {
        *pixel = pixel[-2];
      } else if (row > 1) {
        *pixel = pixel[-state->srcStep];
      }
    }
    Definition{src, *state}.write(dst);
  };
  expectDefinition(VEK_NAMED(veki10RGGBtoYCbCr_RotRsz_8u_P3R), define, 700);
}

/// A uniform region with (R, G, B) = (8, 9, 200) mapped. By hand: (77 * 8 + 143 * 9 + 29 * 200) >>
/// 8, 128 + (-30 * 8 - 85 * 9 + 128 * 200) / 256 and so on, rounded down.
TEST(RawFrame, KnownValues) {
  const Vek16u r = 32, gr = 32, gb = 36, b = 800;
  Vek16u src[] = {r, gr, r, gr, gb, b, gb, b, r, gr, r, gr, gb, b, gb, b};
  const RawState state = makeState(rawColor(), rawGeometry(4, 4));
  alignas(8) Vek8u planes[3][48] = {};
  Vek8u* const dst[3] = {planes[0] + 6, planes[1] + 3, planes[2] + 3};
  ASSERT_EQ(veki10RGGBtoYCbCr_RotRsz_8u_P3R(src, dst, state.get()), vekStsNoErr);
  for (int i = 0; i < 16; ++i) EXPECT_EQ(dst[0][i / 4 * 8 + i % 4], 30);
  for (int i : {0, 1, 4, 5}) EXPECT_EQ(dst[1][i], 224);
  for (int i : {0, 1, 4, 5}) EXPECT_EQ(dst[2][i], 111);
}

}  // namespace
}  // namespace vek::test
