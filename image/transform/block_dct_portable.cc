#include <string.h>

#include "core/assert.h"
#include "image/transform/block_dct_basis.h"
#include "image/transform/block_dct_kernels.h"

namespace vek::portable {
namespace {

template <class T>
using Block = T[8][8];

/// Both passes work on columns, and rows become columns in between.
template <class T>
void transpose(const Block<T>& from, Block<T>& to) {
  for (int i = 0; i < 8; ++i) {
    for (int j = 0; j < 8; ++j) to[j][i] = from[i][j];
  }
}

/// to[k][i] = (sum over j of the factor of k and j * from[j][i] + half) >> shift, whatever the samples.
template <bool inverse, int shift>
void passWide(const Block<Vek32s>& from, Block<Vek32s>& to) {
  for (int k = 0; k < 8; ++k) {
    Vek64s sums[8] = {};
    for (int j = 0; j < 8; ++j) {
      const Vek64s factor = inverse ? dctBasis[j][k] : dctBasis[k][j];
      for (int i = 0; i < 8; ++i) sums[i] += factor * from[j][i];
    }
    for (int i = 0; i < 8; ++i) {
      to[k][i] = static_cast<Vek32s>((sums[i] + (Vek64s{1} << (shift - 1))) >> shift);
    }
  }
}

/// (sum + half) >> shift of a sum below 2^31, which leaves no room for the half.
template <int shift>
Vek32s scaled(Vek32s sum) {
  return ((sum >> (shift - 1)) + 1) >> 1;
}

/// The same of samples from -16384 to 16383: sums and differences of two fit 16 bits. The factors of a
/// result sum to at most 2^17 in magnitude, so that the sums are from -2^31 to below 2^31.
template <bool inverse, int shift>
void passNarrow(const Block<Vek16s>& from, Block<Vek32s>& to) {
  Vek16s even[4][8], odd[4][8];
  for (int j = 0; j < 4; ++j) {
    for (int i = 0; i < 8; ++i) {
      const Vek16s a = inverse ? from[2 * j][i] : from[j][i];
      const Vek16s b = inverse ? from[2 * j + 1][i] : from[7 - j][i];
      even[j][i] = inverse ? a : static_cast<Vek16s>(a + b);
      odd[j][i] = inverse ? b : static_cast<Vek16s>(a - b);
    }
  }
  for (int k = 0; k < 4; ++k) {
    Vek32s evenSums[8] = {}, oddSums[8] = {};
    for (int j = 0; j < 4; ++j) {
      const Vek16s evenFactor = inverse ? dctBasis[2 * j][k] : dctBasis[2 * k][j];
      const Vek16s oddFactor = inverse ? dctBasis[2 * j + 1][k] : dctBasis[2 * k + 1][j];
      for (int i = 0; i < 8; ++i) {
        evenSums[i] += evenFactor * even[j][i];
        oddSums[i] += oddFactor * odd[j][i];
      }
    }
    for (int i = 0; i < 8; ++i) {
      const Vek32s a = evenSums[i], b = oddSums[i];
      to[inverse ? k : 2 * k][i] = scaled<shift>(inverse ? a + b : a);
      to[inverse ? 7 - k : 2 * k + 1][i] = scaled<shift>(inverse ? a - b : b);
    }
  }
}

template <bool inverse, int shift>
void pass(const Block<Vek32s>& from, Block<Vek32s>& to) {
  Block<Vek16s> narrow;
  Vek32s outside = 0;
  for (int j = 0; j < 8; ++j) {
    for (int i = 0; i < 8; ++i) {
      outside |= (from[j][i] + 16384) & ~32767;
      narrow[j][i] = static_cast<Vek16s>(from[j][i]);
    }
  }
  if (outside == 0) {
    passNarrow<inverse, shift>(narrow, to);
  } else {
    passWide<inverse, shift>(from, to);
  }
}

template <bool inverse>
void transformBlocks(const Vek8u* src, ptrdiff_t srcStep, ptrdiff_t blocks, Vek8u* dst,
                     ptrdiff_t dstStep) {
  VEK_ASSERT(blocks >= 1);
  for (ptrdiff_t b = 0; b < blocks; ++b) {
    Block<Vek32s> samples, transposed, columns;
    for (int y = 0; y < 8; ++y) {
      Vek16s row[8];
      memcpy(row, src + y * srcStep + 16 * b, sizeof row);
      for (int x = 0; x < 8; ++x) samples[y][x] = row[x];
    }
    transpose(samples, transposed);
    pass<inverse, 11>(transposed, columns);
    transpose(columns, transposed);
    pass<inverse, 20>(transposed, samples);
    for (int y = 0; y < 8; ++y) {
      Vek16s row[8];
      for (int x = 0; x < 8; ++x) {
        const Vek32s v = samples[y][x];
        row[x] = static_cast<Vek16s>(v < -32768 ? -32768 : v > 32767 ? 32767 : v);
      }
      memcpy(dst + y * dstStep + 16 * b, row, sizeof row);
    }
  }
}

}  // namespace

constexpr BlockDctKernels blockDctKernels = {
    .forward = transformBlocks<false>,
    .inverse = transformBlocks<true>,
};

}  // namespace vek::portable
