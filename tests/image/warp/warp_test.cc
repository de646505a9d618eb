#include "vek/image.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <vector>

#include "tests/support/levels.h"

namespace vek::test {
namespace {

using Bytes = std::vector<Vek8u>;
using Coefficients = std::vector<Vek64f>;

constexpr int interpolations[] = {vekiWarpNearest, vekiWarpLinear, vekiWarpCubic};
constexpr int borders[] = {vekiBorderConstant, vekiBorderReplicate, vekiBorderTransparent};

Bytes noise(size_t n) {
  Bytes bytes;
  for (uint32_t s = 1; bytes.size() < n;) {
    s = s * 1664525u + 1013904223u;
    bytes.push_back(static_cast<Vek8u>(s >> 24));
  }
  return bytes;
}

/// How an image of as many channels is warped; with six coefficients the map is affine.
struct Warp {
  int channels;
  VekiSize src;
  VekiRect dst;
  Coefficients map;
  int direction, interpolation, border;

  VekStatus operator()(const Bytes& from, Bytes& to) const {
    static constexpr Vek8u value[3] = {9, 200, 77};
    const int srcStep = src.width * channels, dstStep = dst.width * channels;
    const auto call = [&](auto f, auto borderValue) {
      return f(from.data(), srcStep, src, to.data(), dstStep, dst, map.data(), direction,
               interpolation, border, borderValue);
    };
    if (channels == 1) {
      return call(map.size() == 6 ? vekiAffineWarp_8u_C1R : vekiPerspectiveWarp_8u_C1R, value[0]);
    }
    return call(map.size() == 6 ? vekiAffineWarp_8u_C3R : vekiPerspectiveWarp_8u_C3R, value);
  }
  Bytes operator()(const Bytes& from) const {
    Bytes to(static_cast<size_t>(dst.width) * static_cast<size_t>(dst.height * channels), 123);
    EXPECT_EQ((*this)(from, to), vekStsNoErr);
    return to;
  }
};

/// FNV-1a of all borders and both directions.
uint64_t digest(int channels, const Coefficients& map, int interpolation) {
  const Bytes src = noise(static_cast<size_t>(60 * 50 * channels));
  uint64_t hash = 0xCBF29CE484222325;
  for (int border : borders) {
    for (int direction : {0, 1}) {
      const Warp warp = {channels,  {60, 50},      {-3, 2, 70, 44}, map,
                         direction, interpolation, border};
      for (Vek8u byte : warp(src)) hash = (hash ^ byte) * 0x100000001B3;
    }
  }
  return hash;
}

TEST(Warp, Digests) {
  const Coefficients affine = {0.9, -0.31, 5.25, 0.27, 1.1, -7.5};
  Coefficients perspective = affine;
  perspective.insert(perspective.end(), {0.001, -0.002, 1});
  const uint64_t expected[2][2][3] = {
      {{0x510d7ad5fb5a7393, 0x88017818691a5d2d, 0xb3111c1fe24c2173},
       {0xde48e43eb6249064, 0x58e48bc851f6a6e2, 0x199aca213aa9ea3c}},
      {{0x5cfb7dd9fd543df1, 0x25f29146261c77aa, 0xa253a87a67e1d813},
       {0xda1c85eccdee8a01, 0xac8a47d72d77246f, 0x3833c18027526cb6}}};
  for (Level level : levels()) {
    const LevelScope scope(level);
    for (int interpolation : interpolations) {
      for (int channels : {1, 3}) {
        EXPECT_EQ(digest(channels, affine, interpolation), expected[0][channels / 2][interpolation])
            << name(level) << ", " << channels << " channels, interpolation " << interpolation;
        EXPECT_EQ(digest(channels, perspective, interpolation),
                  expected[1][channels / 2][interpolation])
            << name(level) << ", " << channels << " channels, interpolation " << interpolation;
      }
    }
  }
}

TEST(Warp, KnownPixels) {
  Bytes src;
  for (int j = 0; j < 4; ++j) {
    for (int i = 0; i < 4; ++i) src.push_back(static_cast<Vek8u>(10 * i + 40 * j));
  }
  Warp warp = {1, {4, 4}, {0, 1, 4, 1}, {1, 0, 0.5, 0, 1, 0.25}, 1, 0, vekiBorderReplicate};
  EXPECT_EQ(warp(src), (Bytes{50, 60, 70, 70}));
  warp.interpolation = vekiWarpLinear;
  EXPECT_EQ(warp(src), (Bytes{55, 65, 75, 80}));
  warp.interpolation = vekiWarpCubic;
  EXPECT_EQ(warp(src), (Bytes{54, 65, 76, 81}));
}

/// Whole pixels are copied, whatever the interpolation.
TEST(Warp, QuarterTurnCopies) {
  constexpr int width = 70, height = 40;
  for (int channels : {1, 3}) {
    const Bytes src = noise(static_cast<size_t>(width * height * channels));
    Bytes turned;
    for (int y = 0; y < width; ++y) {
      for (int x = 0; x < height; ++x) {
        const auto at = src.begin() + ((height - 1 - x) * width + y) * channels;
        turned.insert(turned.end(), at, at + channels);
      }
    }
    for (int interpolation : interpolations) {
      for (int border : borders) {
        const Warp warp = {channels,
                           {width, height},
                           {0, 0, height, width},
                           {0, -1, height - 1, 1, 0, 0},
                           vekiWarpForward,
                           interpolation,
                           border};
        EXPECT_EQ(warp(src), turned) << channels << ' ' << interpolation << ' ' << border;
      }
    }
  }
}

/// The last sample is inside, 1/128 pixel more is not.
TEST(Warp, TransparentUpToTheLastSample) {
  for (int interpolation : {vekiWarpLinear, vekiWarpCubic}) {
    Warp warp = {1, {2, 1}, {0, 0, 3, 1}, {1, 0, 0, 0, 1, 0}, 1, interpolation, 2};
    EXPECT_EQ(warp({5, 7}), (Bytes{5, 7, 123}));
    warp.map[2] = 1 / 128.0;
    EXPECT_EQ(warp({5, 7}), (Bytes{5, 123, 123}));
    warp.map[2] = -1 / 128.0;
    EXPECT_EQ(warp({5, 7}), (Bytes{123, 7, 123}));
  }
}

TEST(Warp, TilesMakeTheWhole) {
  const Bytes src = noise(90 * 60);
  for (const Coefficients& map :
       {Coefficients{0.8, -0.4, 33.3, 0.37, 0.9, -4.7},
        Coefficients{0.8, -0.4, 33.3, 0.37, 0.9, -4.7, 0.004, -0.003, 1}}) {
    Warp warp = {1, {90, 60}, {-20, -9, 300, 40}, map, vekiWarpForward, vekiWarpLinear, 0};
    const Bytes whole = warp(src);
    for (int x : {0, 1, 100, 293}) {
      warp.dst = {-20 + x, -9 + 7, 7, 5};
      const Bytes tile = warp(src);
      for (int y = 0; y < 5; ++y) {
        const Bytes expected(whole.begin() + (7 + y) * 300 + x,
                             whole.begin() + (7 + y) * 300 + x + 7);
        EXPECT_EQ(Bytes(tile.begin() + y * 7, tile.begin() + (y + 1) * 7), expected) << x;
      }
    }
  }
}

/// The denominator is 0 in column 2.
TEST(Warp, PixelsWithoutAPosition) {
  Warp warp = {1, {2, 2}, {0, 0, 5, 1}, {0, 0, 1, 0, 0, 1, 1, 0, -2}, 1, vekiWarpNearest, 0};
  const Bytes src = {1, 2, 3, 4};
  EXPECT_EQ(warp(src), (Bytes{1, 9, 9, 4, 4}));  // -0.5, -1, none, 1, 0.5
  warp.border = vekiBorderReplicate;
  EXPECT_EQ(warp(src), (Bytes{1, 1, 1, 4, 4}));
  warp.border = vekiBorderTransparent;
  EXPECT_EQ(warp(src), (Bytes{1, 123, 123, 4, 4}));
}

TEST(Warp, CoefficientsOutOfRange) {
  const auto status = [](const Coefficients& map, int direction) {
    const Warp warp = {1, {2, 2}, {0, 0, 2, 2}, map, direction, vekiWarpLinear, 1};
    Bytes dst(4);
    return warp({1, 2, 3, 4}, dst);
  };
  const Vek64f below = std::nextafter(0x1p30, 0.0), most = std::numeric_limits<Vek64f>::max();
  EXPECT_EQ(status({1, 2, 0, 2, 4, 0}, vekiWarpForward), vekStsCoeffRangeErr);
  EXPECT_EQ(status({0, 0, 1, 0, 0, 1}, vekiWarpInverse), vekStsNoErr);  // one sample everywhere
  EXPECT_EQ(status({1e-9, 0, 0, 0, 1, 0}, vekiWarpForward), vekStsCoeffRangeErr);
  EXPECT_EQ(status({16384, 16384, 0, 0, 0, 0}, vekiWarpInverse), vekStsCoeffRangeErr);
  EXPECT_EQ(status({16384, 16383, 32767, 0, 0, -below}, vekiWarpInverse), vekStsNoErr);
  EXPECT_EQ(status({1, 2, 0, 2, 4, 0, 0, 0, 1}, vekiWarpForward), vekStsCoeffRangeErr);
  EXPECT_EQ(status({0, 0, 0, 0, 0, 0, 0, 0, 0}, vekiWarpInverse), vekStsCoeffRangeErr);
  EXPECT_EQ(status({0, 0, most, 0, 0, 0, 0, 0, 1}, vekiWarpInverse), vekStsNoErr);
  EXPECT_EQ(status({most / 65536, most / 32768, 0, 0, 0, 0, 0, 0, 1}, vekiWarpInverse),
            vekStsCoeffRangeErr);
  EXPECT_EQ(status({0, 0, 5e-324, 0, 0, 0, 0, 0, 5e-324}, vekiWarpInverse), vekStsNoErr);
}

}  // namespace
}  // namespace vek::test
