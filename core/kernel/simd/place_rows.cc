#include "core/kernel/place_rows.h"

#include "core/kernel/place_body.h"
#include "core/kernel/vector.h"

#if VEK_HAVE_HIGHWAY

HWY_BEFORE_NAMESPACE();
namespace vek::VEK_LEVEL {
namespace {

constexpr hn::Full128<Vek8u> sixteenBytes;

/// Turns a square of 16 bytes a row: `src` rows become columns `dx` bytes apart. Interleaving rows
/// i and i + half the rows moves one bit of each pixel's column number to its row number; as many
/// rounds as it has bits exchange the two.
template <class Pixel>
void transposeSquare(const Vek8u* src, ptrdiff_t srcStep, Vek8u* dst, ptrdiff_t dx) {
  constexpr hn::Full128<Pixel> pixels;
  constexpr int side = 16 / sizeof(Pixel);
  hn::Vec<decltype(pixels)> rows[side], next[side];
  for (int i = 0; i < side; ++i) {
    rows[i] = hn::BitCast(pixels, hn::LoadU(sixteenBytes, src + i * srcStep));
  }
  for (int round = 1; round < side; round *= 2) {
    for (int i = 0; i < side / 2; ++i) {
      next[2 * i] = hn::InterleaveLower(pixels, rows[i], rows[i + side / 2]);
      next[2 * i + 1] = hn::InterleaveUpper(pixels, rows[i], rows[i + side / 2]);
    }
    for (int i = 0; i < side; ++i) rows[i] = next[i];
  }
  for (int i = 0; i < side; ++i) {
    hn::StoreU(hn::BitCast(sixteenBytes, rows[i]), sixteenBytes, dst + i * dx);
  }
}

/// placeTile with quarter turns in squares; the squares of a few columns fill whole cache lines of
/// the destination one after the other.
template <class Pixel>
void placeSquares(const Vek8u* tile, ptrdiff_t tileStep, ptrdiff_t cols, ptrdiff_t rows, Vek8u* dst,
                  ptrdiff_t dx, ptrdiff_t dy) {
  constexpr ptrdiff_t bytes = sizeof(Pixel), side = 16 / bytes;
  ptrdiff_t x = 0;
  if (dy == bytes || dy == -bytes) {
    for (; x + side <= cols; x += side) {
      const Vek8u* const from = tile + x * bytes;
      Vek8u* const to = dst + x * dx;
      ptrdiff_t y = 0;
      for (; y + side <= rows; y += side) {
        // Backwards, the square's last row lands first.
        const ptrdiff_t first = dy > 0 ? y : y + side - 1;
        transposeSquare<Pixel>(from + first * tileStep, dy > 0 ? tileStep : -tileStep,
                               to + first * dy, dx);
      }
      if (y < rows) {
        placeTile<bytes>(from + y * tileStep, tileStep, side, rows - y, to + y * dy, dx, dy);
      }
    }
  }
  if (x < cols) placeTile<bytes>(tile + x * bytes, tileStep, cols - x, rows, dst + x * dx, dx, dy);
}

}  // namespace
}  // namespace vek::VEK_LEVEL
HWY_AFTER_NAMESPACE();

#else

namespace vek::VEK_LEVEL {
namespace {

template <class Pixel>
constexpr auto placeSquares = placeTile<static_cast<int>(sizeof(Pixel))>;

}  // namespace
}  // namespace vek::VEK_LEVEL

#endif

namespace vek::VEK_LEVEL {

constexpr PlaceRows placeRows = {placeSquares<Vek8u>, placeSquares<Vek16u>, placeTile<3>};

}  // namespace vek::VEK_LEVEL
