// Loops of the box filter that every level runs, each compiled for it.
#pragma once

#include "vek/vek.h"

#include <stddef.h>
#include <stdint.h>

#include "core/assert.h"
#include "image/filter/box/box_kernels.h"
#include "image/filter/scale_sums.h"

namespace vek::VEK_LEVEL {
namespace {

/// sum * factor < 2^64: the factor is 2^32 / area, rounded, and the sum at most 255 * area.
template <class Sum>
Vek8u boxMean(Sum sum, Vek32u factor) {
  const uint64_t mean = (uint64_t{sum} * factor + 0x80000000u) >> 32;
  return static_cast<Vek8u>(mean < 255 ? mean : 255);
}

void slideColumns(Vek16u* __restrict columns, const Vek8u* __restrict entering,
                  const Vek8u* __restrict leaving, ptrdiff_t n) {
  VEK_ASSERT(n >= 1);
  if (leaving == nullptr) {
    for (ptrdiff_t i = 0; i < n; ++i) columns[i] = static_cast<Vek16u>(columns[i] + entering[i]);
  } else {
    for (ptrdiff_t i = 0; i < n; ++i) {
      columns[i] = static_cast<Vek16u>(columns[i] + entering[i] - leaving[i]);
    }
  }
}

/// sums[i] += what follows at the distances step, 2 step, ... in `more` columns.
template <int more, class Sum>
void addFollowing(const Vek16u* __restrict columns, ptrdiff_t step, ptrdiff_t n,
                  Sum* __restrict sums) {
  for (ptrdiff_t i = 0; i < n; ++i) {
    Sum sum = sums[i];
    for (int k = 1; k <= more; ++k) sum = static_cast<Sum>(sum + columns[i + k * step]);
    sums[i] = sum;
  }
}

/// Sums up a block of windows, some columns at a time: the sums are loaded and stored less often.
template <class Sum>
void averageColumns(const Vek16u* __restrict columns, ptrdiff_t width, ptrdiff_t pixelBytes,
                    ptrdiff_t n, const BoxScale& scale, Vek8u* __restrict dst) {
  VEK_ASSERT(n >= 1 && width >= 1 && width <= columnBoxWidth && scale.factor != 0);
  VEK_ASSERT(sizeof(Sum) > 2 || scale.area <= smallBoxArea);
  constexpr ptrdiff_t block = 256;
  Sum sums[block];
  for (ptrdiff_t x = 0; x < n; x += block) {
    const ptrdiff_t count = n - x < block ? n - x : block;
    for (ptrdiff_t i = 0; i < count; ++i) sums[i] = columns[x + i];
    const Vek16u* last = columns + x;  // that has been added
    ptrdiff_t left = width - 1;
    for (; left >= 4; left -= 4, last += 4 * pixelBytes) {
      addFollowing<4>(last, pixelBytes, count, sums);
    }
    for (; left >= 2; left -= 2, last += 2 * pixelBytes) {
      addFollowing<2>(last, pixelBytes, count, sums);
    }
    if (left > 0) addFollowing<1>(last, pixelBytes, count, sums);
    if constexpr (sizeof(Sum) == 2 && sizeof(void*) == 8) {
      scaleSums16(sums, count, static_cast<Vek16u>(scale.factor >> 16),
                  static_cast<Vek16u>(scale.factor & 0xFFFF), dst + x);
    } else {
      for (ptrdiff_t i = 0; i < count; ++i) dst[x + i] = boxMean(sums[i], scale.factor);
    }
  }
}

/// Adds the `width` pixels of each channel to `sums`.
template <int pixelBytes, class Sum>
void addPixels(const Vek8u* __restrict row, ptrdiff_t width, Sum* __restrict sums) {
  Sum total[pixelBytes] = {};
  for (ptrdiff_t x = 0; x < width; ++x) {
    for (int c = 0; c < pixelBytes; ++c) total[c] += row[x * pixelBytes + c];
  }
  for (int c = 0; c < pixelBytes; ++c) sums[c] += total[c];
}

template <class Sum>
void slideWindows(Sum* __restrict differences, Sum* __restrict first,
                  const Vek8u* __restrict entering, const Vek8u* __restrict leaving,
                  ptrdiff_t width, ptrdiff_t pixelBytes, ptrdiff_t n) {
  VEK_ASSERT(n >= pixelBytes && n % pixelBytes == 0 && width >= 1);
  const auto addRow = pixelBytes == 1 ? addPixels<1, Sum> : addPixels<3, Sum>;
  const ptrdiff_t gap = width * pixelBytes;
  const ptrdiff_t inner = n - pixelBytes;
  addRow(entering, width, first);
  if (leaving == nullptr) {
    for (ptrdiff_t i = 0; i < inner; ++i) {
      differences[i] += static_cast<Sum>(entering[i + gap] - entering[i]);
    }
    return;
  }
  Sum gone[3] = {};
  addRow(leaving, width, gone);
  for (ptrdiff_t c = 0; c < pixelBytes; ++c) first[c] -= gone[c];
  for (ptrdiff_t i = 0; i < inner; ++i) {
    differences[i] +=
        static_cast<Sum>(entering[i + gap] - entering[i] - leaving[i + gap] + leaving[i]);
  }
}

}  // namespace
}  // namespace vek::VEK_LEVEL
