#include <cstring>
#include <gtest/gtest.h>

#include "core/kernel/place_kernels.h"
#include "tests/support/buffer.h"
#include "tests/support/levels.h"

namespace vek::test {
namespace {

/// Every way to place a tile, against the definition: pixel (x, y) to dst + x * dx + y * dy.
TEST(PlaceTile, EveryOrientation) {
  Random random(2);
  for (int round = 0; round < 600; ++round) {
    const int bytes = random.in(1, 3);
    const ptrdiff_t columns = random.size(150), rows = random.size(90);
    const bool quarterTurn = random.chance(50);
    const ptrdiff_t across = quarterTurn ? rows : columns;  // pixels in a destination row
    const ptrdiff_t step = across * bytes + random.in(0, 9);
    const ptrdiff_t unit = random.chance(50) ? bytes : -bytes;
    const ptrdiff_t line = random.chance(50) ? step : -step;
    const ptrdiff_t dx = quarterTurn ? line : unit, dy = quarterTurn ? unit : line;
    const ptrdiff_t tileStep = random.chance(20) ? 1024 : columns * bytes + random.in(0, 5);
    Buffer tile({columns * bytes, rows, tileStep});
    std::vector<uint8_t> pixels(static_cast<size_t>(columns * bytes * rows));
    for (uint8_t& p : pixels) p = static_cast<uint8_t>(random.bits());
    tile.setContents(pixels);
    for (Level level : levels()) {
      SCOPED_TRACE(testing::Message() << name(level) << ", round " << round);
      Buffer dst({across * bytes, quarterTurn ? columns : rows, line,
                  unit < 0 ? -(across - 1) * bytes : 0});
      select(placeKernels, level)
          .of(bytes)(tile.data(), tileStep, columns, rows, dst.data(), dx, dy);
      for (ptrdiff_t i = 0; i < rows * columns; ++i) {
        const ptrdiff_t x = i % columns, y = i / columns;
        ASSERT_EQ(std::memcmp(dst.data() + x * dx + y * dy, tile.data() + y * tileStep + x * bytes,
                              static_cast<size_t>(bytes)),
                  0)
            << "pixel " << x << ", " << y;
      }
      ASSERT_TRUE(dst.outsideIntact());
    }
  }
}

}  // namespace
}  // namespace vek::test
