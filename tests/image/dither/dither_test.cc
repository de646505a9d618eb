#include "tests/definition/dither.h"

#include "vek/image.h"

#include <gtest/gtest.h>
#include <utility>
#include <vector>

#include "tests/support/digest.h"
#include "tests/support/levels.h"

namespace vek::test {
namespace {

using Bytes = std::vector<Vek8u>;
using Pixels = VekStatus (*)(const Vek8u*, int, Vek16u*, int, VekiSize, int, VekiPoint);

constexpr VekiPoint corner = {0, 0};
constexpr int methods[] = {vekiDitherOrdered, vekiDitherDiffusion};

Bytes noise(size_t count) {
  Bytes bytes(count);
  Noise from;
  for (Vek8u& b : bytes) b = from.byte();
  return bytes;
}

/// Results of a plain program of its own, on noise.
TEST(Dither, Digests) {
  constexpr int width = 61, height = 37;
  constexpr VekiPoint origin = {3, -2};
  const Bytes grey = noise(width * height), color = noise(3 * width * height);
  const uint64_t ofLevels[] = {0xC943E6F731C83E8C, 0x260DB8457F3C4D44};
  const uint64_t ofBits[] = {0xF08A94C51E7EC505, 0x0351C8D7FAD41AF4};
  const struct {
    Pixels f;
    uint64_t digests[2];
  } ofPixels[] = {{vekiDitherRGB565_8u16u_C3R, {0xE61ACC6622EF4C98, 0x252A1E1AAA051C49}},
                  {vekiDitherRGB555_8u16u_C3R, {0xE55CC443468D4A1B, 0x0BCFC7517EF123E3}},
                  {vekiDitherRGB444_8u16u_C3R, {0x99EEE8D3CB95EF74, 0x39F8618B704D89E9}}};
  for (Level level : levels()) {
    const LevelScope scope(level);
    for (int method : methods) {
      Digest ofBytes, ofPacked;
      for (int n : {2, 3, 5, 16, 100, 256}) {
        Bytes dst(width * height);
        EXPECT_EQ(vekiDither_8u_C1R(grey.data(), width, dst.data(), width, {width, height}, n,
                                    method, origin),
                  0);
        ofBytes.add(dst.data(), dst.size());
      }
      EXPECT_EQ(ofBytes.value(), ofLevels[method]) << name(level);
      for (int bits : {1, 2, 4}) {
        const int step = (width * bits + 7) / 8;
        Bytes dst(static_cast<size_t>(step * height));
        EXPECT_EQ(vekiDitherPacked_8u_C1R(grey.data(), width, dst.data(), step, {width, height},
                                          bits, method, origin),
                  0);
        ofPacked.add(dst.data(), dst.size());
      }
      EXPECT_EQ(ofPacked.value(), ofBits[method]) << name(level);
      for (const auto& pixels : ofPixels) {
        Bytes dst(2 * width * height);
        EXPECT_EQ(pixels.f(color.data(), 3 * width, reinterpret_cast<Vek16u*>(dst.data()),
                           2 * width, {width, height}, method, origin),
                  0);
        Digest digest;
        digest.add(dst.data(), dst.size());
        EXPECT_EQ(digest.value(), pixels.digests[method]) << name(level);
      }
    }
  }
}

TEST(Dither, KnownRows) {
  const Bytes row(8, 100);
  const Vek8u expected[] = {0x11, 0x49};
  for (int method : methods) {
    Vek8u packed = 0;
    EXPECT_EQ(vekiDitherPacked_8u_C1R(row.data(), 8, &packed, 1, {8, 1}, 1, method, corner), 0);
    EXPECT_EQ(packed, expected[method]);
    Bytes dst(8);
    EXPECT_EQ(vekiDither_8u_C1R(row.data(), 8, dst.data(), 8, {8, 1}, 4, method, corner), 0);
    EXPECT_EQ(dst, Bytes(8, 85));
  }
  const Bytes white(9, 255);
  Vek8u word[3] = {};
  const auto pixel = [&](Pixels f) {
    EXPECT_EQ(f(white.data(), 3, reinterpret_cast<Vek16u*>(word + 1), 2, {1, 1}, 0, corner), 0);
    return word[1] | word[2] << 8;
  };
  EXPECT_EQ(pixel(vekiDitherRGB565_8u16u_C3R), 0xFFFF);
  EXPECT_EQ(pixel(vekiDitherRGB555_8u16u_C3R), 0x7FFF);
  EXPECT_EQ(pixel(vekiDitherRGB444_8u16u_C3R), 0x0FFF);
}

TEST(Dither, BlackAndWhiteStayAndAllLevelsAreTheIdentity) {
  constexpr int width = 70, height = 40;
  const Bytes any = noise(width * height);
  const auto dithered = [](const Bytes& src, int n, int method) {
    Bytes dst(src.size());
    EXPECT_EQ(
        vekiDither_8u_C1R(src.data(), width, dst.data(), width, {width, height}, n, method, corner),
        0);
    return dst;
  };
  for (int method : methods) {
    EXPECT_EQ(dithered(any, 256, method), any);
    for (int n = 2; n < 256; ++n) {
      for (Vek8u grey : {0, 255}) {
        const Bytes flat(width * height, grey);
        EXPECT_EQ(dithered(flat, n, method), flat) << n;
      }
    }
  }
}

/// Kernels replace divisions by multiplications: every sample with every threshold and number of levels.
TEST(Dither, AllDivisions) {
  constexpr VekiSize size = {2048, 8};
  Bytes src(2048 * 8), dst(src.size()), expected(src.size());
  for (size_t i = 0; i < src.size(); ++i) src[i] = static_cast<Vek8u>(i % 2048 / 8);
  for (int n = 2; n <= 256; ++n) {
    definition::ditheredBytes(src.data(), 2048, expected.data(), 2048, size, n, 0, corner);
    for (Level level : levels()) {
      const LevelScope scope(level);
      EXPECT_EQ(vekiDither_8u_C1R(src.data(), 2048, dst.data(), 2048, size, n, 0, corner), 0);
      EXPECT_EQ(dst, expected) << n << ' ' << name(level);
    }
  }
}

TEST(Dither, WidthOfDiffusion) {
  const Bytes src(16385);
  Bytes dst(16385, 1);
  const auto status = [&](int width, int method) {
    return vekiDither_8u_C1R(src.data(), width, dst.data(), width, {width, 1}, 2, method, corner);
  };
  EXPECT_EQ(status(16385, vekiDitherDiffusion), vekStsSizeErr);
  EXPECT_EQ(dst[0], 1);
  EXPECT_EQ(status(16384, vekiDitherDiffusion), 0);
  EXPECT_EQ(status(16385, vekiDitherOrdered), 0);
  EXPECT_EQ(dst, src);
}

/// The channels of wide rows are diffused one after the other.
TEST(Dither, WideColors) {
  const std::pair<Pixels, Pixels> functions[] = {
      {vekiDitherRGB565_8u16u_C3R, definition::ditheredPixels<5, 6, 5>},
      {vekiDitherRGB444_8u16u_C3R, definition::ditheredPixels<4, 4, 4>}};
  for (int width : {6720, 6721, 16384}) {
    const VekiSize size = {width, 34};
    const int srcStep = 3 * width, dstStep = 2 * width + 1;
    const auto rows = static_cast<size_t>(size.height);
    const Bytes src = noise(static_cast<size_t>(srcStep) * rows);
    const Bytes before = noise(static_cast<size_t>(dstStep) * rows);
    for (const auto& [f, define] : functions) {
      Bytes expected = before;
      define(src.data(), srcStep, reinterpret_cast<Vek16u*>(expected.data()), dstStep, size,
             vekiDitherDiffusion, corner);
      for (Level level : levels()) {
        const LevelScope scope(level);
        Bytes dst = before;
        EXPECT_EQ(f(src.data(), srcStep, reinterpret_cast<Vek16u*>(dst.data()), dstStep, size,
                    vekiDitherDiffusion, corner),
                  0);
        EXPECT_EQ(dst, expected) << width << ' ' << name(level);
      }
    }
  }
}

}  // namespace
}  // namespace vek::test
