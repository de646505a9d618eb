// Tiles placed by words of eight or four bytes where a processor has them, or pixel by pixel.
#include <stdint.h>
#include <string.h>
#include <type_traits>

#include "core/assert.h"
#include "core/kernel/place_kernels.h"
#include "core/kernel/words.h"

namespace vek::portable {
namespace {

template <int pixelBytes>
void copyPixel(Vek8u* __restrict dst, const Vek8u* __restrict src) {
  for (int i = 0; i < pixelBytes; ++i) dst[i] = src[i];
}

// Pixels of one and of two bytes are taken in words.

using Word = std::conditional_t<hasWords, uint64_t, Vek32u>;
constexpr ptrdiff_t wordBytes = sizeof(Word);

/// Whether words can be loaded and stored at an address and in steps from there, or at the sum of an
/// address and steps; `places` are these in bytes.
template <class... Place>
bool takesWords(Place... places) {
  return hasWords || (hasAlignedWords && (static_cast<uintptr_t>(places) | ...) % wordBytes == 0);
}

uintptr_t addressOf(const Vek8u* p) {
  return reinterpret_cast<uintptr_t>(p);
}

Word load(const Vek8u* src) {
  if constexpr (hasWords) return loadWord<Word>(src);
  return loadWord<Word>(static_cast<const Vek8u*>(__builtin_assume_aligned(src, wordBytes)));
}
void store(Word word, Vek8u* dst) {
  if constexpr (hasWords) return storeWord(word, dst);
  storeWord(word, static_cast<Vek8u*>(__builtin_assume_aligned(dst, wordBytes)));
}

/// The lower `bits` bits of each field of twice as many.
template <int bits>
constexpr Word lowerHalves = static_cast<Word>(~Word{0} / ((Word{1} << bits) + 1));

/// The pixels of a word from last to first.
template <int pixelBytes, int bits = 4 * wordBytes>
Word reversed(Word word) {
  word = (word & lowerHalves<bits>) << bits | (word >> bits & lowerHalves<bits>);
  if constexpr (bits == 8 * pixelBytes) {
    return word;
  } else {
    return reversed<pixelBytes, bits / 2>(word);
  }
}

template <int pixelBytes>
void reverseRow(const Vek8u* __restrict src, ptrdiff_t n, Vek8u* __restrict dst) {
  ptrdiff_t x = 0;
  if constexpr (pixelBytes < 3) {
    constexpr ptrdiff_t pixels = wordBytes / pixelBytes;
    if (takesWords(addressOf(src + n * pixelBytes), addressOf(dst))) {
      for (; x <= n - pixels; x += pixels) {
        store(reversed<pixelBytes>(load(src + (n - pixels - x) * pixelBytes)),
              dst + x * pixelBytes);
      }
    }
  }
  for (; x < n; ++x) copyPixel<pixelBytes>(dst + x * pixelBytes, src + (n - 1 - x) * pixelBytes);
}

/// Swaps the upper `bits` bits of each field of a with the lower ones of b: one step of transposing
/// a square of words.
template <int bits>
void swapFields(Word& a, Word& b) {
  const Word difference = (a >> bits ^ b) & lowerHalves<bits>;
  a ^= difference << bits;
  b ^= difference;
}

template <int pixelBytes, int bits = 4 * wordBytes>
void transposeWords(Word* row) {
  constexpr int size = wordBytes / pixelBytes, apart = bits / (8 * pixelBytes);
  for (int i = 0; i < size; ++i) {
    if ((i & apart) == 0) swapFields<bits>(row[i], row[i + apart]);
  }
  if constexpr (apart > 1) transposeWords<pixelBytes, bits / 2>(row);
}

/// Transposes a square of as many pixels as a word has: column x becomes the row at dst + x * dx, from
/// its end on where `upwards`.
template <int pixelBytes>
void transposeSquare(const Vek8u* src, ptrdiff_t srcStep, Vek8u* dst, ptrdiff_t dx, bool upwards) {
  constexpr int size = wordBytes / pixelBytes;
  Word row[size];
  for (int y = 0; y < size; ++y) row[y] = load(src + (upwards ? size - 1 - y : y) * srcStep);
  transposeWords<pixelBytes>(row);
  for (int x = 0; x < size; ++x) store(row[x], dst + x * dx);
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
  if constexpr (pixelBytes < 3) {
    constexpr ptrdiff_t size = wordBytes / pixelBytes;
    const bool upwards = dy < 0;
    const bool adjacent = dy == pixelBytes || dy == -pixelBytes;
    const Vek8u* const edge = upwards ? dst + pixelBytes : dst;
    if (adjacent && takesWords(addressOf(tile), tileStep, addressOf(edge), dx)) {
      for (; y <= rows - size; y += size) {
        Vek8u* const to = dst + (upwards ? y + size - 1 : y) * dy;
        ptrdiff_t x = 0;
        for (; x <= cols - size; x += size) {
          transposeSquare<pixelBytes>(tile + y * tileStep + x * pixelBytes, tileStep, to + x * dx,
                                      dx, upwards);
        }
        transposePixels<pixelBytes>(tile, tileStep, x, cols, y, y + size, dst, dx, dy);
      }
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
