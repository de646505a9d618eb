// The loops behind BoxKernels, compiled for every level.
#pragma once

#include "image/filter/box/box_kernels.h"

namespace vek::VEK_LEVEL {
namespace {

/// sum * factor < 2^64: the factor is 2^32 / area, rounded, and 0 is not used.
template <class Sum>
Vek8u boxMean(Sum sum, Vek32u factor) {
  const uint64_t mean = (uint64_t{sum} * factor + 0x80000000u) >> 32;
  return static_cast<Vek8u>(mean < 255 ? mean : 255);
}

void slideColumns(Vek16u* __restrict columns, const Vek8u* __restrict entering,
                  const Vek8u* __restrict leaving, ptrdiff_t n) {
  if (leaving == nullptr) {
    for (ptrdiff_t i = 0; i < n; ++i) columns[i] = static_cast<Vek16u>(columns[i] + entering[i]);
  } else {
    for (ptrdiff_t i = 0; i < n; ++i) {
      columns[i] = static_cast<Vek16u>(columns[i] + entering[i] - leaving[i]);
    }
  }
}

template <class Sum>
[[maybe_unused]] void averageColumns(const Vek16u* __restrict columns, ptrdiff_t width,
                                     ptrdiff_t pixelBytes, ptrdiff_t n, const BoxScale& scale,
                                     Vek8u* __restrict dst) {
  constexpr ptrdiff_t block = 256;
  Sum sums[block];
  for (ptrdiff_t x = 0; x < n; x += block) {
    const ptrdiff_t count = n - x < block ? n - x : block;
    for (ptrdiff_t i = 0; i < count; ++i) sums[i] = columns[x + i];
    for (ptrdiff_t k = 1; k < width; ++k) {
      const Vek16u* next = columns + x + k * pixelBytes;
      for (ptrdiff_t i = 0; i < count; ++i) sums[i] = static_cast<Sum>(sums[i] + next[i]);
    }
    for (ptrdiff_t i = 0; i < count; ++i) dst[x + i] = boxMean(sums[i], scale.factor);
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

/// Sums and differences are modulo 2^bits; the sum of a whole window fits.
template <class Sum>
void slideWindows(Sum* __restrict differences, Sum* __restrict first,
                  const Vek8u* __restrict entering, const Vek8u* __restrict leaving,
                  ptrdiff_t width, ptrdiff_t pixelBytes, ptrdiff_t n) {
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

template <class Sum>
[[maybe_unused]] void scaleSums(const Sum* __restrict sums, ptrdiff_t n, const BoxScale& scale,
                                Vek8u* __restrict dst) {
  for (ptrdiff_t i = 0; i < n; ++i) dst[i] = boxMean(sums[i], scale.factor);
}

/// Bytes whose sums are formed at a time: whole pixels.
constexpr ptrdiff_t sumBlock = 768;

/// sums[i] = the running sum of its channel; `next` carries them from call to call. Only the first
/// 16 pixels are summed one after the other: each other one adds 16 differences to the sum 16
/// pixels before, four and four, in loops without a chain that a vector could not take.
template <int pixelBytes, class Sum>
void sumDifferences(const Sum* __restrict differences, ptrdiff_t n, Sum* __restrict next,
                    Sum* __restrict sums) {
  constexpr ptrdiff_t four = 4 * pixelBytes, sixteen = 16 * pixelBytes;
  const ptrdiff_t head = n < sixteen ? n : sixteen;
  for (ptrdiff_t i = 0; i < head; ++i) {
    sums[i] = i < pixelBytes ? next[i] : sums[i - pixelBytes] + differences[i - pixelBytes];
  }
  if (n > sixteen) {
    Sum fours[sumBlock];
    for (ptrdiff_t i = 0; i < n - four; ++i) {
      fours[i] = differences[i] + differences[i + pixelBytes] + differences[i + 2 * pixelBytes] +
                 differences[i + 3 * pixelBytes];
    }
    for (ptrdiff_t i = 0; i < n - sixteen; ++i) {
      sums[i + sixteen] =
          sums[i] + fours[i] + fours[i + four] + fours[i + 2 * four] + fours[i + 3 * four];
    }
  }
  const ptrdiff_t last = n - pixelBytes;
  for (int c = 0; c < pixelBytes; ++c) next[c] = sums[last + c] + differences[last + c];
}

/// By blocks, so that scaling is a loop of its own, which vectors can take.
template <class Sum, void (*scaleBlock)(const Sum*, ptrdiff_t, const BoxScale&, Vek8u*)>
void averageWindows(const Sum* differences, const Sum* first, ptrdiff_t pixelBytes, ptrdiff_t n,
                    const BoxScale& scale, Vek8u* dst) {
  const auto sumUp = pixelBytes == 1 ? sumDifferences<1, Sum> : sumDifferences<3, Sum>;
  Sum next[3] = {first[0], first[1], first[2]};
  Sum sums[sumBlock];
  for (ptrdiff_t x = 0; x < n; x += sumBlock) {
    const ptrdiff_t count = n - x < sumBlock ? n - x : sumBlock;
    sumUp(differences + x, count, next, sums);
    scaleBlock(sums, count, scale, dst + x);
  }
}

}  // namespace
}  // namespace vek::VEK_LEVEL
