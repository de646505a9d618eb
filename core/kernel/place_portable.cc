// Tiles placed pixel by pixel.
#include <string.h>

#include "core/assert.h"
#include "core/kernel/place_kernels.h"

namespace vek::portable {
namespace {

template <int pixelBytes>
void copyPixel(Vek8u* __restrict dst, const Vek8u* __restrict src) {
  for (int i = 0; i < pixelBytes; ++i) dst[i] = src[i];
}

template <int pixelBytes>
void placeTile(const Vek8u* tile, ptrdiff_t tileStep, ptrdiff_t cols, ptrdiff_t rows, Vek8u* dst,
               ptrdiff_t dx, ptrdiff_t dy) {
  VEK_ASSERT(dx == pixelBytes || dx == -pixelBytes || dy == pixelBytes || dy == -pixelBytes ||
             rows == 1);
  if (dx == pixelBytes) {
    for (ptrdiff_t y = 0; y < rows; ++y) {
      memcpy(dst + y * dy, tile + y * tileStep, static_cast<size_t>(cols * pixelBytes));
    }
  } else if (dx == -pixelBytes) {
    for (ptrdiff_t y = 0; y < rows; ++y) {
      const Vek8u* from = tile + y * tileStep;
      Vek8u* first = dst + y * dy - (cols - 1) * pixelBytes;
      for (ptrdiff_t x = 0; x < cols; ++x) {
        copyPixel<pixelBytes>(first + x * pixelBytes, from + (cols - 1 - x) * pixelBytes);
      }
    }
  } else {
    // Transposed: column x of the tile becomes a destination row, written in one go.
    for (ptrdiff_t x = 0; x < cols; ++x) {
      const Vek8u* from = tile + x * pixelBytes;
      Vek8u* to = dst + x * dx;
      for (ptrdiff_t y = 0; y < rows; ++y) copyPixel<pixelBytes>(to + y * dy, from + y * tileStep);
    }
  }
}

}  // namespace

constexpr PlaceKernels placeKernels = {
    .bytes1 = placeTile<1>, .bytes2 = placeTile<2>, .bytes3 = placeTile<3>};

}  // namespace vek::portable
