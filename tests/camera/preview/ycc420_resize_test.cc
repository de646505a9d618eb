#include "vek/camera.h"

#include <gtest/gtest.h>
#include <vector>

#include "tests/camera/preview/resize_support.h"
#include "tests/support/differential.h"

namespace vek::test {
namespace {

/// A write pointer that visits a turned plane in source order.
struct Walk {
  ptrdiff_t start, increment, correction;
};

Walk walk(int rotation, ptrdiff_t w, ptrdiff_t h, ptrdiff_t s) {
  const Walk walks[6] = {{0, 1, s - w},          {(w - 1) * s, -s, w * s + 1},
                         {h - 1, s, -w * s - 1}, {(h - 1) * s + w - 1, -1, w - s},
                         {w - 1, -1, s + w},     {(h - 1) * s, 1, -s - w}};
  return walks[rotation];
}

/// Writes w x h samples, sample(x, y), along a walk.
template <class Sample>
void writePlane(uint8_t* dst, const Walk& way, int w, int h, Sample sample) {
  dst += way.start;
  for (int y = 0; y < h; ++y, dst += way.correction) {
    for (int x = 0; x < w; ++x, dst += way.increment) *dst = static_cast<uint8_t>(sample(x, y));
  }
}

/// One plane by the definition. Phases add up from row to row and from column to column.
void resizePlane(int plane, const uint8_t* src, const Resize& a, uint8_t* dst, const Walk& way) {
  const bool luma = plane == 0;
  const int w = luma ? a.dstWidth : a.dstWidth / 2, h = luma ? a.dstHeight : a.dstHeight / 2;
  const int factor = a.exactReduction();
  if (factor != 0 && a.interpolation == 1) {
    const ptrdiff_t step = a.srcStep[plane], inset = factor == 4 ? 1 : 0;
    return writePlane(dst, way, w, h, [&](int x, int y) {
      const uint8_t* at = src + (factor * y + inset) * step + factor * x + inset;
      return (at[0] + at[1] + at[step] + at[step + 1] + 4) >> 2;
    });
  }
  if (factor != 0) {
    const ptrdiff_t step = a.srcStep[plane == 2 ? 1 : plane];
    const int row = factor == 4 && plane != 2 ? 1 : 0;
    return writePlane(dst, way, w, h, [&](int x, int y) {
      return src[(factor * y + row) * step + factor * x + 1];
    });
  }
  const bool blended = luma && a.interpolation == 1;
  const uint32_t bottom = static_cast<uint32_t>(a.srcHeight - 1) << 16;
  const uint32_t right = static_cast<uint32_t>(a.srcWidth - 1) << 16;
  uint32_t rowPhase = blended ? 0 : 32768, columnPhase = 0;
  writePlane(dst, way, w, h, [&](int x, int y) {
    if (x == 0 && y > 0) {
      rowPhase += static_cast<uint32_t>(a.yStep);
      if (blended && rowPhase >= bottom) rowPhase = bottom - 1;
    }
    columnPhase = x == 0 ? (blended ? 0 : 32768) : columnPhase + static_cast<uint32_t>(a.xStep);
    if (blended) {
      return bilinear(src, a.srcStep[0], rowPhase, columnPhase, columnPhase == right);
    }
    return int{
        src[static_cast<ptrdiff_t>(rowPhase >> 16) * a.srcStep[plane] + (columnPhase >> 16)]};
  });
}

void compare(const Resize& a, const int dstStep[3], Random& random) {
  SCOPED_TRACE(testing::Message() << a << " destination steps " << dstStep[0] << ", " << dstStep[1]
                                  << ", " << dstStep[2]);
  const auto print = footprint::ycc420(a, dstStep);
  std::vector<std::unique_ptr<Buffer>> planes;
  std::vector<Destination> destinations;
  const Vek8u* src[3];
  for (int i = 0; i < 3; ++i) {
    planes.push_back(std::make_unique<Buffer>(print.src[i], 8));
    planes[i]->fill(random, allPatterns[random.in(0, 5)]);
    src[i] = planes[i]->data();
    const bool chroma = i != 0;
    Walk way = walk(a.rotation, a.dstWidth >> chroma, a.dstHeight >> chroma, dstStep[i]);
    if (chroma && a.rotation == 5) way.correction = -(a.dstWidth / 2) - dstStep[1];
    Buffer expected(print.dst[i], 4);
    resizePlane(i, src[i], a, expected.data(), way);
    destinations.push_back({print.dst[i], chroma ? 2u : 4u, 0, expected.contents()});
  }
  runAtEveryLevel(destinations, [&](auto dst) {
    EXPECT_EQ(vekiYCbCr420RszRot_8u_P3R(src, a.srcStep, a.srcWidth, a.srcHeight, dst.data(),
                                        dstStep, a.dstWidth, a.dstHeight, a.interpolation,
                                        a.rotation, a.xStep, a.yStep),
              0);
  });
}

TEST(Ycc420Resize, EqualsTheDefinition) {
  Random random(baseSeed());
  for (int round = 0; round < 300 && !testing::Test::HasFailure(); ++round) {
    Resize a = randomResize(random, 2, 2, 8, 8);
    if (random.chance(40)) {  // 2:1 or 4:1, mostly unturned
      const int factor = random.chance(50) ? 2 : 4;
      a.srcWidth = factor * a.dstWidth + random.in(0, factor - 1);
      a.srcHeight = factor * a.dstHeight + random.in(0, factor - 1);
      randomSteps(a, random);
      a.srcStep[0] = roundUp(a.srcWidth, 8);
      for (int i : {1, 2}) a.srcStep[i] = roundUp(a.srcWidth / 2, 8) + 8 * random.in(0, 2);
      if (random.chance(70)) a.rotation = 0;
    }
    const int across = a.turned() ? a.dstHeight : a.dstWidth;
    const int dstStep[3] = {roundUp(across, 4) + 4 * random.in(0, 2),
                            roundUp(across / 2, 2) + 2 * random.in(0, 3),
                            roundUp(across / 2, 2) + 2 * random.in(0, 3)};
    compare(a, dstStep, random);
  }
}

TEST(Ycc420Resize, SpansStripsAndTiles) {
  Random random(baseSeed() + 1);
  for (int rotation = 0; rotation < 6; ++rotation) {
    const int dstStep[3] = {1032, 516, 518};
    compare({1032, 142, {1032, 520, 528}, 1030, 140, 1, rotation, 65536, 65600}, dstStep, random);
  }
}

/// 12 x 8 to 6 x 4: the rounding constant 4 lets 255 wrap to 0.
TEST(Ycc420Resize, ReductionRoundsByFour) {
  struct Case {
    Vek8u samples[4], average;
  };
  for (const Case& c : {Case{{255, 255, 255, 255}, 0}, {{1, 1, 1, 2}, 2}, {{0, 0, 0, 0}, 1}}) {
    alignas(8) Vek8u y[8 * 16] = {}, chroma[4 * 8] = {}, out[4 * 8], cb[2 * 4], cr[2 * 4];
    y[0] = c.samples[0], y[1] = c.samples[1], y[16] = c.samples[2], y[17] = c.samples[3];
    const Vek8u* const src[3] = {y, chroma, chroma};
    Vek8u* const dst[3] = {out, cb, cr};
    const int srcStep[3] = {16, 8, 8}, dstStep[3] = {8, 4, 4};
    ASSERT_EQ(
        vekiYCbCr420RszRot_8u_P3R(src, srcStep, 12, 8, dst, dstStep, 6, 4, 1, 0, 131072, 131072),
        0);
    EXPECT_EQ(out[0], c.average);
  }
}

TEST(Ycc420Resize, RefusesBadArguments) {
  alignas(8) Vek8u memory[6][128] = {};
  struct Args {
    const Vek8u* src[3];
    int srcStep[3], srcWidth, srcHeight;
    Vek8u* dst[3];
    int dstStep[3], dstWidth, dstHeight, interpolation, rotation, xStep, yStep;
  };
  const Args good = {{memory[0], memory[1], memory[2]},
                     {8, 8, 8},
                     8,
                     8,
                     {memory[3], memory[4], memory[5]},
                     {8, 4, 4},
                     8,
                     8,
                     0,
                     0,
                     65536,
                     65536};
  const auto call = [](const Args& a) {
    return vekiYCbCr420RszRot_8u_P3R(a.src, a.srcStep, a.srcWidth, a.srcHeight, a.dst, a.dstStep,
                                     a.dstWidth, a.dstHeight, a.interpolation, a.rotation, a.xStep,
                                     a.yStep);
  };
  EXPECT_EQ(call(good), vekStsNoErr);
  EXPECT_EQ(vekiYCbCr420RszRot_8u_P3R(nullptr, good.srcStep, 8, 8, good.dst, good.dstStep, 8, 8, 0,
                                      0, 65536, 65536),
            vekStsBadArgErr);
  const auto fails = [&](const char* what, auto change) {
    Args a = good;
    change(a);
    EXPECT_EQ(call(a), vekStsBadArgErr) << what;
  };
  fails("null Cb", [&](Args& a) { a.src[1] = nullptr; });
  fails("null Cr destination", [&](Args& a) { a.dst[2] = nullptr; });
  fails("Cr alignment", [&](Args& a) { a.src[2] += 4; });
  fails("luma destination alignment", [&](Args& a) { a.dst[0] += 2; });
  fails("Cb destination alignment", [&](Args& a) { a.dst[1] += 1; });
  fails("1 to 1", [&](Args& a) { a.srcHeight = a.dstHeight = 1; });
  fails("negative width", [&](Args& a) { a.srcWidth = INT32_MIN; });
  fails("step above its limit", [&](Args& a) { a.yStep = 65537; });
  fails("negative step", [&](Args& a) { a.xStep = -65536; });
  fails("source step alignment", [&](Args& a) { a.srcStep[1] = 12; });
  fails("destination step alignment", [&](Args& a) { a.dstStep[0] = 10; });
  fails("odd chroma step", [&](Args& a) { a.dstStep[2] = 5; });
  fails("odd width", [&](Args& a) { a.dstWidth = 7; });
  fails("odd height", [&](Args& a) { a.dstHeight = 7; });
  fails("short source", [&](Args& a) { a.srcWidth = 9; });
  fails("negative row step", [&](Args& a) { a.srcStep[2] = -8; });
  fails("interpolation 2", [&](Args& a) { a.interpolation = 2; });
  fails("rotation -1", [&](Args& a) { a.rotation = -1; });
  fails("turned luma row", [&](Args& a) { a.dstHeight = 10, a.yStep = 1, a.rotation = 2; });
  fails("chroma row", [&](Args& a) { a.dstStep[1] = 2; });
}

}  // namespace
}  // namespace vek::test
