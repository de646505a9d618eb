#include "vek/camera.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <gtest/gtest.h>
#include <vector>

#include "tests/support/levels.h"

namespace vek::test {
namespace {

/// Flat windows: grey is 1024 to 1024; held within 10 and 20, valid within 2000 and 1500; gains
/// 10..4000 move by at most 50.
TEST(WhiteBalance, KnownDecisions) {
  using Gains = std::vector<Vek16u>;
  const struct {
    const char* what;
    int method, red, green, blue;
    Gains before, after;
    VekStatus status;
    int columns = 8, rows = 8, spare = 0;  ///< samples that are not wanted in white quads
  } cases[] = {
      {"held, even at a limit", 1, 512, 512, 512, {4000, 10, 10}, {4000, 10, 10}, 0},
      {"just not held", 0, 517, 512, 517, {300, 256, 300}, {297, 256, 297}, 0},
      {"reaches the maximum", 0, 256, 512, 512, {3960, 256, 400}, {4000, 256, 400}, 33},
      {"reaches the minimum", 0, 900, 512, 512, {12, 12, 400}, {10, 12, 400}, 33},
      {"not believed: to the defaults", 0, 1000, 64, 64, {200, 320, 290}, {250, 270, 300}, 0},
      {"pure green is valid, but no divisor", 0, 0, 512, 0, {320, 256, 300}, {320, 256, 300}, 0},
      {"no white point", 1, 100, 512, 512, {300, 256, 300}, {300, 256, 300}, 34, 8, 8, 60},
      {"sums above 16 bits", 1, 16700, 16700, 16700, {300, 256, 300}, {300, 256, 300}, 34},
      {"too few", 1, 512, 512, 512, {300, 256, 300}, {300, 256, 300}, 34, 8, 8, -1},
      {"almost 2^23 samples", 1, 899, 899, 899, {10, 10, 10}, {10, 10, 10}, 0, 4096, 2040},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    std::vector<uint64_t> frame(static_cast<size_t>(c.columns * c.rows / 4));
    Vek16u* const src = reinterpret_cast<Vek16u*>(frame.data());
    for (int i = 0; i < c.columns * c.rows; ++i) {
      const int x = i % 2, y = i / c.columns % 2;
      src[i] = static_cast<Vek16u>(x != y ? c.green : x == 0 ? c.red : c.blue);
    }
    const VekiRect window = {0, 0, c.columns, c.rows};
    const Vek8u weight = 1;
    const int wanted = c.columns * c.rows - c.spare;
    const VekiAWBParams p = {c.method, 1,    &window, &weight, 1024, 1024, 10,  20,
                             2000,     1500, 200,     200,     200,  50,   900, wanted,
                             50,       10,   4000,    300,     256,  300};
    VekiAWBState* state = nullptr;
    ASSERT_EQ(vekiInitAlloc_AWB_10RGGB_8u_C1R(&p, &state), vekStsNoErr);
    for (Level level : levels()) {
      const LevelScope scope(level);
      Gains g = c.before;
      EXPECT_EQ(vekiAWB_10RGGB_8u_C1R(src, 2 * c.columns, {c.columns, c.rows}, &g[0], &g[1], &g[2],
                                      state),
                c.status);
      EXPECT_EQ(g, c.after);
    }
    EXPECT_EQ(vekiFree_AWB_10RGGB_8u_C1R(state), vekStsNoErr);
  }
}

}  // namespace
}  // namespace vek::test
