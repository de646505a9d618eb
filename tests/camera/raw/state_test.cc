#include "camera/raw/state.h"

#include "vek/camera.h"

#include <climits>
#include <gtest/gtest.h>

#include "camera/raw/gamma.h"
#include "tests/camera/raw/pipeline.h"
#include "tests/support/failing_allocator.h"

namespace vek::test {
namespace {

TEST(RawState, BuildsGammaTables) {
  Vek8u linear[gammaTableSize], standard[gammaTableSize];
  fillGammaTable(linear, gammaCurvePoints(0));
  fillGammaTable(standard, gammaCurvePoints(1));
  for (int i = 0; i < gammaTableSize; ++i) EXPECT_EQ(linear[i], i / 4);
  // By hand at and between control points: (y * 1024 + 512) >> 12.
  const int anchors[][2] = {{0, 0},     {1, 1},     {2, 2},     {7, 8},     {14, 15},
                            {32, 33},   {33, 34},   {128, 85},  {384, 155}, {448, 168},
                            {449, 168}, {896, 239}, {992, 252}, {1023, 255}};
  for (const auto& [code, value] : anchors) EXPECT_EQ(standard[code], value) << code;
}

/// The identity, sums near the limits, and the one sum that leaves 16 bits.
TEST(RawState, CombinesMatrices) {
  const Vek16s cases[][2][9] = {
      {{256, 0, 0, 0, 256, 0, 0, 0, 256}, {77, 143, 29, -30, -85, 128, 128, -107, -21}},
      {{128, 0, -32768, 0, 0, 32767, 0, 128, 32767},
       {39, 15, 12159, -15, 64, 9344, 64, -10, -32767}},
      {{0, 0, 32767, 0, 0, -32768, 0, 0, -32768}, {0, 0, -12160, 0, 0, -9344, 0, 0, -32768}}};
  for (const auto& [correction, combined] : cases) {
    VekiRggbColorParam color = rawColor();
    color.colorMatrix = correction;
    const RawState state = makeState(color, rawGeometry(4, 4));
    for (int i = 0; i < 9; ++i) EXPECT_EQ(state->yccMatrix[i], combined[i]) << i;
  }
}

TEST(RawState, RefusesUnequalReductions) {
  for (int scale : {1, 2, 4})
    EXPECT_NE(makeState(rawColor(), rawGeometry(64, 32, scale, 1)), nullptr);
  // Reduction by 8, and reduced sizes of 6 x 6 and 8 x 3. Four times the last one's width is the
  // source's in 32 bits.
  VekiRggbGeometry wrapped = rawGeometry(64, 32, 4);
  wrapped.srcWidth = 0;
  wrapped.dstWidth = wrapped.dstStep[0] = wrapped.dstStep[1] = wrapped.dstStep[2] = 1 << 30;
  for (const VekiRggbGeometry& g :
       {rawGeometry(64, 32, 8), rawGeometry(12, 12, 2), rawGeometry(32, 12, 4), wrapped}) {
    EXPECT_EQ(makeState(rawColor(), g), nullptr) << g.srcWidth << 'x' << g.srcHeight;
  }
}

/// Without an offset the caller's list is used as it is; otherwise what lies inside is copied.
TEST(RawState, TakesDeadPixelLists) {
  const struct {
    int count, rowOffset, colOffset, kept;  ///< kept -1: refused
    VekiDeadPixel last;
  } cases[] = {{4, 0, 0, 4, {7, 7}}, {0, 0, 0, 0, {}},       {4, 5, 4, 2, {2, 3}},
               {4, 1, 0, 3, {6, 7}}, {4, 0, INT_MAX, 0, {}}, {4, 5, 5, -1, {}},
               {0, 1, 0, -1, {}}};
  for (const auto& c : cases) {
    VekiDeadPixel list[] = {{INT_MIN, 0}, {1, 9}, {5, 5}, {7, 7}};
    VekiRggbColorParam color = rawColor();
    color.deadPixels = list;
    color.numDeadPixels = c.count, color.rowOffset = c.rowOffset, color.colOffset = c.colOffset;
    const RawState state = makeState(color, rawGeometry(8, 8));
    ASSERT_EQ(state == nullptr ? -1 : state->numDeadPixels, c.kept);
    EXPECT_EQ(state != nullptr && state->deadPixels == list, c.rowOffset + c.colOffset == 0);
    if (c.kept < 1) continue;
    EXPECT_EQ(state->deadPixels[c.kept - 1].row, c.last.row);
    EXPECT_EQ(state->deadPixels[c.kept - 1].column, c.last.column);
  }
  dropAllocations();
}

}  // namespace
}  // namespace vek::test
