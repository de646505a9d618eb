#include "tests/definition/front.h"

#include "vek/camera.h"

#include <gtest/gtest.h>
#include <vector>

#include "tests/support/levels.h"

namespace vek::test {
namespace {

using Row = std::vector<Vek16u>;

/// Both rows of the destination are the samples of one row, with a black level of 0 and a gain of 1.
Row unpacked(int format, int bits, const std::vector<Vek8u>& row, int width) {
  std::vector<Vek8u> src = row;
  src.insert(src.end(), row.begin(), row.end());
  const VekiRawFrontEnd front = {format, bits, vekiBayerRGGB, {}, {4096, 4096, 4096, 4096}};
  Row dst(2 * static_cast<size_t>(width));
  EXPECT_EQ(vekiRawTo10RGGB_8u16u_C1R(src.data(), static_cast<int>(row.size()), {0, 0, width, 2},
                                      dst.data(), 2 * width, &front),
            0);
  dst.resize(static_cast<size_t>(width));
  return dst;
}

TEST(RawFrontEnd, PackedSamples) {
  for (Level level : levels()) {
    const LevelScope scope(level);
    // 1020, 1, 514, 7
    EXPECT_EQ(unpacked(vekiRawCsi2_10, 10, {0xFF, 0x00, 0x80, 0x01, 0xE4}, 4),
              (Row{1020, 1, 514, 7}));
    // 0xAB1, 0xCDF
    EXPECT_EQ(unpacked(vekiRawCsi2_12, 12, {0xAB, 0xCD, 0xF1}, 2), (Row{684, 824}));
    // 8193, 127, 16320, 32: the low bits are 1 + (63 << 6) + (0 << 12) + (32 << 18) = 0x800FC1.
    EXPECT_EQ(unpacked(vekiRawCsi2_14, 14, {0x80, 0x01, 0xFF, 0x00, 0xC1, 0x0F, 0x80}, 4),
              (Row{512, 8, 1020, 2}));
    // 0x234, 0xFFF: what is above the bits does not count.
    EXPECT_EQ(unpacked(vekiRawPlain16, 12, {0x34, 0xF2, 0xFF, 0xFF}, 2), (Row{141, 1023}));
    EXPECT_EQ(unpacked(vekiRaw8, 8, {0, 129}, 2), (Row{0, 516}));
  }
}

/// Every sample of 16 bits with gains and black levels at which products round, saturate, or leave 32
/// bits.
TEST(RawFrontEnd, AllSamples) {
  std::vector<Vek8u> src;
  for (int row = 0; row < 2; ++row) {
    for (int s = 0; s < 65536; ++s) {
      src.push_back(static_cast<Vek8u>(s)), src.push_back(static_cast<Vek8u>(s >> 8));
    }
  }
  for (int bits = 9; bits <= 16; ++bits) {
    const auto most = static_cast<Vek16u>((1 << bits) - 1);
    const VekiRawFrontEnd fronts[] = {
        {vekiRawPlain16, bits, 0, {0, 0, 0, 0}, {65535, 65535, 4096, 4097}},
        {vekiRawPlain16, bits, 0, {most, Vek16u(most - 1), 1, 65535}, {65535, 65535, 8191, 65535}},
        {vekiRawPlain16, bits, 0, {Vek16u(most / 2), 64, 63, 0}, {1, 4370, 30000, 0}}};
    for (const VekiRawFrontEnd& front : fronts) {
      Row expected(2 * 65536);
      definition::rawFrontEnd(src.data(), 131072, {0, 0, 65536, 2}, expected.data(), 131072,
                              &front);
      for (Level level : levels()) {
        const LevelScope scope(level);
        Row dst(2 * 65536);
        vekiRawTo10RGGB_8u16u_C1R(src.data(), 131072, {0, 0, 65536, 2}, dst.data(), 131072, &front);
        ASSERT_EQ(dst, expected) << bits << " bits at level " << name(level);
      }
    }
  }
}

TEST(RawFrontEnd, LargestRegion) {
  const auto region = [](VekiSize size, int order) -> std::vector<int> {
    VekiRect r = {9, 9, 9, 9};
    const VekStatus status = vekiRawRegion(size, order, &r);
    if (status != 0) return {status, r.x};  // untouched
    return {r.x, r.y, r.width, r.height};
  };
  using List = std::vector<int>;
  EXPECT_EQ(region({4, 6}, vekiBayerRGGB), (List{0, 0, 4, 6}));
  EXPECT_EQ(region({4, 6}, vekiBayerGRBG), (List{1, 0, 2, 6}));
  EXPECT_EQ(region({4, 6}, vekiBayerGBRG), (List{0, 1, 4, 4}));
  EXPECT_EQ(region({5, 3}, vekiBayerBGGR), (List{1, 1, 4, 2}));
  EXPECT_EQ(region({2, 6}, vekiBayerGRBG), (List{-5, 9}));
  EXPECT_EQ(region({6, 2}, vekiBayerBGGR), (List{-5, 9}));
  EXPECT_EQ(region({1, 2}, vekiBayerRGGB), (List{-5, 9}));
}

}  // namespace
}  // namespace vek::test
