// Planar YCbCr to planar YCbCr, 4:2:0 and 4:2:2.
#include "vek/camera.h"

#include <gtest/gtest.h>
#include <vector>

#include "tests/camera/preview/resize_support.h"
#include "tests/campaign/definition.h"

namespace vek::test {
namespace {

/// A write pointer that visits a turned plane in source order.
struct Walk420 {
  ptrdiff_t start, increment, correction;
};

Walk420 walk420(int rotation, ptrdiff_t w, ptrdiff_t h, ptrdiff_t s) {
  const Walk420 walks[6] = {{0, 1, s - w},          {(w - 1) * s, -s, w * s + 1},
                            {h - 1, s, -w * s - 1}, {(h - 1) * s + w - 1, -1, w - s},
                            {w - 1, -1, s + w},     {(h - 1) * s, 1, -s - w}};
  return walks[rotation];
}

/// Writes w x h samples, sample(x, y), along a walk.
template <class Sample>
void writePlane(uint8_t* dst, const Walk420& way, int w, int h, Sample sample) {
  dst += way.start;
  for (int y = 0; y < h; ++y, dst += way.correction) {
    for (int x = 0; x < w; ++x, dst += way.increment) *dst = static_cast<uint8_t>(sample(x, y));
  }
}

/// One plane by the definition. Phases add up from row to row and from column to column.
void resizePlane(int plane, const uint8_t* src, const Resize& a, uint8_t* dst, const Walk420& way) {
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

void resize420(const Vek8u* const src[3], const Resize& a, uint8_t* const dst[3],
               const int dstStep[3]) {
  for (int i = 0; i < 3; ++i) {
    const bool chroma = i != 0;
    Walk420 way = walk420(a.rotation, a.dstWidth >> chroma, a.dstHeight >> chroma, dstStep[i]);
    if (chroma && a.rotation == 5) way.correction = -(a.dstWidth / 2) - dstStep[1];
    resizePlane(i, src[i], a, dst[i], way);
  }
}

/// The write pointers of a plane for blocks of two rows and one (chroma) or two (luma) columns: the
/// first one, the others relative to it, and how all move from block to block and from row pair to
/// row pair.
struct Walk422 {
  ptrdiff_t start, right, below, increment, correction;
};

Walk422 lumaWalk(int rotation, ptrdiff_t w, ptrdiff_t h, ptrdiff_t s) {
  const Walk422 walks[6] = {
      {0, 1, s, 2, 2 * s - w},           {(w - 1) * s, -s, 1, -2 * s, w * s + 2},
      {h - 1, s, -1, 2 * s, -w * s - 2}, {(h - 1) * s + w - 1, -1, -s, -2, w - 2 * s},
      {w - 1, -1, s, -2, w + 2 * s},     {(h - 1) * s, 1, -s, 2, -(w + 2 * s)}};
  return walks[rotation];
}

/// `w` and `h` are the luma's.
Walk422 chromaWalk(int rotation, ptrdiff_t w, ptrdiff_t h, ptrdiff_t s) {
  const Walk422 walks[6] = {
      {0, 0, s, 1, 2 * s - w / 2},          {(w - 1) * s, 0, -s, -2 * s, w * s + 1},
      {h / 2 - 1, 0, s, 2 * s, -w * s - 1}, {(h - 1) * s + w / 2 - 1, 0, -s, -1, w / 2 - 2 * s},
      {w / 2 - 1, 0, s, -1, w / 2 + 2 * s}, {(h - 1) * s, 0, -s, 1, -(w / 2 + 2 * s)}};
  return walks[rotation];
}

/// The three planes by the definition; all pointers and phases advance as the walk does.
void resize422(const Vek8u* const src[3], const Resize& a, uint8_t* const dst[3],
               const int dstStep[3]) {
  const int64_t right = int64_t{a.srcWidth - 1} << 16, bottom = int64_t{a.srcHeight - 1} << 16;
  const Walk422 luma = lumaWalk(a.rotation, a.dstWidth, a.dstHeight, dstStep[0]);
  const Walk422 chroma[3] = {{},
                             chromaWalk(a.rotation, a.dstWidth, a.dstHeight, dstStep[1]),
                             chromaWalk(a.rotation, a.dstWidth, a.dstHeight, dstStep[2])};
  const int half = a.interpolation == 0 ? 32768 : 0;
  uint8_t* out[3] = {dst[0] + luma.start, dst[1] + chroma[1].start, dst[2] + chroma[2].start};
  int64_t p0 = half, p1 = half + a.yStep;
  for (int y = 0; y < a.dstHeight; y += 2) {
    int64_t q0 = half, q1 = half + a.xStep, chromaColumn = 32768;
    for (int x = 0; x < a.dstWidth; x += 2) {
      const auto sample = [&](int64_t p, int64_t q, bool repeatRight) {
        return static_cast<uint8_t>(a.interpolation == 0
                                        ? src[0][(p >> 16) * a.srcStep[0] + (q >> 16)]
                                        : bilinear(src[0], a.srcStep[0], p, q, repeatRight));
      };
      out[0][0] = sample(p0, q0, false);
      out[0][luma.right] = sample(p0, q1, q1 >= right);
      out[0][luma.below] = sample(p1, q0, false);
      out[0][luma.below + luma.right] = sample(p1, q1, q1 >= right);
      out[0] += luma.increment;
      for (int i : {1, 2}) {
        const auto row = [&](int64_t p) {
          return src[i] + ((p + 32768 - half) >> 16) * a.srcStep[i];
        };
        out[i][0] = row(p0)[chromaColumn >> 16];
        out[i][chroma[i].below] = row(p1)[chromaColumn >> 16];
        out[i] += chroma[i].increment;
      }
      q0 += 2 * int64_t{a.xStep}, q1 += 2 * int64_t{a.xStep}, chromaColumn += a.xStep;
    }
    out[0] += luma.correction, out[1] += chroma[1].correction, out[2] += chroma[2].correction;
    p0 += 2 * int64_t{a.yStep}, p1 += 2 * int64_t{a.yStep};
    if (a.interpolation == 1 && p1 >= bottom) p1 = bottom - 1;
  }
}

/// `definition` with the arguments of the exported functions.
template <class Definition>
auto fromArguments(Definition definition) {
  return [=](const Vek8u* const* src, const int* srcStep, int srcWidth, int srcHeight,
             Vek8u* const* dst, const int* dstStep, int dstWidth, int dstHeight, int interpolation,
             int rotation, int xStep, int yStep) {
    const Resize a = {srcWidth, srcHeight, {srcStep[0], srcStep[1], srcStep[2]},
                      dstWidth, dstHeight, interpolation,
                      rotation, xStep,     yStep};
    definition(src, a, dst, dstStep);
  };
}

TEST(PlanarResize, EqualsTheDefinition) {
  expectDefinition(VEK_NAMED(vekiYCbCr420RszRot_8u_P3R), fromArguments(resize420), 500);
  expectDefinition(VEK_NAMED(vekiYCbCr422RszRot_8u_P3R), fromArguments(resize422), 1000);
}

/// 12 x 8 to 6 x 4: the rounding constant 4 lets 255 wrap to 0.
TEST(PlanarResize, ReductionRoundsByFour) {
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

}  // namespace
}  // namespace vek::test
