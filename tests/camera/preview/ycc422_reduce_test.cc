#include "vek/camera.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <numeric>
#include <vector>

#include "camera/preview/csc_kernels.h"
#include "tests/definition/preview.h"
#include "tests/support/levels.h"

namespace vek::test {
namespace {

TEST(Ycc422Reduce, KnownColours) {
  const int table[5] = {1192, 1634, -833, -401, 2065};
  EXPECT_TRUE(std::equal(table, table + 5, _vekYCbCr_RGB));
  EXPECT_EQ(definition::rgbWord(255, 128, 128, 1), 0x7FFF);
  EXPECT_EQ(definition::rgbWord(81, 90, 240, 0), 0xF800);
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
