// Tiles placed pixel by pixel, or by words of eight bytes where a processor has them.
#include <stdint.h>
#include <string.h>

#include "core/assert.h"
#include "core/kernel/place_kernels.h"
#include "core/kernel/words.h"

namespace vek::portable {
namespace {

template <int pixelBytes>
void copyPixel(Vek8u* __restrict dst, const Vek8u* __restrict src) {
  for (int i = 0; i < pixelBytes; ++i) dst[i] = src[i];
}

/// The pixels of a word from last to first.
template <int pixelBytes>
uint64_t reversed(uint64_t word) {
  word = (word & 0xFFFFFFFFu) << 32 | word >> 32;
  word = (word & 0x0000FFFF0000FFFFu) << 16 | (word >> 16 & 0x0000FFFF0000FFFFu);
  if (pixelBytes == 2) return word;
  return (word & 0x00FF00FF00FF00FFu) << 8 | (word >> 8 & 0x00FF00FF00FF00FFu);
}

template <int pixelBytes>
void reverseRow(const Vek8u* __restrict src, ptrdiff_t n, Vek8u* __restrict dst) {
  ptrdiff_t x = 0;
  if constexpr (hasWords && pixelBytes < 3) {
    constexpr ptrdiff_t pixels = 8 / pixelBytes;
    for (; x <= n - pixels; x += pixels) {
      storeWord(reversed<pixelBytes>(loadWord<uint64_t>(src + (n - pixels - x) * pixelBytes)),
                dst + x * pixelBytes);
    }
  }
  for (; x < n; ++x) copyPixel<pixelBytes>(dst + x * pixelBytes, src + (n - 1 - x) * pixelBytes);
}

/// Swaps the upper `bits` bits of each field of a with the lower ones of b: one step of transposing
/// a square of words.
template <int bits>
void swapFields(uint64_t& a, uint64_t& b) {
  constexpr uint64_t low = bits == 32   ? 0x00000000FFFFFFFFu
                           : bits == 16 ? 0x0000FFFF0000FFFFu
                                        : 0x00FF00FF00FF00FFu;
  const uint64_t difference = (a >> bits ^ b) & low;
  a ^= difference << bits;
  b ^= difference;
}

/// Transposes a square of 8 x 8 pixels of one byte, or of 4 x 4 of two bytes: column x becomes the
/// row at dst + x * dx, from its end on where `upwards`.
template <int pixelBytes>
void transposeSquare(const Vek8u* src, ptrdiff_t srcStep, Vek8u* dst, ptrdiff_t dx, bool upwards) {
  constexpr int size = 8 / pixelBytes;
  uint64_t row[size];
  for (int y = 0; y < size; ++y)
    row[y] = loadWord<uint64_t>(src + (upwards ? size - 1 - y : y) * srcStep);
  for (int i = 0; i < size / 2; ++i) swapFields<32>(row[i], row[i + size / 2]);
  for (int i = 0; i < size; i += size / 2) {
    for (int k = 0; k < size / 4; ++k) swapFields<16>(row[i + k], row[i + k + size / 4]);
  }
  if constexpr (pixelBytes == 1) {
    for (int i = 0; i < size; i += 2) swapFields<8>(row[i], row[i + 1]);
  }
  for (int x = 0; x < size; ++x) storeWord(row[x], dst + x * dx);
}

/// Columns x .. cols - 1 of the rows y .. rows - 1, pixel by pixel.
template <int pixelBytes>
void transposePixels(const Vek8u* tile, ptrdiff_t tileStep, ptrdiff_t x, ptrdiff_t cols,
                     ptrdiff_t y, ptrdiff_t rows, Vek8u* dst, ptrdiff_t dx, ptrdiff_t dy) {
  for (; x < cols; ++x) {
    const Vek8u* from = tile + x * pixelBytes;
    Vek8u* to = dst + x * dx;
    for (ptrdiff_t i = y; i < rows; ++i) {
      copyPixel<pixelBytes>(to + i * dy, from + i * tileStep);
    }
  }
}

/// Column x of the tile becomes a destination row.
template <int pixelBytes>
void transpose(const Vek8u* tile, ptrdiff_t tileStep, ptrdiff_t cols, ptrdiff_t rows, Vek8u* dst,
               ptrdiff_t dx, ptrdiff_t dy) {
  ptrdiff_t y = 0;
  if constexpr (hasWords && pixelBytes < 3) {
    constexpr ptrdiff_t size = 8 / pixelBytes;
    const bool upwards = dy < 0;
    const bool adjacent = dy == pixelBytes || dy == -pixelBytes;
    for (; adjacent && y <= rows - size; y += size) {
      Vek8u* const to = dst + (upwards ? y + size - 1 : y) * dy;
      ptrdiff_t x = 0;
      for (; x <= cols - size; x += size) {
        transposeSquare<pixelBytes>(tile + y * tileStep + x * pixelBytes, tileStep, to + x * dx, dx,
                                    upwards);
      }
      transposePixels<pixelBytes>(tile, tileStep, x, cols, y, y + size, dst, dx, dy);
    }
  }
  if (y < rows) transposePixels<pixelBytes>(tile, tileStep, 0, cols, y, rows, dst, dx, dy);
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
      reverseRow<pixelBytes>(tile + y * tileStep, cols, dst + y * dy - (cols - 1) * pixelBytes);
    }
  } else {
    transpose<pixelBytes>(tile, tileStep, cols, rows, dst, dx, dy);
  }
}

}  // namespace

constexpr PlaceKernels placeKernels = {
    .bytes1 = placeTile<1>, .bytes2 = placeTile<2>, .bytes3 = placeTile<3>};

}  // namespace vek::portable
