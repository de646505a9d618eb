#include "vek/camera.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <numeric>
#include <vector>

#include "camera/preview/csc_kernels.h"
#include "tests/campaign/definition.h"
#include "tests/footprint/preview.h"

namespace vek::test {
namespace {

/// Averages neighbours until one value remains.
int average(std::vector<int> values) {
  while (values.size() > 1) {
    for (size_t i = 0; i < values.size() / 2; ++i) {
      values[i] = (values[2 * i] + values[2 * i + 1] + 1) >> 1;
    }
    values.resize(values.size() / 2);
  }
  return values[0];
}

int rgb(int y, int cb, int cr, int format) {
  const int luma = _vekYCbCr_RGB[0] * (y - 16), b = cb - 128, r = cr - 128;
  const int greenTop = format == 0 ? 63 : 31, greenShift = format == 0 ? 12 : 13;
  const int red = std::clamp((luma + _vekYCbCr_RGB[1] * r) >> 13, 0, 31);
  const int green =
      std::clamp((luma + _vekYCbCr_RGB[3] * b + _vekYCbCr_RGB[2] * r) >> greenShift, 0, greenTop);
  const int blue = std::clamp((luma + _vekYCbCr_RGB[4] * b) >> 13, 0, 31);
  return format == 0 ? red << 11 | green << 5 | blue : red << 10 | green << 5 | blue;
}

/// Output pixel by output pixel, low byte first; samples are averaged over `blocks` blocks side by side.
void reduce(const Vek8u* src, int srcStep, Vek16u* dst, int dstStep, int width, int height,
            int factor, int interpolation, int format, int rotation) {
  const int columns = width / factor, rows = height / factor;
  for (int y = 0; y < rows; ++y) {
    for (int x = 0; x < columns; ++x) {
      // One sample of every `spacing` bytes, from byte `first` of block `column`.
      const auto sample = [&](int column, int blocks, int first, int spacing) {
        const Vek8u* at = src + factor * y * srcStep + 2 * factor * column + first;
        if (interpolation == 0) return int{*at};
        std::vector<int> averages;
        for (int row = 0; row < factor; ++row, at += srcStep) {
          std::vector<int> across;
          for (int i = 0; i < 2 * factor * blocks; i += spacing) across.push_back(at[i]);
          averages.push_back(average(across));
        }
        return average(averages);
      };
      const int pair = x & ~1, blocks = pair + 1 < columns ? 2 : 1;
      const auto [row, column] = footprint::turn(rotation, x, y, columns, rows);
      const int pixel =
          rgb(sample(x, 1, 1, 2), sample(pair, blocks, 0, 4), sample(pair, blocks, 2, 4), format);
      Vek8u* const to = reinterpret_cast<Vek8u*>(dst) + row * dstStep + 2 * column;
      to[0] = static_cast<Vek8u>(pixel), to[1] = static_cast<Vek8u>(pixel >> 8);
    }
  }
}

TEST(Ycc422Reduce, EqualsTheDefinition) {
  expectDefinition(VEK_NAMED(vekiResizeCscRotate_8u_C2R), reduce, 250);
}

TEST(Ycc422Reduce, KnownColours) {
  const int table[5] = {1192, 1634, -833, -401, 2065};
  EXPECT_TRUE(std::equal(table, table + 5, _vekYCbCr_RGB));
  EXPECT_EQ(rgb(255, 128, 128, 1), 0x7FFF);
  EXPECT_EQ(rgb(81, 90, 240, 0), 0xF800);
}

/// Every luma with every Cb and 18 of all Cr: 16-bit arithmetic must not show.
TEST(CscKernels, LevelsEqualPortable) {
  const auto table = [](Level level) {
    return reinterpret_cast<const ConvertPlanes*>(&select(cscKernels, level));
  };
  Vek8u y[256], cb[256], cr[256];
  std::iota(y, y + 256, Vek8u{0});
  for (int chroma = 0; chroma < 256 * 18; ++chroma) {
    std::fill_n(cb, 256, static_cast<Vek8u>(chroma % 256));
    std::fill_n(cr, 256, static_cast<Vek8u>(chroma / 256 * 15));
    const YccPlanes samples = {{y, 256}, {cb, 256}, {cr, 256}, 0};
    for (size_t kernel = 0; kernel < sizeof(CscKernels) / sizeof(ConvertPlanes); ++kernel) {
      Vek8u expected[768] = {}, actual[768] = {};
      table(Level::portable)[kernel](samples, 256, 1, expected, 0);
      for (Level level : levels()) {
        table(level)[kernel](samples, 256, 1, actual, 0);
        ASSERT_TRUE(std::equal(expected, expected + 768, actual))
            << "kernel " << kernel << ", " << name(level) << ", chroma " << chroma;
      }
    }
  }
}

}  // namespace
}  // namespace vek::test
