#include <string.h>

#include "core/assert.h"
#include "core/color/pixel_block.h"
#include "core/kernel/words.h"
#include "image/stat/moments_kernels.h"
#include "image/stat/moments_shifted.h"

namespace vek::portable {
namespace {

/// Pixel by pixel, for processors without vectors.
template <int channels>
MomentsOf<Vek64s> sumChannel(const Vek8u* src, ptrdiff_t srcStep, int width, int height) {
  MomentsOf<Vek64s> m = {};
  for (int y = 0; y < height; ++y, src += srcStep) {
    // Sums of x^p I over the row. Below 2^32 up to the first order: 255 * 1024 * 1023 / 2.
    Vek32u r0 = 0, r1 = 0;
    Vek64s r2 = 0, r3 = 0;
    for (int x = 0; x < width; ++x) {
      const Vek32u v = src[ptrdiff_t{x} * channels], column = static_cast<Vek32u>(x);
      const Vek32u v1 = v * column, v2 = v1 * column;
      r0 += v;
      r1 += v1;
      r2 += v2;
      r3 += Vek64s{v2} * x;
    }
    const Vek64s row0 = r0, row1 = r1;
    m.m00 += row0;
    m.m10 += row1;
    m.m01 += row0 * y;
    m.m20 += r2;
    m.m11 += row1 * y;
    m.m02 += row0 * y * y;
    m.m30 += r3;
    m.m21 += r2 * y;
    m.m12 += row1 * y * y;
    m.m03 += row0 * y * y * y;
  }
  return m;
}

// Others sum blocks of 64 columns and seven rows in lanes of 16 and 32 bits.

constexpr int blockColumns = 64, blockRows = 7;

/// Of each column the sums over the rows of C(i + q - 1, q) I, where i = 7 for the first row and 1 for the
/// last: with i alone, i^2 = 2 C(i + 1, 2) - i and i^3 = 6 (C(i + 2, 3) - C(i + 1, 2)) + i. The largest one
/// is at most 255 * C(10, 4) = 53550, others at most 255 * C(9, 3) = 21420.
struct ColumnSums {
  alignas(16) Vek16s a0[blockColumns], a1[blockColumns], a2[blockColumns];
  alignas(16) Vek16u a3[blockColumns];
};

[[gnu::noinline]] void sumColumns(const Vek8u* __restrict src, ptrdiff_t step,
                                  ColumnSums& __restrict to) {
  for (int j = 0; j < blockColumns; ++j) {
    Vek16u a0 = 0, a1 = 0, a2 = 0, a3 = 0;
    for (int row = 0; row < blockRows; ++row) {
      a0 = static_cast<Vek16u>(a0 + src[row * step + j]);
      a1 = static_cast<Vek16u>(a1 + a0);
      a2 = static_cast<Vek16u>(a2 + a1);
      a3 = static_cast<Vek16u>(a3 + a2);
    }
    to.a0[j] = static_cast<Vek16s>(a0);
    to.a1[j] = static_cast<Vek16s>(a1);
    to.a2[j] = static_cast<Vek16s>(a2);
    to.a3[j] = a3;
  }
}

/// Powers of the columns -32 .. 31 of a block.
struct ColumnPowers {
  alignas(16) Vek16s of[4][blockColumns];
};

constexpr ColumnPowers columnPowers = [] {
  ColumnPowers powers = {};
  for (int j = 0; j < blockColumns; ++j) {
    const int x = j - blockColumns / 2, values[] = {1, x, x * x, x * x * x};
    for (int p = 0; p < 4; ++p) powers.of[p][j] = static_cast<Vek16s>(values[p]);
  }
  return powers;
}();

/// The sum of a[j] x^p. Of all that is summed, the largest is 1785 x^3: at most 1785 * 524800 < 2^31.
[[gnu::noinline]] Vek32s sumOfProducts(const Vek16s* __restrict a, int p) {
  Vek32s sum = 0;
  for (int j = 0; j < blockColumns; ++j) sum += a[j] * columnPowers.of[p][j];
  return sum;
}

/// The moments about the column in the middle of the block and the row behind it, where y = -i.
MomentsOf<Vek64s> sumBlock(const Vek8u* src, ptrdiff_t step) {
  ColumnSums sums;
  sumColumns(src, step, sums);
  const auto sumOf = [](const Vek16s* a, int p) { return Vek64s{sumOfProducts(a, p)}; };
  const Vek64s ofI = sumOf(sums.a1, 0), ofXI = sumOf(sums.a1, 1), ofA2 = sumOf(sums.a2, 0);
  Vek32u a3 = 0;
  for (Vek16u v : sums.a3) a3 += v;
  return {.m00 = sumOf(sums.a0, 0),
          .m10 = sumOf(sums.a0, 1),
          .m01 = -ofI,
          .m20 = sumOf(sums.a0, 2),
          .m11 = -ofXI,
          .m02 = 2 * ofA2 - ofI,
          .m30 = sumOf(sums.a0, 3),
          .m21 = -sumOf(sums.a1, 2),
          .m12 = 2 * sumOf(sums.a2, 1) - ofXI,
          .m03 = -(6 * (Vek64s{a3} - ofA2) + ofI)};
}

void add(const MomentsOf<Vek64s>& more, MomentsOf<Vek64s>& m) {
  m.m00 += more.m00;
  m.m10 += more.m10;
  m.m01 += more.m01;
  m.m20 += more.m20;
  m.m11 += more.m11;
  m.m02 += more.m02;
  m.m30 += more.m30;
  m.m21 += more.m21;
  m.m12 += more.m12;
  m.m03 += more.m03;
}

/// Adds rows of a channel, at most as many as a block has, whose first pixel is (x, y).
void addStrip(const Vek8u* src, ptrdiff_t step, int x, int y, int width, int rows,
              MomentsOf<Vek64s>& m) {
  for (int left = width; left > 0; left -= blockColumns, x += blockColumns, src += blockColumns) {
    const Vek8u* block = src;
    ptrdiff_t blockStep = step;
    Vek8u copy[blockRows][blockColumns];
    if (left < blockColumns || rows < blockRows) {
      memset(copy, 0, sizeof copy);
      const int count = left < blockColumns ? left : blockColumns;
      for (int r = 0; r < rows; ++r) memcpy(copy[r], src + r * step, static_cast<size_t>(count));
      block = copy[0], blockStep = blockColumns;
    }
    add(shifted(sumBlock(block, blockStep), x + blockColumns / 2, y + blockRows), m);
  }
}

template <int channels>
void sum(const Vek8u* src, ptrdiff_t srcStep, int width, int height, MomentsOf<Vek64s>* moments) {
  VEK_ASSERT(width >= 1 && width <= momentTile && height >= 1 && height <= momentTile);
  for (int c = 0; c < channels; ++c) {
    moments[c] = {};
    if (!hasWords) moments[c] = sumChannel<channels>(src + c, srcStep, width, height);
  }
  if (!hasWords) return;
  for (int y = 0; y < height; y += blockRows, src += blockRows * srcStep) {
    const int rows = height - y < blockRows ? height - y : blockRows;
    if constexpr (channels == 1) {
      addStrip(src, srcStep, 0, y, width, rows, moments[0]);
    } else {
      forEachBlock(width, [&](ptrdiff_t x, ptrdiff_t n) {
        PixelBlock pixels[blockRows];
        for (int r = 0; r < rows; ++r) separate(src + r * srcStep + channels * x, n, pixels[r]);
        for (int c = 0; c < channels; ++c) {
          addStrip(pixels[0].channel[c], sizeof(PixelBlock), static_cast<int>(x), y,
                   static_cast<int>(n), rows, moments[c]);
        }
      });
    }
  }
}

}  // namespace

constexpr MomentKernels momentKernels = {.c1 = sum<1>, .c3 = sum<3>};

}  // namespace vek::portable
