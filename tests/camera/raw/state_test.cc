#include "camera/raw/state.h"

#include "vek/camera.h"

#include <climits>
#include <gtest/gtest.h>
#include <vector>

#include "camera/raw/gamma.h"
#include "tests/camera/raw/pipeline.h"
#include "tests/support/failing_allocator.h"

namespace vek::test {
namespace {

VekStatus init(const VekiRggbColorParam* color, const VekiRggbGeometry* geometry,
               VekiRggbToYCbCrState** state) {
  return vekiInitAlloc_10RGGBtoYCbCr_RotRsz_P3R(color, geometry, state);
}

TEST(RawState, BuildsGammaTables) {
  Vek8u linear[gammaTableSize], standard[gammaTableSize];
  _ReconstructGammaTable(linear, gammaCurvePoints(0));
  _ReconstructGammaTable(standard, gammaCurvePoints(1));
  for (int i = 0; i < gammaTableSize; ++i) EXPECT_EQ(linear[i], i / 4);
  // By hand at and between control points: (y * 1024 + 512) >> 12.
  const int anchors[][2] = {{0, 0},    {1, 1},     {2, 2},     {14, 15},   {32, 33},   {33, 34},
                            {128, 85}, {384, 155}, {448, 168}, {449, 168}, {896, 239}, {1023, 255}};
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

TEST(RawState, RefusesBadArguments) {
  const auto status = [](VekiRggbColorParam color, VekiRggbGeometry geometry) {
    VekiRggbToYCbCrState* const untouched = reinterpret_cast<VekiRggbToYCbCrState*>(&color);
    VekiRggbToYCbCrState* state = untouched;
    const VekStatus result = init(&color, &geometry, &state);
    if (result == vekStsNoErr) {
      EXPECT_EQ(vekiFree_10RGGBtoYCbCr_RotRsz_P3R(state), vekStsNoErr);
    } else {
      EXPECT_EQ(state, untouched);
    }
    dropAllocations();
    return result;
  };

  using Geometry = VekiRggbGeometry;
  for (int scale : {1, 2, 4}) {
    for (int rotation : {0, 1, 2, 3}) {
      EXPECT_EQ(status(rawColor(), rawGeometry(64, 32, scale, rotation)), vekStsNoErr);
    }
  }
  // Unlike reductions, reduction by 8, and reduced sizes of 6 x 6 and 8 x 3. The product of the
  // last one is the source's width in 32 bits.
  Geometry wrapped = rawGeometry(64, 32, 4);
  wrapped.srcWidth = 0;
  wrapped.dstWidth = 1 << 30;
  wrapped.dstStep[0] = wrapped.dstStep[1] = wrapped.dstStep[2] = 1 << 30;
  for (const Geometry& g :
       {rawGeometry(64, 32, 8), rawGeometry(12, 12, 2), rawGeometry(32, 12, 4), wrapped}) {
    EXPECT_EQ(status(rawColor(), g), vekStsBadArgErr) << g.srcWidth << 'x' << g.srcHeight;
  }

  const Vek8u gamma[gammaTableSize] = {};
  const VekiDeadPixel list[] = {{0, 0}, {1, 9}, {5, 5}, {7, 7}};
  using Color = VekiRggbColorParam;
  using Change = void (*)(Color&);
  const Change fine[] = {[](Color& c) { c.gammaMode = 1; },
                         [](Color& c) { c.gammaCurve[0] = 1, c.gammaCurve[1] = 7; },
                         [](Color& c) { c.numDeadPixels = 0; },
                         [](Color& c) { c.colOffset = INT_MAX; },
                         [](Color& c) { c.rowOffset = 9, c.deadPixels = nullptr; },
                         [](Color& c) { c.rowOffset = 5, c.colOffset = 4; }};
  const auto changed = [&](Change change) {
    Color color = rawColor();
    color.gammaTable[0] = gamma;
    color.deadPixels = list;
    color.numDeadPixels = 4;
    change(color);
    return color;
  };
  for (const Change& c : fine) {
    EXPECT_EQ(status(changed(c), rawGeometry(8, 8)), vekStsNoErr) << &c - fine;
  }
}

/// What a state's release leaves: the copy of a list.
TEST(RawState, ReleasesWhatItTook) {
  const VekiDeadPixel list[] = {{4, 4}, {1, 4}, {6, 9}};
  VekiRggbColorParam color = rawColor();
  color.deadPixels = list;
  color.numDeadPixels = 3;
  color.rowOffset = 2;
  const VekiRggbGeometry geometry = rawGeometry(8, 8);
  RawState state = makeState(color, geometry);
  ASSERT_EQ(state->numDeadPixels, 2);
  EXPECT_EQ(state->deadPixels[0].row, 2);
  EXPECT_EQ(state->deadPixels[1].column, 9);
  EXPECT_EQ(liveAllocations().size(), 4u);
  state.reset();
  EXPECT_EQ(liveAllocations(), (std::vector<int>{3 * 16}));
  dropAllocations();

  color.rowOffset = 0;
  state = makeState(color, geometry);
  EXPECT_EQ(state->deadPixels, list);
  state.reset();
  EXPECT_TRUE(liveAllocations().empty());
}

}  // namespace
}  // namespace vek::test
