// Planar YCbCr to planar YCbCr, 4:2:0 and 4:2:2.
#include "vek/camera.h"

#include <gtest/gtest.h>

#include "tests/camera/preview/luma.h"
#include "tests/campaign/definition.h"

namespace vek::test {
namespace {

using footprint::Place;
using footprint::Resize;

/// Exact reductions: plane `i` of 4:2:0, sample (x, y).
int reduced(const Vek8u* plane, const Resize& a, int i, int x, int y) {
  const int factor = a.exactReduction(), inset = factor == 4 ? 1 : 0;
  if (a.interpolation == 0) {  // Cr from the first row of its block, in the rows of Cb
    const ptrdiff_t row = factor * y + (i == 2 ? 0 : inset);
    return plane[row * a.srcStep[i == 2 ? 1 : i] + factor * x + 1];
  }
  const ptrdiff_t step = a.srcStep[i];
  const Vek8u* const at = plane + (factor * y + inset) * step + factor * x + inset;
  return (at[0] + at[1] + at[step] + at[step + 1] + 4) >> 2;
}

/// Row by row, as the source is oriented: what an odd 4:2:2 height makes too much comes last.
template <bool is420>
void resize(const Vek8u* const* src, const int* s, int srcWidth, int srcHeight, Vek8u* const* dst,
            const int* dstStep, int w, int h, int interpolation, int rotation, int xStep,
            int yStep) {
  const Resize a = {srcWidth, srcHeight, {s[0], s[1], s[2]}, w, h, interpolation, rotation,
                    xStep,    yStep};
  const auto put = [&](int i, Place to, int value) {
    dst[i][ptrdiff_t{to.row} * dstStep[i] + to.column] = static_cast<Vek8u>(value);
  };
  const bool exact = is420 && a.exactReduction() != 0;
  for (int y = 0; y < (h + 1) / 2 * 2; ++y) {
    for (int x = 0; x < w; ++x) {
      const auto p = (is420 ? footprint::ycc420Phases : footprint::ycc422Phases)(a, x, y);
      put(0, footprint::turn(rotation, x, y, w, h),
          exact ? reduced(src[0], a, 0, x, y) : lumaAt(src[0], a, p.row, p.column));
      if (x % 2 == 1 || (is420 && y % 2 == 1)) continue;
      for (int i : {1, 2}) {
        Place to = is420 ? footprint::turn(rotation, x / 2, y / 2, w / 2, h / 2)
                         : footprint::turnChroma422(a, x / 2, y);
        const ptrdiff_t row = p.chromaRow >> 16, column = p.chromaColumn >> 16;
        const int value = exact ? reduced(src[i], a, i, x / 2, y / 2) : src[i][row * s[i] + column];
        if (is420 && rotation == vekiMirrorTopBottom && i == 2) {  // in the row distance of Cb
          to.column += (h / 2 - 1) * dstStep[2] - y / 2 * dstStep[1];
          to.row = 0;
        }
        put(i, to, value);
      }
    }
  }
}

TEST(PlanarResize, EqualsTheDefinition) {
  expectDefinition(VEK_NAMED(vekiYCbCr420RszRot_8u_P3R), resize<true>, 500);
  expectDefinition(VEK_NAMED(vekiYCbCr422RszRot_8u_P3R), resize<false>, 1000);
}

/// 12 x 8 to 6 x 4: the rounding constant 4 lets 255 wrap to 0.
TEST(PlanarResize, ReductionRoundsByFour) {
  const int cases[][5] = {{255, 255, 255, 255, 0}, {1, 1, 1, 2, 2}, {0, 0, 0, 0, 1}};
  for (const auto& c : cases) {
    alignas(8) Vek8u y[8 * 16] = {}, chroma[4 * 8] = {}, out[4 * 8], cb[2 * 4], cr[2 * 4];
    for (int i = 0; i < 4; ++i) y[i / 2 * 16 + i % 2] = static_cast<Vek8u>(c[i]);
    const Vek8u* const src[3] = {y, chroma, chroma};
    Vek8u* const dst[3] = {out, cb, cr};
    const int srcStep[3] = {16, 8, 8}, dstStep[3] = {8, 4, 4};
    vekiYCbCr420RszRot_8u_P3R(src, srcStep, 12, 8, dst, dstStep, 6, 4, vekiInterpolateLinear,
                              vekiRotNone, 131072, 131072);
    EXPECT_EQ(out[0], c[4]);
  }
}

}  // namespace
}  // namespace vek::test
