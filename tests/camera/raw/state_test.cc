#include "camera/raw/state.h"

#include "vek/camera.h"

#include <climits>
#include <cstdlib>
#include <gtest/gtest.h>
#include <map>
#include <vector>

#include "camera/raw/gamma.h"
#include "tests/camera/raw/pipeline.h"

namespace vek::test {
namespace {

/// The allocator of this program: knows what is live, and can fail its n-th call.
struct Blocks {
  std::map<void*, int> live;
  int calls = 0;
  int failing = -1;  ///< index of the call that gives null; -1: none

  ~Blocks() { drop(); }

  /// Releases what the library keeps on purpose.
  void drop() {
    for (const auto& [block, size] : live) std::free(block);
    live.clear();
  }
} blocks;

}  // namespace
}  // namespace vek::test

extern "C" void* vekiMalloc(int size) {
  using vek::test::blocks;
  if (blocks.calls++ == blocks.failing) return nullptr;
  void* const block = std::malloc(static_cast<size_t>(size));
  blocks.live[block] = size;
  return block;
}

extern "C" void vekiFree(void* ptr) {
  using vek::test::blocks;
  if (ptr == nullptr) return;
  EXPECT_EQ(blocks.live.erase(ptr), 1u);
  std::free(ptr);
}

namespace vek::test {
namespace {

VekStatus init(const VekiRggbColorParam* color, const VekiRggbGeometry* geometry,
               VekiRggbToYCbCrState** state) {
  return vekiInitAlloc_10RGGBtoYCbCr_RotRsz_P3R(color, geometry, state);
}

TEST(RawState, BuildsGammaTables) {
  const auto table = [](Vek32u curve) {
    std::vector<Vek8u> entries(gammaTableSize);
    _ReconstructGammaTable(entries.data(), gammaCurvePoints(curve));
    return entries;
  };
  const std::vector<Vek8u> linear = table(0), standard = table(1);
  for (size_t i = 0; i < 1024; ++i) EXPECT_EQ(linear[i], i / 4);
  // By hand at and between control points: (y * 1024 + 512) >> 12.
  const struct {
    size_t code;
    int value;
  } anchors[] = {{0, 0},    {1, 1},     {2, 2},     {14, 15},   {32, 33},   {33, 34},
                 {128, 85}, {384, 155}, {448, 168}, {449, 168}, {896, 239}, {1023, 255}};
  for (const auto& [code, value] : anchors) EXPECT_EQ(standard[code], value) << code;
}

TEST(RawState, CombinesMatrices) {
  const Vek16s ycc[9] = {77, 143, 29, -30, -85, 128, 128, -107, -21};
  // Halved columns with sums near the limits, and the one sum that leaves 16 bits.
  const Vek16s mixed[9] = {128, 0, -32768, 0, 0, 32767, 0, 128, 32767};
  const Vek16s negated[9] = {0, 0, 32767, 0, 0, -32768, 0, 0, -32768};
  const struct {
    const Vek16s* matrix;
    Vek16s expected[9];
  } cases[] = {{mixed, {39, 15, 12159, -15, 64, 9344, 64, -10, -32767}},
               {negated, {0, 0, -12160, 0, 0, -9344, 0, 0, -32768}}};
  VekiRggbColorParam color = rawColor();
  const VekiRggbGeometry geometry = rawGeometry(4, 4);
  const RawState identity = makeState(color, geometry);
  for (int i = 0; i < 9; ++i) EXPECT_EQ(identity->yccMatrix[i], ycc[i]);
  for (const auto& c : cases) {
    color.colorMatrix = c.matrix;
    const RawState state = makeState(color, geometry);
    for (int i = 0; i < 9; ++i) EXPECT_EQ(state->yccMatrix[i], c.expected[i]) << i;
  }
}

struct Args {
  VekiRggbColorParam color;
  VekiRggbGeometry geometry;
};

/// Every refusal costs exactly the block for the state, and comes before a failed allocation.
TEST(RawState, RefusesBadArguments) {
  const Vek8u gamma[1024] = {};
  const VekiDeadPixel origin[] = {{0, 0}, {5, 5}}, beforeOrigin[] = {{1, 9}, {2, 3}, {4, 4}};
  const auto status = [&](int scale, int rotation, auto change) {
    Args a = {rawColor(), rawGeometry(64, 32, scale, rotation)};
    change(a);
    VekiRggbToYCbCrState* const untouched = reinterpret_cast<VekiRggbToYCbCrState*>(&a);
    VekiRggbToYCbCrState* state = untouched;
    const VekStatus result = init(&a.color, &a.geometry, &state);
    if (result == vekStsNoErr) {
      EXPECT_EQ(vekiFree_10RGGBtoYCbCr_RotRsz_P3R(state), vekStsNoErr);
    } else {
      EXPECT_EQ(state, untouched);
      EXPECT_EQ(blocks.live.size(), 1u);
      blocks.failing = blocks.calls;
      EXPECT_EQ(init(&a.color, &a.geometry, &state), result);
      blocks.failing = -1;
    }
    blocks.drop();
    return result;
  };
  const auto accepts = [&](const char* what, int scale, int rotation, auto change) {
    EXPECT_EQ(status(scale, rotation, change), vekStsNoErr) << what;
  };
  const auto refuses = [&](const char* what, int scale, auto change) {
    for (int rotation : {0, 1}) {
      EXPECT_EQ(status(scale, rotation, change), vekStsBadArgErr) << what;
    }
  };
  for (int scale : {1, 2, 4}) {
    for (int rotation : {0, 1, 2, 3}) accepts("good", scale, rotation, [](Args&) {});
  }
  accepts("own table", 1, 0,
          [&](Args& a) { a.color.gammaMode = 1, a.color.gammaTable[0] = gamma; });
  accepts("unused curves", 1, 0, [](Args& a) { a.color.gammaCurve[1] = 7; });
  accepts("list in place", 1, 0, [&](Args& a) { a.color.deadPixels = origin; });
  accepts("count without list", 1, 0,
          [](Args& a) { a.color.rowOffset = 9, a.color.numDeadPixels = -1; });
  accepts("nothing kept", 1, 0, [&](Args& a) {
    a.color.deadPixels = origin, a.color.numDeadPixels = 2, a.color.colOffset = INT_MAX;
  });

  refuses("gamma mode 2", 1, [](Args& a) { a.color.gammaMode = 2; });
  refuses("gamma mode -1", 1, [](Args& a) { a.color.gammaMode = UINT32_MAX; });
  refuses("curve 2", 1, [](Args& a) { a.color.gammaCurve[0] = 2; });
  refuses("no table", 1, [](Args& a) { a.color.gammaMode = 1; });
  refuses("reserved", 1, [](Args& a) { a.color.reserved = 1; });
  refuses("row offset", 1, [](Args& a) { a.color.rowOffset = -1; });
  refuses("column offset", 1, [](Args& a) { a.color.colOffset = INT_MIN; });
  refuses("no matrix", 1, [](Args& a) { a.color.colorMatrix = nullptr; });
  refuses("odd source step", 1, [](Args& a) { a.geometry.srcStep = 129; });
  refuses("odd width", 1, [](Args& a) { a.geometry.srcWidth = 63; });
  refuses("odd height", 1, [](Args& a) { a.geometry.srcHeight = INT_MAX; });
  refuses("negative sizes", 1,
          [](Args& a) { a.geometry.srcWidth = a.geometry.srcHeight = INT_MIN; });
  refuses("sizes 0", 2, [](Args& a) {
    a.geometry.srcWidth = a.geometry.srcHeight = a.geometry.dstWidth = a.geometry.dstHeight = 0;
  });
  // 4 * dstWidth would wrap to 0 in 32 bits.
  refuses("wrapping size", 4,
          [](Args& a) { a.geometry.srcWidth = 0, a.geometry.dstWidth = 1 << 30; });
  refuses("rotation 4", 1, [](Args& a) { a.geometry.rotation = 4; });
  refuses("rotation -1", 1, [](Args& a) { a.geometry.rotation = -1; });
  refuses("chroma format 7", 1, [](Args& a) { a.geometry.chromaFormat = 7; });
  refuses("unturned size", 2,
          [](Args& a) { std::swap(a.geometry.dstWidth, a.geometry.dstHeight); });
  refuses("reduction in one direction", 1, [](Args& a) { a.geometry.dstHeight /= 2; });
  refuses("reduction by 8", 2,
          [](Args& a) { a.geometry.dstWidth /= 4, a.geometry.dstHeight /= 4; });
  refuses("short luma step", 1, [](Args& a) { a.geometry.dstStep[0] -= 8; });
  refuses("short Cr step", 4, [](Args& a) { a.geometry.dstStep[2] -= 2; });
  refuses("luma step", 1, [](Args& a) { a.geometry.dstStep[0] += 4; });
  refuses("Cb step", 1, [](Args& a) { a.geometry.dstStep[1] += 2; });
  refuses("reduced luma step", 2, [](Args& a) { a.geometry.dstStep[0] += 2; });
  refuses("reduced Cr step", 2, [](Args& a) { a.geometry.dstStep[2] += 1; });
  refuses("filter mode", 1, [](Args& a) { a.geometry.filterMode = 3; });
  refuses("reduced filter mode", 4, [](Args& a) { a.geometry.filterMode = 2; });
  // 12 x 12 at scale 2: the destination would be six pixels wide. 24 x 12 at scale 4: three high.
  refuses("reduced width", 2, [](Args& a) { a.geometry = rawGeometry(12, 12, 2); });
  refuses("reduced height", 4, [](Args& a) { a.geometry = rawGeometry(32, 12, 4); });
  refuses("empty list", 1, [&](Args& a) { a.color.deadPixels = origin, a.color.rowOffset = 1; });
  refuses("origin dead", 1, [&](Args& a) {
    a.color.deadPixels = origin, a.color.numDeadPixels = 2;
    a.color.rowOffset = a.color.colOffset = 5;
  });
  refuses("origin dead, not listed first", 1, [&](Args& a) {
    a.color.deadPixels = beforeOrigin, a.color.numDeadPixels = 3;
    a.color.rowOffset = 2, a.color.colOffset = 3;
  });

  const Args good = {rawColor(), rawGeometry(8, 8)};
  VekiRggbToYCbCrState* state = nullptr;
  EXPECT_EQ(init(nullptr, &good.geometry, &state), vekStsBadArgErr);
  EXPECT_EQ(init(&good.color, nullptr, &state), vekStsBadArgErr);
  EXPECT_EQ(init(&good.color, &good.geometry, nullptr), vekStsBadArgErr);
  EXPECT_EQ(state, nullptr);
  EXPECT_EQ(blocks.live.size(), 3u);
  blocks.drop();
  EXPECT_EQ(vekiFree_10RGGBtoYCbCr_RotRsz_P3R(nullptr), vekStsNoErr);
}

/// State, list copy, matrix, table: each failing in turn, and what a state's release leaves.
TEST(RawState, ReleasesWhatItTook) {
  const VekiDeadPixel list[] = {{4, 4}, {1, 4}, {6, 9}};
  VekiRggbColorParam color = rawColor();
  color.deadPixels = list;
  color.numDeadPixels = 3;
  color.rowOffset = 2;
  const VekiRggbGeometry geometry = rawGeometry(8, 8);
  for (int failing = 0; failing < 4; ++failing) {
    VekiRggbToYCbCrState* state = nullptr;
    blocks.calls = 0;
    blocks.failing = failing;
    EXPECT_EQ(init(&color, &geometry, &state), vekStsMemAllocErr) << failing;
    EXPECT_EQ(state, nullptr);
    EXPECT_TRUE(blocks.live.empty()) << failing;
  }
  blocks.failing = -1;
  RawState state = makeState(color, geometry);
  EXPECT_EQ(blocks.live.size(), 4u);
  ASSERT_EQ(state->numDeadPixels, 2);
  EXPECT_EQ(state->deadPixels[0].row, 2);
  EXPECT_EQ(state->deadPixels[1].column, 9);
  const auto copy = blocks.live.find(const_cast<VekiDeadPixel*>(state->deadPixels));
  ASSERT_NE(copy, blocks.live.end());
  EXPECT_EQ(copy->second, 3 * 16);
  state.reset();
  EXPECT_EQ(blocks.live.size(), 1u);
  blocks.drop();

  color.rowOffset = 0;
  state = makeState(color, geometry);
  EXPECT_EQ(state->deadPixels, list);
  state.reset();
  EXPECT_TRUE(blocks.live.empty());
}

}  // namespace
}  // namespace vek::test
