#include <cstring>
#include <gtest/gtest.h>

#include "core/kernel/place_rows.h"
#include "tests/support/buffer.h"
#include "tests/support/levels.h"

namespace vek::test {
namespace {

/// Every way to place a tile, against the definition: pixel (x, y) to dst + x * dx + y * dy.
TEST(PlaceTile, EveryOrientation) {
  Random random(2);
  for (Level level : levels()) {
    for (int bytes : {1, 2, 3}) {
      for (int round = 0; round < 150; ++round) {
        const ptrdiff_t columns = random.size(150);
        const ptrdiff_t rows = random.size(90);
        const bool turned = random.chance(50);
        const ptrdiff_t across = turned ? rows : columns;  // pixels in a destination row
        const ptrdiff_t down = turned ? columns : rows;
        const ptrdiff_t step = across * bytes + random.in(0, 9);
        const ptrdiff_t unit = random.chance(50) ? bytes : -bytes;
        const ptrdiff_t line = random.chance(50) ? step : -step;
        SCOPED_TRACE(testing::Message()
                     << name(level) << ' ' << columns << 'x' << rows << 'x' << bytes << " unit "
                     << unit << " line " << line << " turned " << turned);
        const ptrdiff_t tileStep = random.chance(20) ? 1024 : columns * bytes + random.in(0, 5);
        Buffer tile({columns * bytes, rows, tileStep});
        tile.fill(random);
        const Area area = {across * bytes, down, line, unit < 0 ? -(across - 1) * bytes : 0};
        Buffer dst(area);
        const ptrdiff_t dx = turned ? line : unit;
        const ptrdiff_t dy = turned ? unit : line;
        select(placeRows, level)
            .of(bytes)(tile.data(), tileStep, columns, rows, dst.data(), dx, dy);
        for (ptrdiff_t y = 0; y < rows; ++y) {
          for (ptrdiff_t x = 0; x < columns; ++x) {
            ASSERT_EQ(
                std::memcmp(dst.data() + x * dx + y * dy, tile.data() + y * tileStep + x * bytes,
                            static_cast<size_t>(bytes)),
                0)
                << "pixel " << x << ", " << y;
          }
        }
        ASSERT_TRUE(dst.outsideIntact());
      }
    }
  }
}

}  // namespace
}  // namespace vek::test
